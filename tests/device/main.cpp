// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Without a device the tests are skipped, by status 77, unless there has to be one, or several.
#include "tests/device/caller.h"

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  constexpr int no_device = 77;
  ::testing::InitGoogleTest(&argc, argv);
  const char* const needed = std::getenv("TARVA_TEST_NEEDS_DEVICE");
  const std::size_t count = caller::devices().size();
  if (count < (needed == nullptr ? 1 : std::strtoul(needed, nullptr, 10))) {
    std::printf("this environment offers too few OpenCL devices: %zu\n", count);
    return needed == nullptr ? no_device : EXIT_FAILURE;
  }
  return RUN_ALL_TESTS();
}
