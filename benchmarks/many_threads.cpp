// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Many threads at a time: how much they get done together, how long each waits and how evenly they are served; the same work
// on all devices at once; and the worst call while a table of handles grows and shrinks.
#include "abi/bridge.h"
#include "benchmarks/comparison.h"
#include "benchmarks/measures.h"
#include "benchmarks/tarva_device.h"
#include "benchmarks/thread_team.h"
#include "memory/library_memory.h"

#include <algorithm>
#include <atomic>
#include <ctime>
#include <thread>

namespace benchmarks {

namespace {

using clock = std::chrono::steady_clock;
using times = std::vector<double>; // of calls, in nanoseconds

double share(times& all, double part) {
  const auto place = all.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(all.size() - 1));
  std::nth_element(all.begin(), place, all.end());
  return *place;
}

// Each thread writes 4 bytes to an object of its own again and again. How many calls there are is settled by the clock.
void measure_writes(benchmark::State& state, std::size_t threads) {
  constexpr std::chrono::milliseconds duration{300};
  std::vector<numbers> objects;
  for (std::size_t i = 0; i < threads; ++i)
    objects.push_back(make_resident(0, 1));
  std::vector<times> calls(threads);
  thread_team team(threads);
  times per_call, medians, nearly_worst, worst, fairness;
  for ([[maybe_unused]] auto _ : state) {
    const auto start = clock::now();
    team.do_together([&](std::size_t own) {
      calls[own].clear();
      const std::uint32_t value = 3;
      while (clock::now() - start < duration)
        calls[own].push_back(nanoseconds_of([&] { write(objects[own], &value, 1); }));
    });
    const std::chrono::duration<double, std::nano> took = clock::now() - start;
    times all;
    std::size_t least = calls[0].size(), most = least;
    for (const times& own : calls) {
      all.insert(all.end(), own.begin(), own.end());
      least = std::min(least, own.size());
      most = std::max(most, own.size());
    }
    per_call.push_back(took.count() / static_cast<double>(all.size()));
    medians.push_back(share(all, 0.5));
    nearly_worst.push_back(share(all, 0.99));
    worst.push_back(share(all, 1.0));
    fairness.push_back(static_cast<double>(most) / static_cast<double>(std::max<std::size_t>(least, 1)));
    state.SetIterationTime(took.count() / 1e9);
  }
  state.counters["ns_tarva"] = median(per_call);
  state.counters["ns_median"] = median(medians);
  state.counters["ns_99th"] = median(nearly_worst);
  state.counters["ns_longest"] = median(worst);
  state.counters["ratio_most_to_least"] = median(fairness);
}

// A launch of some 20 ms on each device, from a thread each, to the same launch on one device.
void compare_devices(benchmark::State& state) {
  constexpr const char* source = "kernel void work(global uint* to, uint steps) {\n"
                                 "  uint x = to[0];\n"
                                 "  for (uint i = 0; i < steps; ++i)\n"
                                 "    x = (x ^ (x >> 7)) * 1664525u + 1013904223u;\n"
                                 "  to[0] = x;\n"
                                 "}\n";
  constexpr double wanted_time = 2e7;
  const std::size_t count = tarva_devices().size();
  std::uint32_t steps = 1 << 20;
  std::vector<tarva::kernel> kernels;
  std::vector<numbers> objects;
  for (std::size_t i = 0; i < count; ++i) {
    kernels.push_back(tarva_devices()[i].build(source).kernel("work"));
    objects.push_back(make_resident(i, 1));
  }
  const auto launch_on = [&](std::size_t i) {
    launch(kernels[i], {tarva::argument(objects[i]), tarva::argument(steps)});
  };
  launch_on(0);
  steps = static_cast<std::uint32_t>(steps * wanted_time / nanoseconds_of([&] { launch_on(0); }));
  thread_team team(count);
  const std::function<void(std::size_t)> on_own = launch_on;
  const std::function<void(std::size_t)> on_first = [&](std::size_t i) {
    if (i == 0)
      launch_on(0);
  };
  compare(state, std::vector<subject>{{"tarva", [&] { team.do_together(on_own); }},
                                      {"one_device", [&] { team.do_together(on_first); }}});
}

// Of this thread's processor, so that what other processes take does not count.
double processor_nanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

void measure_growth(benchmark::State& state, std::size_t count) {
  using namespace oryn::tarva::library;
  abi_bridge bridge;
  const auto object = std::make_shared<library_memory>(data_type::uint32_, 1, "");
  std::vector<tarva_abi_memory_s*> handles(count);
  double longest = 0, sum = 0;
  const auto call = [&](const auto& work) {
    const double start = processor_nanoseconds();
    work();
    const double took = processor_nanoseconds() - start;
    longest = std::max(longest, took);
    sum += took;
  };
  for ([[maybe_unused]] auto _ : state) {
    for (auto& handle : handles)
      call([&] { handle = bridge.make_handle<tarva_abi_memory_s>(object); });
    for (tarva_abi_memory_s* const handle : handles)
      call([&] { bridge.release(handle); });
    state.SetIterationTime(sum / 1e9);
  }
  state.counters["ns_tarva"] = sum / 2 / static_cast<double>(count);
  state.counters["ns_longest"] = longest;
}

} // namespace

void add_many_threads() {
  for (const std::size_t threads : {1, 4, 16, 64})
    add("many_writes/threads:" + std::to_string(threads), 5,
        [threads](benchmark::State& state) { measure_writes(state, threads); });
  add("all_devices", 20, compare_devices);
  for (const std::size_t count : {10000, 1000000, 10000000})
    add("table_growth/handles:" + std::to_string(count), 1,
        [count](benchmark::State& state) { measure_growth(state, count); });
}

} // namespace benchmarks
