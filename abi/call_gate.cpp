#include "abi/call_gate.h"

#include <algorithm>
#include <pthread.h>
#include <thread>

namespace oryn::tarva::library {

std::atomic<std::uint64_t>& call_gate::calls_of_this_thread() noexcept {
  // A thread's identity is an address; the multiplication spreads its bits over the uppermost ones.
  const std::uint64_t spread = static_cast<std::uint64_t>(pthread_self()) * 0x9E3779B97F4A7C15U;
  return shards_[spread >> (64 - SHARD_BITS)].calls;
}

bool call_gate::is_idle() const noexcept {
  return std::all_of(shards_.begin(), shards_.end(),
                     [](const shard& each) { return each.calls.load() == 0; });
}

bool call_gate::wait_until_idle(std::chrono::milliseconds limit) const noexcept {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!is_idle()) {
    if (std::chrono::steady_clock::now() >= end)
      return false;
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  return true;
}

} // namespace oryn::tarva::library
