// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// A machine without OpenCL, which the scripted one cannot be: the only test of the library's parts by themselves.
#include "capability/machine.h"

#include <gtest/gtest.h>

namespace {

TEST(loader, that_is_missing_or_no_opencl_is_a_machine_without_devices) {
  std::uint64_t count = 7;
  for (const char* loader : {"libno-such-opencl.so.1", "libm.so.6"}) {
    EXPECT_EQ(qv::look_at_machine(loader, "2.0").get_root_devices(0, nullptr, &count), QV_OK);
    EXPECT_EQ(count, 0u) << loader;
  }
  EXPECT_ANY_THROW(qv::look_at_machine("/dev/null", nullptr)) << "it is there, but cannot be loaded";
}

} // namespace
