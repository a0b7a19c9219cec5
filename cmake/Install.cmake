# Installs the header, both libraries, the program, a CMake package (find_package(Ravelo) gives
# Ravelo::ravelo and Ravelo::ravelo_static) and a pkg-config file.
include(CMakePackageConfigHelpers)

set(ravelo_installed ravelo ravelo_static)
install(TARGETS ${ravelo_installed} EXPORT RaveloTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(TARGET ravelo_cli)
  install(TARGETS ravelo_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
install(FILES ${PROJECT_SOURCE_DIR}/include/ravelo/ravelo.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ravelo)

set(ravelo_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Ravelo)
install(EXPORT RaveloTargets NAMESPACE Ravelo:: DESTINATION ${ravelo_cmake_dir})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/RaveloConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/RaveloConfig.cmake INSTALL_DESTINATION ${ravelo_cmake_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/RaveloConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/RaveloConfig.cmake ${PROJECT_BINARY_DIR}/RaveloConfigVersion.cmake
        DESTINATION ${ravelo_cmake_dir})

# The .pc file finds the prefix from its own place, so an installed tree may be moved.
file(RELATIVE_PATH ravelo_pc_to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${PROJECT_SOURCE_DIR}/cmake/ravelo.pc.in ${PROJECT_BINARY_DIR}/ravelo.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ravelo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
