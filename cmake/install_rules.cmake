# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

# What `cmake --install` puts where, in components: runtime, development, tools, licences.
include(CMakePackageConfigHelpers)

set(cmake_package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/tarva)
set(generated ${PROJECT_BINARY_DIR}/install)

set_target_properties(oryn-tarva PROPERTIES EXPORT_NAME tarva)
install(TARGETS oryn-tarva EXPORT tarva-targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
# Nobody links the capability library but the library itself.
install(TARGETS qv EXPORT tarva-targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_SKIP)

install(FILES include/tarva_abi.h include/tarva.hpp DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(DIRECTORY include/tarva DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development FILES_MATCHING PATTERN *.hpp)

# The packages have a copyright file of their own in place of these.
install(FILES LICENSE THIRD-PARTY DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT licences)

# find_package(tarva) gives tarva::tarva.
install(EXPORT tarva-targets NAMESPACE tarva:: DESTINATION ${cmake_package_folder} COMPONENT development)
configure_package_config_file(cmake/templates/tarva-config.cmake.in ${generated}/tarva-config.cmake
                              INSTALL_DESTINATION ${cmake_package_folder}
                              NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${generated}/tarva-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${generated}/tarva-config.cmake ${generated}/tarva-config-version.cmake
        DESTINATION ${cmake_package_folder} COMPONENT development)

# The file for pkg-config finds its folders from where it lies itself.
set(pkg_config_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkg_config ${CMAKE_INSTALL_PREFIX}/${pkg_config_folder} ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/templates/tarva.pc.in ${generated}/tarva.pc @ONLY)
install(FILES ${generated}/tarva.pc DESTINATION ${pkg_config_folder} COMPONENT development)

# Manual pages carry the version, and are compressed as is the custom.
function(tarva_install_page page section component)
  cmake_path(GET page FILENAME name)
  set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${page})
  file(READ ${page} text)
  string(REPLACE "\"TARVA\"" "\"TARVA ${PROJECT_VERSION}\"" text "${text}")
  file(WRITE ${generated}/${name} "${text}")
  execute_process(COMMAND gzip -9nf ${generated}/${name} COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${generated}/${name}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
endfunction()
tarva_install_page(${PROJECT_SOURCE_DIR}/docs/man/tarva.3 3 development)

if(TARVA_BUILD_TOOLS)
  install(TARGETS tarva-info RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  tarva_install_page(${PROJECT_SOURCE_DIR}/tools/tarva-info/tarva-info.1 1 tools)
endif()
