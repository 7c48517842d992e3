# The installed package: libraries, public headers, CMake and pkg-config files. It can be moved as a whole.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(tallyfoot_package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/Tallyfoot")
set(generated "${PROJECT_BINARY_DIR}/package")

# Two sets, so that whoever links the shared library needs none of what the archive needs.
install(TARGETS Tallyfoot EXPORT TallyfootTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(TARGETS TallyfootStatic EXPORT TallyfootStaticTargets
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
foreach(set TallyfootTargets TallyfootStaticTargets)
  install(EXPORT ${set} NAMESPACE Tallyfoot:: DESTINATION "${tallyfoot_package_folder}")
endforeach()

configure_package_config_file(
  "${CMAKE_CURRENT_LIST_DIR}/TallyfootConfig.cmake.in" "${generated}/TallyfootConfig.cmake"
  INSTALL_DESTINATION "${tallyfoot_package_folder}")
write_basic_package_version_file("${generated}/TallyfootConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${generated}/TallyfootConfig.cmake" "${generated}/TallyfootConfigVersion.cmake"
  "${CMAKE_CURRENT_LIST_DIR}/TallyfootFoundation.cmake"
  DESTINATION "${tallyfoot_package_folder}")
install(DIRECTORY "${CMAKE_CURRENT_LIST_DIR}/GNUstep" DESTINATION "${tallyfoot_package_folder}")

include(TallyfootPkgConfig)
tallyfoot_install_pkgconfig(Tallyfoot)
