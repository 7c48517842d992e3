# What the installed package has for Objective-C hosts: the library, its archive, the public headers, CMake
# and pkg-config files. Behind TallyfootInstall, whose folders it shares.
include(GNUInstallDirs)

if(NOT APPLE)
  set_target_properties(TallyfootObjC PROPERTIES INSTALL_RPATH "$ORIGIN") # the library beside it
endif()
install(TARGETS TallyfootObjC EXPORT TallyfootObjCTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(TARGETS TallyfootObjCStatic EXPORT TallyfootObjCStaticTargets
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
foreach(set TallyfootObjCTargets TallyfootObjCStaticTargets)
  install(EXPORT ${set} NAMESPACE Tallyfoot:: DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/Tallyfoot")
endforeach()

if(APPLE)
  set(foundation_cflags "")
  set(foundation_libs "-framework Foundation")
else()
  # As TallyfootFoundation.cmake has them for CMake's hosts. The headers of the system are where they are.
  string(CONCAT foundation_cflags
    "-fobjc-runtime=gcc -fblocks -fexceptions -fconstant-string-class=NSConstantString -D_NATIVE_OBJC_EXCEPTIONS"
    " -idirafter ${TALLYFOOT_GNUSTEP_HEADERS} -idirafter \${libdir}/cmake/Tallyfoot/GNUstep -idirafter ${tallyfoot_objc_headers}")
  set(foundation_libs "-lBlocksRuntime -lgnustep-base -lobjc")
endif()
include(TallyfootPkgConfig)
tallyfoot_install_pkgconfig(TallyfootObjC)
