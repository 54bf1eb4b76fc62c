// Without a device the tests are skipped, by status 77, unless there has to be one.
#include "tests/device/caller.h"

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  constexpr int no_device = 77;
  ::testing::InitGoogleTest(&argc, argv);
  if (caller::devices().empty()) {
    std::printf("this environment offers no OpenCL device\n");
    return std::getenv("TARVA_TEST_NEEDS_DEVICE") == nullptr ? no_device : EXIT_FAILURE;
  }
  return RUN_ALL_TESTS();
}
