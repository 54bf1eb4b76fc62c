// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Small writes to one device while launches of about a millisecond run on another. The library runs one operation at a
// time, so each write waits for a launch; the other side has a thread and a queue for each device. Needs two devices.
#include "benchmarks/comparison.h"
#include "benchmarks/measures.h"
#include "benchmarks/raw_device.h"
#include "benchmarks/tarva_device.h"

#include <algorithm>
#include <atomic>
#include <semaphore>
#include <thread>

namespace benchmarks {

namespace {

constexpr const char* source = "kernel void work(global uint* to, uint steps) {\n"
                               "  uint x = to[0];\n"
                               "  for (uint i = 0; i < steps; ++i)\n"
                               "    x = (x ^ (x >> 7)) * 1664525u + 1013904223u;\n"
                               "  to[0] = x;\n"
                               "}\n";

struct write_times {
  double mean = 0;
  double longest = 0;
};

// In nanoseconds, of writes one after the other.
write_times time_writes(const std::function<void()>& write) {
  constexpr double whole = 1e8;
  write_times times;
  double sum = 0;
  double count = 0;
  for (; sum < whole; ++count) {
    const double time = nanoseconds_of(write);
    sum += time;
    times.longest = std::max(times.longest, time);
  }
  times.mean = sum / count;
  return times;
}

// The same while another thread launches without a pause.
write_times time_writes_beside(const std::function<void()>& launch, const std::function<void()>& write) {
  std::atomic<bool> has_ended = false;
  std::binary_semaphore is_launching(0);
  std::thread launcher([&] {
    launch();
    is_launching.release();
    while (!has_ended)
      launch();
  });
  is_launching.acquire();
  const write_times times = time_writes(write);
  has_ended = true;
  launcher.join();
  return times;
}

double usual_time(const std::function<void()>& work) {
  std::vector<double> times;
  for (int i = 0; i < 20; ++i)
    times.push_back(nanoseconds_of(work));
  return median(times);
}

void compare_neighbours(benchmark::State& state) {
  if (tarva_devices().size() < 2) {
    state.SkipWithError("needs two devices");
    return;
  }
  const std::uint32_t value = 3;

  const auto ids = find_raw_devices();
  const raw_device busy(ids.at(0));
  const raw_device idle(ids.at(1));
  cl_program program = busy.build(source);
  cl_int status = CL_SUCCESS;
  cl_kernel raw_kernel = opencl().create_kernel(program, "work", &status);
  check(status, "Making a kernel");
  cl_mem worked_on = busy.create_buffer(sizeof(value));
  cl_mem written_to = idle.create_buffer(sizeof(value));
  cl_uint steps = 1 << 18;
  const std::function<void()> raw_launch = [&] {
    busy.launch(raw_kernel, {{sizeof(cl_mem), &worked_on}, {sizeof(steps), &steps}});
  };
  const std::function<void()> raw_write = [&] { idle.write(written_to, &value, sizeof(value)); };
  constexpr double wanted_time = 1e6;
  steps = static_cast<cl_uint>(steps * wanted_time / usual_time(raw_launch));

  const tarva::kernel kernel = tarva_devices()[0].build(source).kernel("work");
  const numbers here = make_resident(0, 1);
  const numbers there = make_resident(1, 1);
  const argument_list arguments{tarva::argument(here), tarva::argument(steps)};
  const std::function<void()> launching = [&] { launch(kernel, arguments); };
  const std::function<void()> writing = [&] { write(there, &value, 1); };

  std::vector<double> longest;
  const auto beside_launches = [&] {
    const write_times times = time_writes_beside(launching, writing);
    longest.push_back(times.longest);
    return times.mean;
  };
  compare(state, std::vector<measured_subject>{
                     {"tarva", beside_launches},
                     {"alone", [&] { return time_writes(writing).mean; }},
                     {"raw", [&] { return time_writes_beside(raw_launch, raw_write).mean; }},
                     {"raw_alone", [&] { return time_writes(raw_write).mean; }},
                 });
  state.counters["ns_longest"] = median(longest);
  state.counters["ns_launch"] = usual_time(raw_launch);
  check(opencl().release_mem_object(worked_on), "Releasing a buffer");
  check(opencl().release_mem_object(written_to), "Releasing a buffer");
  check(opencl().release_kernel(raw_kernel), "Releasing a kernel");
  check(opencl().release_program(program), "Releasing a program");
}

} // namespace

void add_busy_neighbours() {
  add("other_device_busy/write/bytes:4", 20, compare_neighbours);
}

} // namespace benchmarks
