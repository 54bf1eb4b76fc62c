#include "abi/call_gate.h"

#include <pthread.h>
#include <thread>

namespace oryn::tarva::library {

thread_local constinit std::uint64_t call_gate::own_calls = 0;

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
  const auto end = std::chrono::steady_clock::now() + limit;
  while (calls_inside() > own_calls) {
    if (std::chrono::steady_clock::now() >= end)
      return false;
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  return true;
}

} // namespace oryn::tarva::library
