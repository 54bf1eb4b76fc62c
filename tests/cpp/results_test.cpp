// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Failures as values, compiled with exceptions and, as most who want them do, without exceptions and type information.
#include "tests/scripted/scripted_qv.h"

#include <cstdio>
#include <tarva.hpp>

namespace {

int faults = 0;

void expect(bool holds, const char* what) {
  if (!holds)
    std::printf("FAILED: %s\n", what), ++faults;
}

template <class Action>
void expect_failure(tarva_abi_result code, const char* words, Action action) {
  const auto ended = tarva::attempt(action);
  expect(!ended && ended.error().code() == code &&
             std::string(ended.error().what()).find(words) != std::string::npos,
         ended ? words : ended.error().what());
}

using ints = tarva::memory<int>;

void run() {
  const tarva::device device = tarva::best_device();
  const auto program =
      tarva::attempt([&] { return device.build("kernel void add(global int* data, int amount) {}"); });
  const auto add = tarva::attempt([&] { return program->kernel<ints, int>("add"); });
  const ints data(std::vector<int>{1, 2, 3});
  expect(add && tarva::attempt([&] { (*add)(tarva::range::items(3), data, 1); }), "a launch succeeds");
  expect(tarva::attempt([&] { return data.read(); }).value_or({}) == std::vector<int>{1, 2, 3},
         "a read succeeds");
  expect_failure(TARVA_ABI_LOGIC_FAILURE, "A part of 3 elements", [&] {
    const auto part = data.part(1, 3);
    data.fill(9);
    return part.size();
  });
  expect(data.read().front() == 1, "nothing is done after a failure");
  expect_failure(TARVA_ABI_OK, "does not build",
                 [&] { return device.build("#error").kernel<ints, int>("add"); });
  expect_failure(TARVA_ABI_RUNTIME_FAILURE, "There is no ad", [&] { return program->kernel("ad"); });
  expect_failure(TARVA_ABI_LOGIC_FAILURE, "NO_SUCH",
                 [&] { return device.properties()["NO_SUCH"]["A"].get<int>(); });
  scripted::fail_event(qv::operation::enqueue_read_buffer, 1, -5);
  expect_failure(TARVA_ABI_RUNTIME_FAILURE, "Failed to allocate resources", [&] { return data.read(); });
  // An attempt within another one keeps its failure to itself.
  expect(tarva::attempt([&] {
           (void)tarva::attempt([&] { (void)data.part(4, 1); });
           return data.size();
         }).value_or(0) == 3,
         "the outer attempt goes on");
}

} // namespace

int main(int count, char**) {
  scripted::set_devices({{"only", {3}}});
  if (count > 1)
    (void)ints(2).part(1, 2);
  run();
  return faults == 0 ? 0 : 1;
}
