// Many threads on two devices at once.
#include "tests/device/thread_mix.h"

#include <barrier>
#include <gtest/gtest.h>
#include <thread>

namespace {

TEST(threads, mix_everything_on_two_devices) {
  const auto all = caller::devices();
  std::vector<caller::kernel> kernels;
  for (std::size_t i = 0; i < 2; ++i)
    kernels.push_back(caller::find_kernel(caller::compile(all[i % all.size()], caller::mix_source), "add"));
  EXPECT_EQ(caller::mix_threads(kernels), "");
}

// An implementation may work a binary out when it is first asked for one.
TEST(threads, ask_for_a_binary_that_nobody_has_asked_for) {
  const caller::program made = caller::compile(caller::devices()[0], caller::mix_source);
  const caller::property opencl =
      caller::child(caller::root<tarva_abi_get_program_root_property>(made), "OPENCL");
  std::vector<std::size_t> sizes(8);
  std::barrier together(static_cast<std::ptrdiff_t>(sizes.size()));
  std::vector<std::thread> threads;
  for (std::size_t& size : sizes)
    threads.emplace_back([&] {
      together.arrive_and_wait();
      size = caller::child(opencl, "CL_PROGRAM_BINARY").size();
    });
  for (std::thread& each : threads)
    each.join();
  EXPECT_EQ(sizes, std::vector<std::size_t>(sizes.size(), caller::child(opencl, "CL_PROGRAM_BINARY").size()));
}

} // namespace
