// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The end of the process, and with it the stop of the library. A library does not choose when its host ends, nor on which
// thread, nor in the middle of what. All that follows from this is in this file and its source.
//
// The ordinary end
//
// The host calls exit() or returns from main(), or it unloads the library. Exit handlers run in the reverse of the order
// in which they were registered, on the thread that ends the process:
//
// 1. let_calls_end(), once for each time that it was registered behind the use of a compiler (see use_of_compiler). It
//    makes the calls of other threads wait outside, and waits for those inside: grace_period_of_long_calls. Only the first
//    one does anything. The library still serves this thread, whose own exit handlers may call it.
// 2. What compilers of OpenCL implementations registered for themselves: their static objects go.
// 3. ~library_lifetime(), the stop. It closes the gate for ever, waits grace_period_of_short_calls for calls that are about
//    to return, shuts the library down (the leak report, then each device and its worker), and waits once more, for
//    grace_period_of_long_calls if step 1 has not used that up. Then it destroys the library, but only if no call is
//    inside.
// 4. The loggers close.
//
// From step 3 on, calls return as soon as they enter. The gate is never destroyed, so that can go on until the last moment.
//
// The special cases
//
// - exit() inside a call. A callback of an OpenCL implementation or the handler of a signal may end the process in the
//   middle of a call. That call never returns, so it is not waited for, and the library is not destroyed. It may hold what
//   the others need; so step 1 does not wait for them.
// - A call in the handler of a signal, in the middle of a call of the same thread: it is refused, as it would wait for
//   locks that its own thread holds.
// - exit() on a worker, by an OpenCL implementation. A worker cannot wait for itself. So this counts as a failure of the
//   process (the next case), but the exit handlers that are running already go on.
// - A failure that the library cannot go on from: a worker whose command failed outright, a failed recovery from another
//   failure, the pool of identifiers used up. fail_process() ends the process with status 1. From then on calls that enter
//   are refused, and those that wait inside stay asleep, so that the host does not go on as if they had ended. The stop
//   waits for no call and no worker, and destroys nothing.
// - The host's exit handlers wait for ever after a failure, for example for a call that stays asleep. A thread of its own
//   ends the process when grace_period_of_exit_handlers is over. If there is no such thread to be had, a woken caller does
//   the same.
// - A second failure. Two threads must not run the exit handlers, so the second waits for the end.
// - A failure while the exit handlers run. Whoever runs them waits for the worker that has failed, so the process ends at
//   once.
// - Somebody holds the lock of an output stream for ever. Streams are flushed by a thread of its own, and the process ends
//   when grace_period_of_streams is over.
// - The library cannot start. Its lifetime has not begun, so step 3 does not happen; end_failed_start() closes the gate,
//   and limits the exit handlers, which may wait for threads that wait for the start.
// - A forked child. It has neither the workers nor a right to the locks, so the gate is closed in it, and the stop does
//   nothing. Its threads just end. Its first call is told of in the log.
// - pthread_exit() on the main thread. When all threads of the host have ended, only workers are left. They block every
//   signal that is sent to the process, so nothing could end it any more. The last thread of the host that has called the
//   library therefore does not end: host_threads keeps it, with the signal mask that it had.
// - A thread that is cancelled inside a call. It ends behind the call, not in the middle.
//
// Locks: none. All state here is atomic, belongs to one thread, or never changes; a forked child and the last exit handler
// can thus use it at any moment. Whoever waits here asks again and again for a bounded time, so that the calls, of which
// there are many, need not wake an end, of which there is one.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <pthread.h>
#include <unistd.h>

