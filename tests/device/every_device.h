// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What the suites share that do the same on every OpenCL device that the environment offers, under each version it is
// offered as.
#pragma once

#include "tests/device/caller.h"

#include <gtest/gtest.h>

namespace caller {

// Such as "OpenCL 1.2 device named: ..."
inline std::string describe(const device& one) {
  return text(one.properties()["FRIENDLY_SHORT_DESCRIPTION"]);
}
inline std::string version_of(const device& one) {
  return one.version();
}

class every_device : public ::testing::Test {
protected:
  static void SetUpTestSuite() { all = devices(); }
  static void TearDownTestSuite() { all.clear(); }

  template <class Body>
  static void on_each(Body body) {
    for (const device& one : all) {
      SCOPED_TRACE(describe(one));
      body(one);
    }
  }

  static inline std::vector<device> all;
};

} // namespace caller
