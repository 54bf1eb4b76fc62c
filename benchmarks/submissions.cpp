// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Many threads that launch on one device. The library runs one operation at a time; so does the other side, by a mutex.
// Times are per launch, of all threads together.
#include "benchmarks/comparison.h"
#include "benchmarks/kernels.h"
#include "benchmarks/measures.h"
#include "benchmarks/raw_device.h"
#include "benchmarks/tarva_device.h"
#include "benchmarks/thread_team.h"
#include "benchmarks/worker.h"

#include <mutex>

namespace benchmarks {

namespace {

constexpr std::uint64_t launches = 20;

void compare_submissions(benchmark::State& state, std::size_t threads) {
  const std::string source = kernel_source(0);
  const tarva::kernel kernel = tarva_devices().front().build(source).kernel(kernel_name(0));
  const raw_device& device = first_raw_device();
  cl_program program = device.build(source);
  cl_int status = CL_SUCCESS;
  cl_kernel raw_kernel = opencl().create_kernel(program, kernel_name(0).c_str(), &status);
  check(status, "Making a kernel");

  std::mutex lock;
  worker thread;
  const std::function<void()> raw_launch = [&] { device.launch(raw_kernel, {}); };
  thread_team team(threads);
  const auto by_all = [&team](const std::function<void()>& work) {
    team.do_together([&](std::size_t) {
      for (std::uint64_t i = 0; i < launches; ++i)
        work();
    });
  };
  compare(state,
          std::vector<subject>{
              {"tarva", [&] { by_all([&] { launch(kernel, {}); }); }},
              {"raw",
               [&] {
                 by_all([&] {
                   const std::lock_guard guard(lock);
                   raw_launch();
                 });
               }},
              {"floor",
               [&] {
                 by_all([&] {
                   const std::lock_guard guard(lock);
                   thread.do_and_wait(raw_launch);
                 });
               }},
          },
          launches * threads);
  check(opencl().release_kernel(raw_kernel), "Releasing a kernel");
  check(opencl().release_program(program), "Releasing a program");
}

} // namespace

void add_submissions() {
  for (const std::size_t threads : {1, 2, 4, 8, 16})
    add("submit/threads:" + std::to_string(threads), 100,
        [threads](benchmark::State& state) { compare_submissions(state, threads); });
}

} // namespace benchmarks
