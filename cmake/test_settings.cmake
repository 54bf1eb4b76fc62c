# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

# What all tests share.
include(GoogleTest)

# Compiled OpenCL programs are kept between the tests and from one run to the next, but away from the user's own.
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/pocl-cache)
set(TARVA_TEST_ENVIRONMENT POCL_CACHE_DIR=${PROJECT_BINARY_DIR}/pocl-cache
    LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/leak_suppressions.txt:print_suppressions=0
    TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/thread_suppressions.txt:print_suppressions=0)
# The loader unloads an implementation that offers no device, and what that one leaves behind has no name to be
# let off by. So under the sanitizers a test sees one implementation, unless it chooses others itself.
if(TARVA_SANITIZE AND EXISTS /etc/OpenCL/vendors/pocl.icd)
  list(APPEND TARVA_TEST_ENVIRONMENT OCL_ICD_VENDORS=/etc/OpenCL/vendors/pocl.icd)
endif()

# Makes an executable of GoogleTest cases, each of which becomes one test under `label`.
function(tarva_add_tests name label)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "SOURCES;LIBRARIES")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} tarva_settings GTest::gtest GTest::gtest_main)
  tarva_discover_tests(${name} ${label} ${label}. ${name}_cases "${TARVA_TEST_ENVIRONMENT}" "")
endfunction()

# The cases of an executable once more, with one more setting of the environment and less what `filter` takes out.
function(tarva_test_again name label setting_name setting filter)
  tarva_discover_tests(${name} ${label} ${label}.${setting_name}. ${name}_${setting_name}_cases
                       "${TARVA_TEST_ENVIRONMENT};${setting}" "${filter}")
endfunction()

function(tarva_discover_tests name label prefix cases environment filter)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST NO_PRETTY_TYPES NO_PRETTY_VALUES TEST_PREFIX ${prefix}
                       TEST_FILTER "${filter}" TEST_LIST ${cases} PROPERTIES LABELS ${label} TIMEOUT 120)
  # Set afterwards: the discovery would tear the list of variables apart.
  set(environment_file ${CMAKE_CURRENT_BINARY_DIR}/${cases}_environment.cmake)
  file(WRITE ${environment_file} "if(${cases})
  set_tests_properties(\${${cases}} PROPERTIES ENVIRONMENT \"${environment}\")
endif()\n")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${environment_file})
endfunction()
