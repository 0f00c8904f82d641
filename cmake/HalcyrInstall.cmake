# Headers, library, CMake package and pkg-config file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

function(halcyr_install)
  foreach(folder KitGlobals DynKiro DynBcl Dyn Col hy rec)
    install(DIRECTORY ${folder}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
      FILES_MATCHING PATTERN "*.h")
  endforeach()
  install(TARGETS halcyr halcyr_rec EXPORT HalcyrTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(EXPORT HalcyrTargets NAMESPACE Halcyr::
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Halcyr)
  configure_package_config_file(cmake/HalcyrConfig.cmake.in HalcyrConfig.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Halcyr)
  write_basic_package_version_file(HalcyrConfigVersion.cmake COMPATIBILITY SameMajorVersion)
  # The package may be installed under any prefix: halcyr.pc finds it from where it stands.
  file(RELATIVE_PATH HALCYR_PC_TO_PREFIX
    /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  configure_file(cmake/halcyr.pc.in halcyr.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/HalcyrConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/HalcyrConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Halcyr)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/halcyr.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DATADIR}/halcyr/examples
    REGEX "examples/CMakeLists.txt$" EXCLUDE)
endfunction()
