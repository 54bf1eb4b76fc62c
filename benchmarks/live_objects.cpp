// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The price of one operation while more and more memory objects are alive.
#include "benchmarks/comparison.h"
#include "benchmarks/measures.h"
#include "benchmarks/raw_device.h"
#include "benchmarks/tarva_device.h"
#include "benchmarks/worker.h"

#include <random>

namespace benchmarks {

namespace {

// Only grows, from one measure to the next.
std::vector<numbers>& live_objects() {
  static auto& objects = *new std::vector<numbers>;
  return objects;
}

// On one object again and again, or on one after the other, picked at random. The latter adds the misses of the
// processor's caches, which the other side has for its plain storage, too.
void compare_operations(benchmark::State& state, std::size_t count, bool at_random) {
  auto& objects = live_objects();
  while (objects.size() < count)
    objects.emplace_back(1);
  std::vector<std::uint32_t> raw_objects(count);
  std::minstd_rand random; // NOLINT(cert-msc51-cpp): the same picks in each run
  std::size_t index = 0;
  const auto pick = [&] {
    if (at_random)
      index = random() % count;
    benchmark::DoNotOptimize(objects[index].get()); // the caller's list of handles is not measured
  };
  worker thread;
  const std::function<void()> raw_fill = [&] { raw_objects[index] = 7; };
  compare(state, std::vector<subject>{
                     {"tarva", [&] { fill(objects[index], 7, 1); }, pick},
                     {"floor", [&] { thread.do_and_wait(raw_fill); }, pick},
                 });
}

} // namespace

void add_live_objects() {
  for (const std::size_t count : {1, 1000, 1000000})
    for (const bool at_random : {false, true})
      add(std::string("fill_on_host/") + (at_random ? "random" : "same") + "/live:" + std::to_string(count),
          3000, [count, at_random](benchmark::State& state) { compare_operations(state, count, at_random); });
}

} // namespace benchmarks
