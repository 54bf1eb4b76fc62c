// Warnings are part of what is tested, so the library's log goes to the console from the start.
#include "tests/scripted/scripted_qv.h"

#include <cstdlib>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  setenv("TARVA_LOG_TARGET", "console", 1);
  setenv("TARVA_LOG_LEVEL", "warn", 1);
  scripted::set_devices({{"one", {3}}});
  ::testing::InitGoogleTest(&argc, argv);
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  return RUN_ALL_TESTS();
}
