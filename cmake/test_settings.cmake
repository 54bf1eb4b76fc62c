# What all tests share.
include(GoogleTest)

# Compiled OpenCL programs are kept between the tests and from one run to the next, but away from the user's own.
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/pocl-cache)
set(TARVA_TEST_ENVIRONMENT POCL_CACHE_DIR=${PROJECT_BINARY_DIR}/pocl-cache
    LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/leak_suppressions.txt)

# Makes an executable of GoogleTest cases, each of which becomes one test under `label`.
function(tarva_add_tests name label)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "SOURCES;LIBRARIES;ENVIRONMENT")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} tarva_settings GTest::gtest GTest::gtest_main)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST NO_PRETTY_TYPES NO_PRETTY_VALUES TEST_PREFIX ${label}.
                       PROPERTIES LABELS ${label} TIMEOUT 120 ENVIRONMENT "${TARVA_TEST_ENVIRONMENT};${arg_ENVIRONMENT}")
endfunction()
