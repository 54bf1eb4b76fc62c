// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// A want of memory, and another thread that takes advantage of it. What each allocation brings about by itself, the sweeps show.
#include "tests/failing_memory.h"
#include "tests/scripted/one_process.h"

#include <array>
#include <atomic>
#include <fcntl.h>
#include <functional>
#include <iostream>
#include <unistd.h>

namespace scripted {

namespace {

// At the moment of the failure another thread begins to wait by old handles, of which one has the address of the new one.
void refuse_a_read_that_is_waited_for() {
  static std::vector<tarva_abi_future_s*> old(1100); // more than are kept from being used again
  static std::thread waiting;
  alarm(30);
  const memory numbers = make(counted(4));
  std::vector<std::int32_t> seen(4);
  before_failure = [] {
    waiting = std::thread([] {
      long ignored = 0;
      for (tarva_abi_future_s* const each : old)
        call<tarva_abi_wait_future>(each, &ignored, nullptr);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  };
  for (std::size_t point = 1; point == 1 || has_failed; ++point) {
    for (tarva_abi_future_s*& each : old)
      must(call<tarva_abi_async_read_memory>(numbers.get(), 0, 4, seen.data(), &each));
    for (tarva_abi_future_s* const each : old)
      must(wait(each));
    // The next record shall stand where an old one was.
    std::array<void*, 1000> others{};
    for (void*& place : others)
      if (std::find(old.begin(), old.end(), place = std::malloc(sizeof(tarva_abi_object_kind))) !=
          old.end()) {
        std::free(std::exchange(place, nullptr));
        break;
      }
    has_failed = false;
    tarva_abi_future_s* future = nullptr;
    failing_allocation = point;
    const outcome accepted = call<tarva_abi_async_read_memory>(numbers.get(), 0, 4, seen.data(), &future);
    failing_allocation = endless;
    if (accepted.code == TARVA_ABI_OK)
      must(wait(future));
    if (has_failed)
      waiting.join();
    for (void* const place : others)
      std::free(place);
  }
}

TEST(memory_shortage, of_a_read_keeps_nobody_asleep) {
  expect_quiet({CASE(refuse_a_read_that_is_waited_for)});
}

} // namespace

} // namespace scripted
