include(GNUInstallDirs)

# Installs the pkg-config file made of <name>.pc.in.
function(tallyfoot_install_pkgconfig name)
  # Relative to where the file lies, so that neither --prefix nor a move makes it wrong.
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" OUTPUT_VARIABLE libdir)
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_INCLUDEDIR BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" OUTPUT_VARIABLE includedir)
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" OUTPUT_VARIABLE up)
  set(file "${PROJECT_BINARY_DIR}/package/${name}.pc")
  configure_file("${CMAKE_CURRENT_FUNCTION_LIST_DIR}/${name}.pc.in" "${file}" @ONLY)
  install(FILES "${file}" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endfunction()
