# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

# What `cpack` makes: one Debian package for each component. The preset `package` sets the folders as Debian has them.
find_program(DPKG_DEB dpkg-deb)
if(NOT DPKG_DEB)
  return()
endif()

set(TARVA_PACKAGE_CONTACT "TARVA developers <developers@tarva.invalid>" CACHE STRING
    "Who is named as the maintainer of the packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarva)
set(CPACK_PACKAGE_VENDOR "TARVA developers")
set(CPACK_PACKAGE_CONTACT ${TARVA_PACKAGE_CONTACT})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debug_packages.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)

set(CPACK_COMPONENTS_ALL runtime development)
if(TARVA_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
if(TARGET python_binding)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(same_version "(= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME liboryn-tarva0)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_DEBUGINFO_PACKAGE ON)
# The loader is opened when the library starts, so nothing links it.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS "ocl-icd-libopencl1 | libopencl1")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS "pocl-opencl-icd | opencl-icd")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "interface to all OpenCL devices of a machine
One plain C interface to the OpenCL devices of a machine, of the versions
1.0 to 2.2. Memory objects belong to no device: the library moves them to
where they are used.

This package holds the shared libraries.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liboryn-tarva-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "liboryn-tarva0 ${same_version}")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "interface to all OpenCL devices of a machine - development files
One plain C interface to the OpenCL devices of a machine, of the versions
1.0 to 2.2.

This package holds the headers for C and C++, what pkg-config and CMake need
to find the library, the guide and other pages, and examples.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME tarva-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "liboryn-tarva0 ${same_version}")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "show the OpenCL devices of a machine
The program tarva-info prints the OpenCL devices of a machine, and all that
is to be known of them, for people and for scripts.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-tarva)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PYTHON_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.11), python3-numpy, liboryn-tarva0 ${same_version}")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "interface to all OpenCL devices of a machine - package for Python
One plain interface to the OpenCL devices of a machine, of the versions 1.0
to 2.2, with numpy arrays for what goes in and out.

This package holds the module for Python, two pages about it, and examples.")

# Debian's own files of each package, which `cmake --install` leaves out. The date of the version is that in CHANGELOG.md.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS CHANGELOG.md)
file(STRINGS CHANGELOG.md newest REGEX "^## " LIMIT_COUNT 1)
if(NOT newest MATCHES "^## ${PROJECT_VERSION}, (.+)$")
  message(FATAL_ERROR "CHANGELOG.md does not begin with version ${PROJECT_VERSION}.")