namespace oryn::tarva::library {

// For calls of other threads that an OpenCL compiler or a device holds up, and for those that are about to return.
inline constexpr std::chrono::milliseconds grace_period_of_long_calls{10000};
inline constexpr std::chrono::milliseconds grace_period_of_short_calls{100};
// For the exit handlers of a process that has failed, and for flushing its streams behind them.
inline constexpr std::chrono::seconds grace_period_of_exit_handlers{10};
inline constexpr std::chrono::seconds grace_period_of_streams{1};

// True once the process is about to end because of a failure. Any thread may ask, at any time; only what ends the process
// sets it.
extern std::atomic<bool> process_has_failed;

// Ends the process with status 1, after its exit handlers. Any thread may call it without a lock held. If there is no
// thread to be had that limits the exit handlers, `wake_sleepers` wakes calls that then do so.
[[noreturn]] void fail_process(const std::function<void()>& wake_sleepers = {}) noexcept;

// Sleeps for grace_period_of_exit_handlers, then ends the process with status 1. For calls that were woken by a failure.
[[noreturn]] void end_process_after_exit_handlers() noexcept;

// Ends the process with status 1, on the thread that could not start the library. Takes no memory, for want of which the
// start may have failed.
[[noreturn]] void end_failed_start() noexcept;

// A worker calls this first of all, so that the end of the process can tell it from the host's threads.
void mark_worker_thread() noexcept;

// All signals that are sent to a process. Those that report a fault of the thread itself are not among them: if they were
// blocked, the handler of the host could not see them, nor that of an OpenCL implementation which handles divisions by
// zero in this way.
inline sigset_t signals_sent_to_a_process() noexcept {
  sigset_t sent;
  sigfillset(&sent);
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS})
    sigdelset(&sent, fault);
  return sent;
}

// Blocks these signals in this thread while the object lives. A thread that is started meanwhile inherits the mask, and
// never receives one of them: they are the host's.
class masked_signals {
public:
  masked_signals() noexcept {
    const sigset_t sent = signals_sent_to_a_process();
    is_masked_ = pthread_sigmask(SIG_SETMASK, &sent, &before_) == 0;
  }
  ~masked_signals() {
    if (is_masked_)
      pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  masked_signals(const masked_signals&) = delete;
  masked_signals& operator=(const masked_signals&) = delete;

private:
  sigset_t before_{};
  bool is_masked_ = false;
};

// Counts the calls that are inside the library, and refuses them once it is closed. There is one, the_call_gate; the
// variables of threads that belong to it are not kept apart for several. It is never destroyed.
//
// Every call enters through a permit, on its own thread. The thread that ends the process does the rest.
class call_gate {
public:
  constexpr call_gate() noexcept = default;
  call_gate(const call_gate&) = delete;
  call_gate& operator=(const call_gate&) = delete;

  // False once it has been closed, or has ever made calls wait outside.
  bool is_open() const noexcept { return admits_from_.load() == always; }
  // For ever: calls that enter are refused, and so are those that wait outside.
  void close() noexcept { admits_from_.store(never); }
  bool is_idle() const noexcept { return calls_inside() == 0; }
  // Gives the calls of other threads time to leave. True if they have left.
  bool wait_for_other_threads(std::chrono::milliseconds limit) const noexcept;
  // The same, while new calls of other threads wait outside. They still do for `delay` after that, and no longer, since
  // the host may wait for them. If this thread is inside a call itself, it does nothing. False if the time was up.
  bool let_other_threads_leave(std::chrono::milliseconds limit, std::chrono::milliseconds delay) noexcept;

  // One call, for as long as it lives. Its thread cannot be cancelled meanwhile.
  class permit {
  public:
    explicit permit(call_gate& gate) noexcept : calls_(gate.shard_of_this_thread()) {
      pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancel_state_);
      // Counted before the gate is looked at. Whoever closes the gate and then finds no call inside can thus rely on it.
      calls_.fetch_add(1);
      is_granted = own_calls++ == 0 && (gate.is_open() || gate.admit_late(calls_)) && !process_has_failed;
    }
    permit(const permit&) = delete;
    permit& operator=(const permit&) = delete;
    ~permit() {
      --own_calls;
      calls_.fetch_sub(1);
      pthread_setcancelstate(cancel_state_, nullptr);
    }

    bool is_granted;

