"""Builds the extension of the ravelo package with the project's own CMake build.

Everything the build needs comes from Debian's packages, installed with apt-get when missing;
nothing is downloaded from anywhere else.
"""
import os
import shutil
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

SOURCE_ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
DEBIAN_PACKAGES = ["cmake", "g++", "python3-dev", "pybind11-dev", "python3-numpy", "python3-pandas",
                   "python3-pytest"]


def missing_debian_packages():
    if not shutil.which("dpkg-query"):
        return []
    missing = []
    for package in DEBIAN_PACKAGES:
        status = subprocess.run(["dpkg-query", "-W", "-f=${Status}", package],
                                capture_output=True, text=True).stdout
        if "install ok installed" not in status:
            missing.append(package)
    return missing


def ensure_debian_packages():
    missing = missing_debian_packages()
    if not missing or not shutil.which("apt-get"):
        return
    sudo = [] if os.geteuid() == 0 else ["sudo"]
    env = dict(os.environ, DEBIAN_FRONTEND="noninteractive")
    subprocess.run(sudo + ["apt-get", "update", "-q"], env=env, check=False)
    subprocess.run(sudo + ["apt-get", "install", "-y", "-q", "--no-install-recommends"] + missing,
                   env=env, check=True)


class CMakeBuild(build_ext):
    def build_extension(self, ext):
        ensure_debian_packages()
        build_dir = os.path.join(os.path.abspath(self.build_temp), "cmake")
        configure = ["cmake", "-S", SOURCE_ROOT, "-B", build_dir, "-DCMAKE_BUILD_TYPE=Release",
                     "-DBUILD_TESTING=OFF", "-DRAVELO_BUILD_TOOLS=OFF", "-DRAVELO_PYTHON=ON",
                     "-DPython_EXECUTABLE=" + sys.executable]
        if shutil.which("ccache"):
            configure += ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache", "-DCMAKE_C_COMPILER_LAUNCHER=ccache"]
        subprocess.run(configure, check=True)
        subprocess.run(["cmake", "--build", build_dir, "--target", "_ravelo", "-j2"], check=True)
        built_name = os.path.basename(self.get_ext_filename(ext.name))
        target = self.get_ext_fullpath(ext.name)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        shutil.copyfile(os.path.join(build_dir, "python", "ravelo", built_name), target)


setup(ext_modules=[Extension("ravelo._ravelo", sources=[])], cmdclass={"build_ext": CMakeBuild})
