#pragma once

#include "base/process_fault.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <pthread.h>

namespace oryn::tarva::library {

// How long the end of the process waits for calls of other threads that an OpenCL compiler or a device holds.
inline constexpr std::chrono::milliseconds patience_with_long_calls{10000};

// Counts the calls that are inside the library, and lets none in once it is closed. Nothing of it is ever
// destroyed, so that it can be asked until the very end of the process. There is one in a process: what it knows of a
// thread is not kept apart for several.
//
// Whoever waits at the end looks again and again, for a bounded time: a call that leaves should not pay for an end that
// comes once.
class call_gate {
public:
  constexpr call_gate() noexcept = default;
  call_gate(const call_gate&) = delete;
  call_gate& operator=(const call_gate&) = delete;

  // Not once it has been closed, nor once calls have had to stand outside.
  bool is_open() const noexcept { return opening_.load() == open; }
  void close() noexcept { opening_.store(never); }
  bool is_idle() const noexcept { return calls_inside() == 0; }
  // Gives the calls of other threads time to leave. True if they have.
  bool wait_for_other_threads(std::chrono::milliseconds limit) const noexcept;
  // The same, while new calls of other threads stand outside. They do so for another `delay`, and no longer, since
  // the host may yet wait for them. A thread that is inside itself may hold what the others need: it waits for
  // nobody. False if the time was up.
  bool let_other_threads_leave(std::chrono::milliseconds limit, std::chrono::milliseconds delay) noexcept;

  // One call, while it lives. A thread that is cancelled meanwhile ends behind it, not in the middle. What a signal's
  // handler calls in the middle of a call is refused: it would wait for locks that its own thread holds.
  class permit {
  public:
    explicit permit(call_gate& gate) noexcept : calls_(gate.shard_of_this_thread()) {
      pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancel_state_);
      // Counted first, so that whoever closes the gate and then finds no call inside is right.
      calls_.fetch_add(1);
      granted_ = own_calls++ == 0 && (gate.is_open() || gate.admit_late(calls_)) && !process_has_failed();
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
  using clock = std::chrono::steady_clock;

  static constexpr unsigned shard_bits = 4;
  static constexpr clock::time_point open = clock::time_point::min();
  static constexpr clock::time_point never = clock::time_point::max();

  // Threads count apart from each other, so that they do not fight over one cache line.
  struct alignas(64) shard {
    std::atomic<std::uint64_t> calls{0};
  };

  std::atomic<std::uint64_t>& shard_of_this_thread() noexcept;
  std::uint64_t calls_inside() const noexcept;
  bool admit_late(std::atomic<std::uint64_t>& calls) const noexcept;

  // The calls that this thread is inside of: one, if a call, or a signal in the middle of it, ends the process.
  static thread_local constinit std::uint64_t own_calls;
  // Whether this thread has made the others stand outside.
  static thread_local constinit bool has_precedence;

  std::array<shard, 1U << shard_bits> shards_{};
  std::atomic<clock::time_point> opening_{open}; // from when on calls are let in
};

} // namespace oryn::tarva::library
