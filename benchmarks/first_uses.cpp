// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// A launch with an object that has never been on a device: one that has been written is moved there, into fresh storage,
// and its storage on the host is given up; one that the launch is the first to write to has nothing to move.
#include "benchmarks/comparison.h"
#include "benchmarks/kernels.h"
#include "benchmarks/measures.h"
#include "benchmarks/raw_device.h"
#include "benchmarks/sizes.h"
#include "benchmarks/tarva_device.h"
#include "benchmarks/worker.h"

namespace benchmarks {

namespace {

void compare_written(benchmark::State& state, std::uint64_t bytes) {
  const std::uint64_t count = bytes / sizeof(std::uint32_t);
  const std::vector<std::uint32_t> content(count, 3);
  const tarva::kernel kernel = tarva_devices().front().build(kernel_source(1)).kernel(kernel_name(1));
  numbers memory;

  const raw_device& device = first_raw_device();
  cl_program raw_program = device.build(kernel_source(1));
  cl_int status = CL_SUCCESS;
  cl_kernel raw_kernel = opencl().create_kernel(raw_program, kernel_name(1).c_str(), &status);
  check(status, "Making a kernel");
  std::unique_ptr<std::vector<std::uint32_t>> raw_content;
  cl_mem buffer = nullptr;

  const std::function<void()> raw = [&] {
    buffer = device.create_buffer(bytes);
    device.write(buffer, raw_content->data(), bytes);
    raw_content.reset();
    device.launch(raw_kernel, {{sizeof(cl_mem), &buffer}});
  };
  const auto prepare_raw = [&] { raw_content = std::make_unique<std::vector<std::uint32_t>>(content); };
  const auto clean_raw = [&] { check(opencl().release_mem_object(buffer), "Releasing a buffer"); };
  // What nobody can do without: the write into a fresh buffer alone.
  const std::function<void()> raw_write = [&] {
    buffer = device.create_buffer(bytes);
    device.write(buffer, content.data(), bytes);
  };

  worker thread;
  compare(state, std::vector<subject>{
                     {"tarva", [&] { launch(kernel, {tarva::argument(memory)}); },
                      [&] {
                        memory = numbers(count);
                        write(memory, content.data(), count);
                      },
                      [&] { memory.reset(); }},
                     {"raw", raw, prepare_raw, clean_raw},
                     {"floor", [&] { thread.do_and_wait(raw); }, prepare_raw, clean_raw},
                     {"fresh_write", raw_write, {}, clean_raw},
                 });
  state.counters["bytes"] = static_cast<double>(bytes);
  check(opencl().release_kernel(raw_kernel), "Releasing a kernel");
  check(opencl().release_program(raw_program), "Releasing a program");
}

// Made, launched on once, and given up: what becomes of most results.
void compare_never_written(benchmark::State& state, std::uint64_t bytes) {
  const raw_device& device = first_raw_device();
  if (bytes > device.get_largest_buffer()) {
    state.SkipWithError("the device has no room");
    return;
  }
  const tarva::kernel kernel = tarva_devices().front().build(kernel_source(1)).kernel(kernel_name(1));
  cl_program raw_program = device.build(kernel_source(1));
  cl_int status = CL_SUCCESS;
  cl_kernel raw_kernel = opencl().create_kernel(raw_program, kernel_name(1).c_str(), &status);
  check(status, "Making a kernel");
  const std::function<void()> raw = [&] {
    cl_mem buffer = device.create_buffer(bytes);
    device.launch(raw_kernel, {{sizeof(cl_mem), &buffer}});
    check(opencl().release_mem_object(buffer), "Releasing a buffer");
  };
  worker thread;
  compare(state, std::vector<subject>{{"tarva",
                                       [&] {
                                         const numbers memory(bytes / sizeof(std::uint32_t));
                                         launch(kernel, {tarva::argument(memory)});
                                       }},
                                      {"raw", raw},
                                      {"floor", [&] { thread.do_and_wait(raw); }}});
  state.counters["bytes"] = static_cast<double>(bytes);
  check(opencl().release_kernel(raw_kernel), "Releasing a kernel");
  check(opencl().release_program(raw_program), "Releasing a program");
}

} // namespace

void add_first_uses() {
  for (const auto& [bytes, rounds] : sizes)
    add("first_launch/written/bytes:" + std::to_string(bytes), rounds,
        [bytes = bytes](benchmark::State& state) { compare_written(state, bytes); });
  constexpr measured_size never_written[] = {
      {4 << 10, 2000}, {1 << 20, 500}, {64 << 20, 300}, {1 << 30, 100}};
  for (const auto& [bytes, rounds] : never_written)
    add("first_launch/never_written/bytes:" + std::to_string(bytes), rounds,
        [bytes = bytes](benchmark::State& state) { compare_never_written(state, bytes); });
}

} // namespace benchmarks
