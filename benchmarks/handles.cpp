// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Handles: what each call does before its own work, by one thread and by several. Times are of all calls together, per
// call: with as many processors as threads, and no dispute, they would fall as threads are added.
#include "abi/bridge.h"
#include "benchmarks/comparison.h"
#include "benchmarks/measures.h"
#include "benchmarks/raw_device.h"
#include "benchmarks/tarva_device.h"
#include "benchmarks/thread_team.h"
#include "memory/library_memory.h"

#include <algorithm>
#include <dlfcn.h>
#include <random>

namespace benchmarks {

namespace {

// The capability library has no use for it.
const auto retain_context = reinterpret_cast<decltype(&clRetainContext)>(
    dlsym(dlopen(qv::opencl_loader_name, RTLD_NOW | RTLD_LOCAL), "clRetainContext"));

constexpr std::uint64_t calls = 16000; // of all threads together, in a round
constexpr int rounds = 200;

void compare_retains(benchmark::State& state, std::size_t threads) {
  const numbers memory(1);
  cl_context context = first_raw_device().get_context();
  thread_team team(threads);
  compare(state,
          std::vector<subject>{
              {"tarva",
               [&] {
                 team.do_together([&](std::size_t) {
                   for (std::uint64_t i = 0; i < calls / threads / 2; ++i) {
                     tarva_abi_retain_memory(nullptr, memory.get());
                     tarva_abi_release_memory(nullptr, memory.get());
                   }
                 });
               }},
              {"raw",
               [&] {
                 team.do_together([&](std::size_t) {
                   for (std::uint64_t i = 0; i < calls / threads / 2; ++i) {
                     retain_context(context);
                     opencl().release_context(context);
                   }
                 });
               }},
          },
          calls / threads * threads);
}

// From a handle to its object, among `count` handles that are picked at random. Each thread has handles and an object of its
// own, unless there is one handle only.
void measure_look_ups(benchmark::State& state, std::size_t threads, std::size_t count) {
  using namespace oryn::tarva::library;
  abi_bridge bridge;
  const std::size_t owners = std::min(threads, count);
  std::vector<std::shared_ptr<library_memory>> objects;
  for (std::size_t i = 0; i < owners; ++i)
    objects.push_back(std::make_shared<library_memory>(data_type::uint32_, 1, ""));
  std::vector<tarva_abi_memory_s*> handles;
  for (std::size_t i = 0; i < count; ++i)
    handles.push_back(bridge.make_handle<tarva_abi_memory_s>(objects[i % owners]));
  std::vector<std::vector<tarva_abi_memory_s*>> picked(threads);
  std::minstd_rand random; // NOLINT(cert-msc51-cpp): the same picks in each run
  for (std::size_t own = 0; own < threads; ++own)
    for (std::uint64_t i = 0; i < calls * rounds / threads; ++i)
      picked[own].push_back(handles[random() % (count / owners) * owners + own % owners]);

  thread_team team(threads);
  std::uint64_t round = 0;
  const std::uint64_t calls_of_one = calls / threads;
  compare(state,
          std::vector<subject>{{"tarva",
                                [&] {
                                  const std::uint64_t first = round++ % rounds * calls_of_one;
                                  team.do_together([&](std::size_t own) {
                                    for (std::uint64_t i = first; i < first + calls_of_one; ++i)
                                      benchmark::DoNotOptimize(bridge.get_library_object(picked[own][i]));
                                  });
                                }}},
          calls_of_one * threads);
  for (tarva_abi_memory_s* handle : handles)
    bridge.release(handle);
}

} // namespace

void add_handles() {
  for (const std::size_t threads : {1, 2, 4, 8}) {
    add("retain_or_release/threads:" + std::to_string(threads), rounds,
        [threads](benchmark::State& state) { compare_retains(state, threads); });
    for (const std::size_t count : {1, 1000, 1000000})
      add("look_up/handles:" + std::to_string(count) + "/threads:" + std::to_string(threads), rounds,
          [threads, count](benchmark::State& state) { measure_look_ups(state, threads, count); });
  }
}

} // namespace benchmarks
