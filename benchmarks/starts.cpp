// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Start and stop of the library, and the memory it takes: each time a process of its own.
#include "benchmarks/comparison.h"
#include "benchmarks/measures.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace benchmarks {

namespace {

struct life {
  double start;
  double stop;
  double kilobytes;
};

life run_probe(const std::string& arguments) {
  std::FILE* output = popen(("exec " START_PROBE " " + arguments).c_str(), "r");
  double start = 0;
  long kilobytes = 0;
  long long end_began = 0;
  const int read =
      output == nullptr ? 0 : std::fscanf(output, "%lf %ld %lld", &start, &kilobytes, &end_began);
  if (read != 3 || pclose(output) != 0) {
    std::fprintf(stderr, "%s does not start.\n", START_PROBE);
    std::exit(1);
  }
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  const auto ended = std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
  return {start, static_cast<double>(ended - end_began), static_cast<double>(kilobytes)};
}

void compare_lives(benchmark::State& state, double life::*what) {
  compare(state, std::vector<measured_subject>{{"tarva", [what] { return run_probe(TARVA_LIBRARY).*what; }},
                                               {"raw", [what] { return run_probe("").*what; }}});
}

void compare_memory(benchmark::State& state) {
  std::vector<double> more;
  for ([[maybe_unused]] auto _ : state) {
    more.push_back(run_probe(TARVA_LIBRARY).kilobytes - run_probe("").kilobytes);
    state.SetIterationTime(0);
  }
  state.counters["kilobytes_more"] = median(more);
}

} // namespace

void add_starts() {
  add("start", 30, [](benchmark::State& state) { compare_lives(state, &life::start); });
  add("stop", 30, [](benchmark::State& state) { compare_lives(state, &life::stop); });
  add("resident_memory", 10, compare_memory);
}

} // namespace benchmarks
