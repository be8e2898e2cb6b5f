# Headers, library, find_package(gentra) and pkg-config file; Debian packages of them.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# What programs need to run, and what is needed to build them: one package each.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)

foreach(target IN LISTS gentra_targets)
  target_include_directories(${target} PUBLIC $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endforeach()
install(TARGETS ${gentra_targets} EXPORT gentraTargets
  RUNTIME COMPONENT runtime
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development)
install(DIRECTORY include/gentra ${CMAKE_CURRENT_BINARY_DIR}/include/gentra TYPE INCLUDE)

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

# Debuggers' views. gdb looks for a file of the library's full name: beside it, and for what the system has under /usr in
# a place of its own.
install(FILES debuggers/gentra.natvis DESTINATION ${CMAKE_INSTALL_DATADIR}/gentra)
if(UNIX AND gentra_type STREQUAL "SHARED")
  set(gentra_gdb_dir ${CMAKE_INSTALL_LIBDIR})
  if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(gentra_gdb_dir ${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR})
  endif()
  install(FILES debuggers/gentra-gdb.py DESTINATION ${gentra_gdb_dir}
    RENAME libgentra.so.${PROJECT_VERSION}-gdb.py COMPONENT runtime)
endif()

if(PROJECT_IS_TOP_LEVEL AND CMAKE_SYSTEM_NAME STREQUAL "Linux" AND gentra_type STREQUAL "SHARED")
  include(cmake/Packages.cmake)
endif()
