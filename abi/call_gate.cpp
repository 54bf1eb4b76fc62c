#include "abi/call_gate.h"

#include <pthread.h>
#include <thread>

namespace oryn::tarva::library {

thread_local constinit std::uint64_t call_gate::own_calls = 0;
thread_local constinit bool call_gate::has_precedence = false;

namespace {

void rest() noexcept {
  std::this_thread::sleep_for(std::chrono::microseconds(200));
}

} // namespace

std::atomic<std::uint64_t>& call_gate::shard_of_this_thread() noexcept {
  // A thread's identity is an address; the multiplication spreads its bits over the uppermost ones.
  const std::uint64_t spread = static_cast<std::uint64_t>(pthread_self()) * 0x9E3779B97F4A7C15U;
  return shards_[spread >> (64 - shard_bits)].calls;
}

std::uint64_t call_gate::calls_inside() const noexcept {
  std::uint64_t calls = 0;
  for (const shard& each : shards_)
    calls += each.calls.load();
  return calls;
}

bool call_gate::wait_for_other_threads(std::chrono::milliseconds limit) const noexcept {
  const auto end = clock::now() + limit;
  while (calls_inside() > own_calls) {
    if (clock::now() >= end)
      return false;
    rest();
  }
  return true;
}

bool call_gate::let_other_threads_leave(std::chrono::milliseconds limit,
                                        std::chrono::milliseconds delay) noexcept {
  if (own_calls != 0)
    return true;
  has_precedence = true;
  auto opening = clock::now() + limit + delay;
  opening_.store(opening);
  const bool have_left = wait_for_other_threads(limit);
  opening_.compare_exchange_strong(opening, clock::now() + delay); // unless it was closed meanwhile
  return have_left;
}

bool call_gate::admit_late(std::atomic<std::uint64_t>& calls) const noexcept {
  if (!has_precedence) {
    calls.fetch_sub(1);
    for (auto opening = opening_.load(); opening != never && clock::now() < opening;
         opening = opening_.load())
      rest();
    calls.fetch_add(1);
  }
  return opening_.load() != never;
}

} // namespace oryn::tarva::library
