// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "benchmarks/comparison.h"

#include <algorithm>
#include <chrono>

namespace benchmarks {

namespace {

// The place in the order of subjects that is `turn`th in `round`: each subject comes first, last and in between
// equally often, and each pair in both orders.
std::size_t place(std::size_t round, std::size_t turn, std::size_t count) {
  const std::size_t forward = (round / 2 + turn) % count;
  return round % 2 == 0 ? forward : count - 1 - forward;
}

} // namespace

double nanoseconds_of(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
  if (values.empty())
    return 0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

void compare(benchmark::State& state, const std::vector<measured_subject>& subjects) {
  std::vector<std::vector<double>> times(subjects.size());
  const std::size_t warm_up = std::min<std::size_t>(20, static_cast<std::size_t>(state.max_iterations) / 10);
  for (std::size_t round = 0; round < warm_up; ++round)
    for (const auto& each : subjects)
      each.nanoseconds();

  std::size_t round = 0;
  for ([[maybe_unused]] auto _ : state) {
    for (std::size_t turn = 0; turn < subjects.size(); ++turn) {
      const std::size_t index = place(round, turn, subjects.size());
      times[index].push_back(subjects[index].nanoseconds());
    }
    state.SetIterationTime(times[0].back() / 1e9);
    ++round;
  }

  for (std::size_t index = 0; index < subjects.size(); ++index) {
    state.counters["ns_" + subjects[index].name] = median(times[index]);
    if (index == 0)
      continue;
    std::vector<double> ratios;
    ratios.reserve(times[0].size());
    for (std::size_t i = 0; i < times[0].size(); ++i)
      ratios.push_back(times[0][i] / times[index][i]);
    state.counters["ratio_" + subjects[index].name] = median(std::move(ratios));
  }
}

void compare(benchmark::State& state, const std::vector<subject>& subjects, std::uint64_t operations) {
  std::vector<measured_subject> measured;
  measured.reserve(subjects.size());
  for (const subject& each : subjects)
    measured.push_back({each.name, [&each, operations] {
                          if (each.prepare)
                            each.prepare();
                          const double time = nanoseconds_of(each.work);
                          if (each.clean)
                            each.clean();
                          return time / static_cast<double>(operations);
                        }});
  compare(state, measured);
}

benchmark::internal::Benchmark* add(const std::string& name, int rounds,
                                    std::function<void(benchmark::State&)> body) {
  return benchmark::RegisterBenchmark(name.c_str(), std::move(body))
      ->Iterations(rounds)
      ->UseManualTime()
      ->Unit(benchmark::kMicrosecond);
}

} // namespace benchmarks