endif()
execute_process(COMMAND date --utc --rfc-email --date=${CMAKE_MATCH_1} OUTPUT_VARIABLE date
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
# The notices of others become a comment in the copyright files.
file(READ THIRD-PARTY notices)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS THIRD-PARTY)
string(STRIP "${notices}" notices)
string(REPLACE "\n\n" "\n.\n" notices "${notices}")
string(REPLACE "\n\n" "\n.\n" notices "${notices}")
string(REPLACE "\n" "\n " notices "${notices}")
# All files in the packages are of that date.
execute_process(COMMAND date --utc +%s --date=${CMAKE_MATCH_1} OUTPUT_VARIABLE seconds
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/install/debian/date.cmake)
file(WRITE ${CPACK_PROJECT_CONFIG_FILE} "set(ENV{SOURCE_DATE_EPOCH} ${seconds})\n")
foreach(component IN ITEMS runtime development tools python)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(folder ${PROJECT_BINARY_DIR}/install/debian/${package})
  configure_file(cmake/templates/debian-changelog.in ${folder}/changelog @ONLY)
  execute_process(COMMAND gzip -9nf ${folder}/changelog COMMAND_ERROR_IS_FATAL ANY)
  configure_file(cmake/templates/debian-copyright.in ${folder}/copyright @ONLY)
  install(FILES ${folder}/changelog.gz ${folder}/copyright DESTINATION share/doc/${package}
          COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()
# The pages, with what they show, and the examples, which need nothing but what the package holds.
set(pages_folder share/doc/liboryn-tarva-dev)
file(GLOB pages CONFIGURE_DEPENDS docs/*.md docs/*.svg)
install(FILES README.md CHANGELOG.md RELIABILITY.md SECURITY.md DESTINATION ${pages_folder} COMPONENT development EXCLUDE_FROM_ALL)
install(FILES ${pages} DESTINATION ${pages_folder}/docs COMPONENT development EXCLUDE_FROM_ALL)
install(DIRECTORY docs/pictures docs/speed DESTINATION ${pages_folder}/docs COMPONENT development EXCLUDE_FROM_ALL)
install(DIRECTORY examples DESTINATION ${pages_folder} COMPONENT development EXCLUDE_FROM_ALL
        PATTERN CMakeLists.txt EXCLUDE)
# The runtime package holds two libraries, of which the second is of no use without the first. That its scripts call
# ldconfig, although there is a trigger, is CPack's doing.
set(control ${PROJECT_BINARY_DIR}/install/debian/control)
file(WRITE ${control}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${control}/triggers ${control}/symbols)

# Which symbol came with which version: what links the libraries then depends on no newer one than it needs. Each node
# of a version script says it in the comment above it.
set(symbols "")
foreach(library_and_map IN ITEMS liboryn-tarva.so.0:abi/liboryn-tarva.map libqv.so.0:capability/libqv.map)
  string(REGEX MATCH "(.+):(.+)" whole ${library_and_map})
  string(APPEND symbols "${CMAKE_MATCH_1} liboryn-tarva0 #MINVER#\n* Build-Depends-Package: liboryn-tarva-dev\n")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_MATCH_2})
  file(STRINGS ${CMAKE_MATCH_2} lines REGEX "Since version|{|^    [a-z]")
  foreach(line IN LISTS lines)
    if(line MATCHES "Since version ([0-9.]+[0-9])")
      set(since ${CMAKE_MATCH_1})
    elseif(line MATCHES "^([A-Z_0-9.]+) {")
      set(node ${CMAKE_MATCH_1})
      string(APPEND symbols " ${node}@${node} ${since}\n")
    elseif(line MATCHES "^ +([a-z_0-9]+)")
      string(APPEND symbols " ${CMAKE_MATCH_1}@${node} ${since}\n")
    endif()
  endforeach()
endforeach()
file(WRITE ${control}/symbols "${symbols}")
file(WRITE ${control}/liboryn-tarva0
     "liboryn-tarva0: package-name-doesnt-match-sonames\nliboryn-tarva0: maintscript-calls-ldconfig\n")
install(FILES ${control}/liboryn-tarva0 DESTINATION share/lintian/overrides COMPONENT runtime EXCLUDE_FROM_ALL)

# Python's byte code is made and taken away as for Debian's own packages, save below another root.
if(TARGET python_binding)
  foreach(script IN ITEMS "postinst configure py3compile" "prerm remove py3clean")
    string(REPLACE " " ";" parts ${script})
    list(POP_FRONT parts script action tool)
    file(WRITE ${control}/python/${script} "#!/bin/sh
set -e
if [ \"$1\" = ${action} ] && [ -z \"$DPKG_ROOT\" ] && command -v ${tool} >/dev/null; then
  ${tool} -p python3-tarva
fi
")
    list(APPEND CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${control}/python/${script})
  endforeach()
  install(FILES docs/python.md docs/coming-from-pyopencl.md DESTINATION share/doc/python3-tarva COMPONENT python
          EXCLUDE_FROM_ALL)
  install(DIRECTORY docs/pictures python/examples DESTINATION share/doc/python3-tarva COMPONENT python EXCLUDE_FROM_ALL
          PATTERN __pycache__ EXCLUDE)
endif()

include(CPack)
