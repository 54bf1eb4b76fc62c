// Without a device the tests are skipped, by status 77, unless there has to be one.
#include "tests/device/caller.h"

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  constexpr int NO_DEVICE = 77;
  ::testing::InitGoogleTest(&argc, argv);
  if (caller::devices().empty()) {
    std::printf("this environment offers no OpenCL device\n");
    return std::getenv("TARVA_TEST_NEEDS_DEVICE") == nullptr ? NO_DEVICE : EXIT_FAILURE;
  }
  return RUN_ALL_TESTS();
}
