#!/bin/sh
# Installs the engine into a fresh prefix, then builds the examples against that prefix alone, once
# through the CMake package and once through pkg-config, and runs what it built.
# Arguments: the cmake program, the build tree, the source tree, a scratch folder.
set -eu
cmake=$1 build=$2 source=$3 scratch=$4
prefix=$scratch/prefix
rm -rf "$scratch" && mkdir -p "$scratch"

"$cmake" --install "$build" --prefix "$prefix" > "$scratch/install.log"

# The installed program finds the installed library through its rpath.
"$prefix/bin/ravelo" --version

expect() {  # program: runs it and checks the belief it prints
    out=$("$@")
    echo "$out"
    echo "$out" | grep -q "P(Rain = yes | WetGrass = wet) = 0.6923" || { echo "wrong output from $1"; exit 1; }
}

"$cmake" -S "$source/examples" -B "$scratch/with-cmake" -DCMAKE_PREFIX_PATH="$prefix" > "$scratch/cmake.log"
"$cmake" --build "$scratch/with-cmake" > "$scratch/cmake-build.log"
expect "$scratch/with-cmake/quickstart"
expect "$scratch/with-cmake/quickstart_static"
# The program found the installed library, not the build tree's.
ldd "$scratch/with-cmake/quickstart" | grep -q "=> $prefix/.*libravelo" || { echo "does not use the installed library"; exit 1; }

pc_dir=$(dirname "$(find "$prefix" -name ravelo.pc)")
export PKG_CONFIG_PATH="$pc_dir"
cc -o "$scratch/pc-shared" "$source/examples/quickstart.c" $(pkg-config --cflags --libs ravelo)
LD_LIBRARY_PATH="$pc_dir/.." expect "$scratch/pc-shared"
# The static archive, with only the libraries the .pc file lists for static linking; the program
# runs without the shared library on any search path.
libdir=$(pkg-config --variable=libdir ravelo)
cc -o "$scratch/pc-static" "$source/examples/quickstart.c" $(pkg-config --cflags ravelo) "$libdir/libravelo.a" \
   $(pkg-config --static --libs ravelo | sed 's/-lravelo / /')
expect "$scratch/pc-static"
echo "install test passed"
