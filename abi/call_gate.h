#pragma once

#include "base/process_fault.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <pthread.h>

namespace oryn::tarva::library {

// Counts the calls that are inside the library, and lets none in once it is closed. Nothing of it is ever
// destroyed, so that it can be asked until the very end of the process.
class call_gate {
public:
  constexpr call_gate() noexcept = default;
  call_gate(const call_gate&) = delete;
  call_gate& operator=(const call_gate&) = delete;

  void close() noexcept { closed_.store(true); }
  bool is_idle() const noexcept { return calls_inside() == 0; }
  // Gives the calls of other threads time to leave. True if they have.
  bool wait_for_other_threads(std::chrono::milliseconds limit) const noexcept;

  // One call, while it lives. A thread that is cancelled meanwhile ends behind it, not in the middle. What a signal's
  // handler calls in the middle of a call is refused: it would wait for locks that its own thread holds.
  class permit {
  public:
    explicit permit(call_gate& gate) noexcept : calls_(gate.shard_of_this_thread()) {
      pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancel_state_);
      // Counted first, so that whoever closes the gate and then finds no call inside is right.
      calls_.fetch_add(1);
      granted_ = own_calls++ == 0 && !gate.closed_.load() && !process_has_failed();
    }
    permit(const permit&) = delete;
    permit& operator=(const permit&) = delete;
    ~permit() {
      --own_calls;
      calls_.fetch_sub(1);
      pthread_setcancelstate(cancel_state_, nullptr);
    }

    bool is_granted() const noexcept { return granted_; }

  private:
    std::atomic<std::uint64_t>& calls_;
    int cancel_state_ = PTHREAD_CANCEL_ENABLE;
    bool granted_;
  };

private:
  static constexpr unsigned shard_bits = 4;

  // Threads count apart from each other, so that they do not fight over one cache line.
  struct alignas(64) shard {
    std::atomic<std::uint64_t> calls{0};
  };

  std::atomic<std::uint64_t>& shard_of_this_thread() noexcept;
  std::uint64_t calls_inside() const noexcept;

  // The calls that this thread is inside of: one, if a call, or a signal in the middle of it, ends the process.
  static thread_local constinit std::uint64_t own_calls;

  std::array<shard, 1U << shard_bits> shards_{};
  std::atomic<bool> closed_{false};
};

} // namespace oryn::tarva::library