  private:
    std::atomic<std::uint64_t>& calls_;
    int cancel_state_ = PTHREAD_CANCEL_ENABLE;
  };

private:
  using clock = std::chrono::steady_clock;

  static constexpr unsigned shard_bits = 4;
  static constexpr clock::time_point always = clock::time_point::min();
  static constexpr clock::time_point never = clock::time_point::max();

  // Each thread counts in one of several cache lines, so that calls of different threads do not fight over one.
  struct alignas(64) shard {
    std::atomic<std::uint64_t> calls{0};
  };

  std::atomic<std::uint64_t>& shard_of_this_thread() noexcept {
    // A thread's identity is an address; the multiplication spreads its bits over the uppermost ones.
    const std::uint64_t spread = static_cast<std::uint64_t>(pthread_self()) * 0x9E3779B97F4A7C15U;
    return shards_[spread >> (64 - shard_bits)].calls;
  }
  std::uint64_t calls_inside() const noexcept;
  bool admit_late(std::atomic<std::uint64_t>& calls) const noexcept;

  // How many calls this thread is inside of: two in the handler of a signal.
  static thread_local constinit std::uint64_t own_calls;
  // Whether this thread makes the others wait outside.
  static thread_local constinit bool has_precedence;

  std::array<shard, 1U << shard_bits> shards_{};
  std::atomic<clock::time_point> admits_from_{always};
};

extern constinit call_gate the_call_gate;

// Lives while an OpenCL compiler may be used, on the thread of the call.
//
// Compilers make static objects when they first need them. Those go before the stop of the library, which was registered
// earlier, and so in the middle of calls that the stop would then wait for. Therefore let_calls_end() is registered behind
// them. Compilers make most of them for the first programs and launches, and few later, so it is registered behind the
// first use, the second, the fourth, the eighth and so on. Nothing helps against an exit in the middle of those first uses.
class use_of_compiler {
public:
  use_of_compiler() = default;
  use_of_compiler(const use_of_compiler&) = delete;
  use_of_compiler& operator=(const use_of_compiler&) = delete;
  ~use_of_compiler();
};

// Counts the threads of the host that have called the library while it has workers, and keeps the last of them. Each of
// these threads counts itself, in a call and at its end.
class host_threads {
public:
  host_threads() noexcept;
  host_threads(const host_threads&) = delete;
  host_threads& operator=(const host_threads&) = delete;
  // From here on threads just end.
  ~host_threads();

  void count_this_thread() noexcept {
    if (!is_counted)
      count_new_thread();
  }

private:
  void count_new_thread() noexcept;

  static thread_local constinit bool is_counted;

  pthread_key_t key_{}; // its destructor runs when a counted thread ends
  const bool has_key_;  // without one no thread is kept
};

// For a call that was refused. If that is because the process is a forked child, one line of the log says so, once.
void explain_refusal() noexcept;

// What the stop calls.
class stoppable_library {
public:
  stoppable_library() = default;
  stoppable_library(const stoppable_library&) = delete;
  stoppable_library& operator=(const stoppable_library&) = delete;
  virtual ~stoppable_library() = default;

  virtual bool has_workers() const = 0;
  // Reports what was not given up and ends the work of the devices.
  virtual void shut_down() noexcept = 0;
};

// Owns the library from its first call to the end of the process, or until it is unloaded. A static object inside the
// library: made by the first call, destroyed by its exit handler. Calls use it only while they hold a permit.
class library_lifetime {
public:
  // `start` makes the library or ends the process.
  explicit library_lifetime(stoppable_library* (*start)());
  library_lifetime(const library_lifetime&) = delete;
  library_lifetime& operator=(const library_lifetime&) = delete;
  // The stop.
  ~library_lifetime();

  // For a call of this thread.
  stoppable_library& get_library() noexcept {
    if (has_workers_)
      threads_.count_this_thread();
    return *library_;
  }

private:
  // None of these changes from the end of the start to the stop.
  const pid_t process_;
  host_threads threads_;
  stoppable_library* library_;
  bool has_workers_;
};

} // namespace oryn::tarva::library
