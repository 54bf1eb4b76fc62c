// Many threads on two devices at once.
#include "tests/device/thread_mix.h"

#include <gtest/gtest.h>

namespace {

TEST(threads, mix_everything_on_two_devices) {
  const auto all = caller::devices();
  std::vector<caller::kernel> kernels;
  for (std::size_t i = 0; i < 2; ++i)
    kernels.push_back(caller::find_kernel(caller::compile(all[i % all.size()], caller::mix_source), "add"));
  EXPECT_EQ(caller::mix_threads(kernels), "");
}

} // namespace
