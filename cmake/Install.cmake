# Headers, library, find_package(gentra) and pkg-config file.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

target_include_directories(gentra PUBLIC $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
install(TARGETS gentra EXPORT gentraTargets)
install(DIRECTORY include/gentra TYPE INCLUDE)
install(DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/include/gentra TYPE INCLUDE)

set(gentra_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/gentra)
install(EXPORT gentraTargets NAMESPACE gentra:: DESTINATION ${gentra_package_dir})
configure_package_config_file(cmake/gentraConfig.cmake.in gentraConfig.cmake
  INSTALL_DESTINATION ${gentra_package_dir})
write_basic_package_version_file(gentraConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/gentraConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/gentraConfigVersion.cmake
  DESTINATION ${gentra_package_dir})

if(gentra_type STREQUAL "STATIC")
  set(gentra_pc_cflags "-DGENTRA_STATIC_DEFINE")
endif()
# From the file's own place, so that an installed tree can be moved.
file(RELATIVE_PATH gentra_pc_to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/gentra.pc.in gentra.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/gentra.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
