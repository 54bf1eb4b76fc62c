// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Programs from source text.
#include "benchmarks/comparison.h"
#include "benchmarks/measures.h"
#include "benchmarks/raw_device.h"
#include "benchmarks/tarva_device.h"

namespace benchmarks {

namespace {

// A text that no build has seen before.
std::string new_source() {
  static int number = 0;
  return "kernel void scale(global float* x) { x[get_global_id(0)] *= " + std::to_string(++number) +
         ".5f; }\n";
}

void compare_builds(benchmark::State& state, bool cold) {
  const raw_device& device = first_raw_device();
  std::string source = new_source();
  const auto prepare = [&] {
    if (cold)
      source = new_source();
  };
  compare(state,
          std::vector<subject>{
              {"tarva", [&] { tarva_devices().front().build(source); }, prepare},
              {"raw", [&] { check(opencl().release_program(device.build(source)), "Releasing a program"); },
               prepare},
          });
}

} // namespace

void add_builds() {
  add("build/cold", 6, [](benchmark::State& state) { compare_builds(state, true); });
  add("build/cached", 20, [](benchmark::State& state) { compare_builds(state, false); });
}

} // namespace benchmarks
