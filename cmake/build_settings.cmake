# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

# Language, warnings, visibility and sanitizers of every target of this project.

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Kind of build" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# The libraries find each other beside themselves, but LD_LIBRARY_PATH goes first (a run path, not an rpath), so
# that another capability library can take the place of ours.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
add_link_options(LINKER:--enable-new-dtags)

# Gives `target`, which is installed, one run path for both the build folder and where it is installed. Of two CMake
# would fill up the shorter with colons, and what is empty between colons means the current directory of whoever runs it.
function(tarva_run_path target)
  set_target_properties(${target} PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "${ARGN}")
endfunction()

add_library(tarva_settings INTERFACE)
target_compile_options(tarva_settings INTERFACE -Wall -Wextra -Wpedantic)
if(TARVA_WERROR)
  target_compile_options(tarva_settings INTERFACE -Werror)
endif()

# Where it optimises most, g++ 12 takes text that is put in front of a string for a copy that overlaps itself.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(tarva_settings INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()

# Whether each member is touched only with the lock that guards it: base/thread_annotations.h.
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  target_compile_options(tarva_settings INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wthread-safety>)
endif()

# Unique symbols would keep a library loaded after dlclose.
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fno-gnu-unique TARVA_HAS_NO_GNU_UNIQUE)
if(TARVA_HAS_NO_GNU_UNIQUE)
  target_compile_options(tarva_settings INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-fno-gnu-unique>)
endif()

# What dpkg-buildflags asks for, and the protection of jumps and returns where processors have it. No file tells in
# which folder it was compiled.
if(TARVA_HARDEN)
  include(CheckPIESupported)
  check_pie_supported()
  add_compile_options(-fstack-protector-strong -fstack-clash-protection -fcf-protection -Wformat -Werror=format-security
                      -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=build
                      $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE$<SEMICOLON>-D_FORTIFY_SOURCE=2>)
  add_link_options(LINKER:-z,relro,-z,now)
endif()

if(TARVA_SANITIZE)
  add_compile_options(-fsanitize=${TARVA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=${TARVA_SANITIZE})
  # Among the sanitizers' own code, g++ takes parts of <regex> for uninitialised.
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    add_compile_options(-Wno-maybe-uninitialized)
  endif()
endif()

if(TARVA_COVERAGE)
  add_compile_options(-O0 --coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()

# Gives the shared library `target` its version script and refuses symbols that nothing it links defines.
function(tarva_export_only target map)
  target_link_options(${target} PRIVATE LINKER:--version-script=${map})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${map})
  if(TARVA_COVERAGE) # for cmake/coverage_end.cpp
    target_link_options(${target} PRIVATE LINKER:--undefined=__gcov_dump LINKER:--defsym=write_counts=__gcov_dump
                                          LINKER:--version-script=${PROJECT_SOURCE_DIR}/cmake/coverage.map)
  endif()
  # Clang leaves the sanitizer runtime to the executable, so there the library has open symbols.
  if(NOT (TARVA_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES Clang))
    target_link_options(${target} PRIVATE LINKER:--no-undefined)
  endif()
endfunction()
