// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Runs the measures.
#include "benchmarks/measures.h"

#include <benchmark/benchmark.h>

int main(int argc, char** argv) {
  using namespace benchmarks;
  add_launches();
  add_transfers();
  add_first_uses();
  add_movements();
  add_allocations();
  add_builds();
  add_handles();
  add_properties();
  add_starts();
  add_submissions();
  add_live_objects();
  add_busy_neighbours();
  add_many_threads();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv))
    return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
