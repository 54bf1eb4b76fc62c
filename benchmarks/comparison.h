// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Measures several ways to do the same work against each other, in turn and in one run: on a machine whose speed
// changes from one second to the next, only what is measured side by side can be compared.
#pragma once

#include <benchmark/benchmark.h>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace benchmarks {

// One way to do the work. What is not to be timed goes before and after it.
struct subject {
  std::string name;
  std::function<void()> work;
  std::function<void()> prepare{};
  std::function<void()> clean{};
};

// Each iteration of `state` is a round, in which every subject has its turn; the order changes from round to round.
// The first subject is the one that the others are there for. Counters tell for each subject the median of its times,
// in nanoseconds (`ns_<name>`), and for all but the first the median of the ratios, round by round, of the first one's
// time to its time (`ratio_<name>`). Times are divided by `operations`, the number that one piece of work consists of.
void compare(benchmark::State& state, const std::vector<subject>& subjects, std::uint64_t operations = 1);

// The same for subjects that time themselves.
struct measured_subject {
  std::string name;
  std::function<double()> nanoseconds;
};
void compare(benchmark::State& state, const std::vector<measured_subject>& subjects);

// Registers a benchmark whose number of rounds is fixed.
benchmark::internal::Benchmark* add(const std::string& name, int rounds,
                                    std::function<void(benchmark::State&)> body);

double nanoseconds_of(const std::function<void()>& work);
double median(std::vector<double> values);

} // namespace benchmarks
