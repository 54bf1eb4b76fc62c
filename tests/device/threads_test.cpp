// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Many threads on two devices at once, for as many operations as TARVA_TEST_OPERATIONS says: everything ends as a model says,
// and the process does not grow. What was measured goes into the file that TARVA_TEST_CURVE names.
#include "tests/device/thread_mix.h"

#include <barrier>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr bool keeps_freed_memory = true; // and finds by itself what is lost
#else
constexpr bool keeps_freed_memory = false;
#endif

// Of this process.
struct sample {
  std::uint64_t operations;
  double seconds;
  std::uint64_t resident_kib, threads, descriptors;
};

sample measure(std::uint64_t operations, double seconds) {
  const auto entries = [](const char* folder) {
    return static_cast<std::uint64_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
  };
  std::uint64_t total = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return {operations, seconds, resident * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)) / 1024,
          entries("/proc/self/task"), entries("/proc/self/fd")};
}

std::uint64_t wanted_operations() {
  const char* const wanted = std::getenv("TARVA_TEST_OPERATIONS");
  return wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : 40'000;
}

TEST(threads, mix_everything_on_two_devices) {
  const auto all = caller::devices();
  std::vector<caller::kernel> kernels;
  for (std::size_t i = 0; i < 2; ++i)
    kernels.push_back(caller::find_kernel(caller::compile(all[i % all.size()], caller::mix_source), "add"));

  const std::uint64_t operations = wanted_operations(),
                      between = std::max<std::uint64_t>(operations / 200, 1000);
  std::vector<sample> samples;
  std::mutex lock;
  const auto start = std::chrono::steady_clock::now();
  caller::thread_mix mix(kernels, [&](std::uint64_t done) {
    if (done % between >= 1000)
      return;
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    const std::lock_guard guard(lock);
    samples.push_back(measure(done, passed.count()));
  });
  EXPECT_EQ(mix.run(32, 0, operations), "");

  if (const char* const file = std::getenv("TARVA_TEST_CURVE")) {
    std::ofstream curve(file);
    curve << "operations,seconds,resident_kib,threads,descriptors\n";
    for (const sample& one : samples)
      curve << one.operations << ',' << one.seconds << ',' << one.resident_kib << ',' << one.threads << ','
            << one.descriptors << '\n';
    EXPECT_TRUE(curve.flush()) << "cannot write " << file;
  }
  // Behind the first third nothing may grow: what is kept ready has been made by then.
  const auto first = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 3);
  for (auto one = first; one != samples.end(); ++one) {
    EXPECT_TRUE(keeps_freed_memory || one->resident_kib <= first->resident_kib + 16 * 1024)
        << one->operations << ": " << one->resident_kib << " KiB after " << first->resident_kib;
    EXPECT_EQ(one->threads, first->threads);
    EXPECT_EQ(one->descriptors, first->descriptors);
  }
}

// An implementation may work a binary out when it is first asked for one.
TEST(threads, ask_for_a_binary_that_nobody_has_asked_for) {
  const caller::program made = caller::compile(caller::devices()[0], caller::mix_source);
  const caller::property opencl =
      caller::child(caller::root<tarva_abi_get_program_root_property>(made), "OPENCL");
  std::vector<std::size_t> sizes(8);
  std::barrier together(static_cast<std::ptrdiff_t>(sizes.size()));
  std::vector<std::jthread> threads;
  for (std::size_t& size : sizes)
    threads.emplace_back([&] {
      together.arrive_and_wait();
      size = caller::child(opencl, "CL_PROGRAM_BINARY").size();
    });
  threads.clear(); // which joins them
  EXPECT_EQ(sizes, std::vector<std::size_t>(sizes.size(), caller::child(opencl, "CL_PROGRAM_BINARY").size()));
}

} // namespace
