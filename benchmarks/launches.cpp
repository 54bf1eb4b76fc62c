// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Launches of kernels that do nothing.
#include "benchmarks/comparison.h"
#include "benchmarks/kernels.h"
#include "benchmarks/measures.h"
#include "benchmarks/peer.h"
#include "benchmarks/raw_device.h"
#include "benchmarks/tarva_device.h"
#include "benchmarks/worker.h"

namespace benchmarks {

namespace {

// Against kernels that are there, or one made for each launch.
void compare_launches(benchmark::State& state, int argument_count, bool is_fresh) {
  const std::string source = kernel_source(argument_count);
  const std::string name = kernel_name(argument_count);
  const cl_int number = 7;

  const tarva::kernel kernel = tarva_devices().front().build(source).kernel(name);
  const tarva::memory<cl_int> memory(1);
  argument_list arguments;
  for (int i = 0; i < argument_count; ++i)
    arguments.push_back(i % 2 == 0 ? tarva::argument(memory) : tarva::argument(number));

  const raw_device& device = first_raw_device();
  cl_program raw_program = device.build(source);
  cl_int status = CL_SUCCESS;
  cl_kernel raw_kernel = opencl().create_kernel(raw_program, name.c_str(), &status);
  check(status, "Making a kernel");
  cl_mem buffer = device.create_buffer(sizeof(number));
  std::vector<raw_device::argument> raw_arguments;
  raw_arguments.reserve(static_cast<std::size_t>(argument_count));
  for (int i = 0; i < argument_count; ++i)
    raw_arguments.push_back(i % 2 == 0 ? raw_device::argument{sizeof(cl_mem), &buffer}
                                       : raw_device::argument{sizeof(number), &number});

  worker thread;
  const std::function<void()> raw_launch = [&] { device.launch(raw_kernel, raw_arguments); };
  std::vector<subject> subjects{
      {"tarva", [&] { launch(kernel, arguments); }},
      {"raw", raw_launch},
      {"floor", [&] { thread.do_and_wait(raw_launch); }},
  };
  if (is_fresh)
    subjects = {subjects.front(),
                {"fresh", [&] { device.launch_fresh(raw_program, name.c_str(), raw_arguments); }}};
  const auto peers =
      is_fresh ? std::vector<named_peer>{} : make_peers(device.get_context(), device.get_device());
  for (const named_peer& each : peers) {
    each.implementation->prepare_launch(source, name, argument_count);
    subjects.push_back({each.name, [&each] { each.implementation->launch(); }});
  }
  compare(state, subjects);

  check(opencl().release_mem_object(buffer), "Releasing a buffer");
  check(opencl().release_kernel(raw_kernel), "Releasing a kernel");
  check(opencl().release_program(raw_program), "Releasing a program");
}

} // namespace

void add_launches() {
  for (const int arguments : {0, 1, 8, 64})
    add("launch/arguments:" + std::to_string(arguments), 2000,
        [arguments](benchmark::State& state) { compare_launches(state, arguments, false); });
  for (const int arguments : {0, 8})
    add("fresh_kernel/arguments:" + std::to_string(arguments), 300,
        [arguments](benchmark::State& state) { compare_launches(state, arguments, true); });
}

} // namespace benchmarks
