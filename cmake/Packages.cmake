# Debian packages: libgentra1 with the shared library, libgentra-dev with all that is needed to build programs.

set(gentra_maintainer "The Gentra authors <gentra@gentra.invalid>")
set(gentra_debian_version ${PROJECT_VERSION}-1)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME gentra)
set(CPACK_PACKAGE_CONTACT "${gentra_maintainer}")
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(gentra_about "Gentra simulates large populations of agents inside a host program: members
 whose layout is chosen at run time, behaviours as plug-in classes, a compiler
 that links the two, and neighbour queries.")

set(gentra_package_runtime libgentra${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${gentra_package_runtime})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION}, library\n${gentra_about}")

# Renews the system's table of libraries. The scripts that CMake adds do it once more.
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_BINARY_DIR}/debian/triggers)

set(gentra_package_development libgentra-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${gentra_package_development})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${gentra_package_runtime} (= ${gentra_debian_version})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "${PROJECT_DESCRIPTION}, headers\n${gentra_about}\n\n This package is for building programs with Gentra.")

# The papers that each package carries.
string(TIMESTAMP gentra_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(CONFIGURE OUTPUT debian/changelog.Debian CONTENT
  "gentra (@gentra_debian_version@) unstable; urgency=medium\n\n  * See changelog.gz.\n\n -- @gentra_maintainer@  @gentra_date@\n"
  @ONLY)
file(READ LICENSE gentra_license)
string(FIND "${gentra_license}" "Copyright (c)" position)
string(SUBSTRING "${gentra_license}" ${position} -1 gentra_license)
string(REGEX REPLACE "\n\n" "\n.\n" gentra_license "${gentra_license}")
string(REGEX REPLACE "\n([^\n])" "\n \\1" gentra_license "\n${gentra_license}")
file(CONFIGURE OUTPUT debian/copyright CONTENT
  "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: gentra

Files: *
Copyright: 2026 the Gentra authors
License: Expat@gentra_license@" @ONLY)
execute_process(WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/debian
  COMMAND gzip -9nkf changelog.Debian
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/CHANGELOG.md
  OUTPUT_FILE ${CMAKE_CURRENT_BINARY_DIR}/debian/changelog.gz
  COMMAND_ERROR_IS_FATAL ANY)
foreach(component runtime development)
  install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/debian/changelog.Debian.gz
    ${CMAKE_CURRENT_BINARY_DIR}/debian/changelog.gz
    ${CMAKE_CURRENT_BINARY_DIR}/debian/copyright
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${gentra_package_${component}} COMPONENT ${component})
endforeach()

include(CPack)
