#pragma once

#include <atomic>
#include <chrono>
#include <functional>

namespace oryn::tarva::library {

namespace internal {
extern std::atomic<bool> process_has_failed;
}

// How long a process that has failed may take for its exit handlers. They may wait for a caller that stays asleep.
inline constexpr std::chrono::seconds patience_with_exit_handlers{10};

// True once a worker has met what the library cannot go on from, or is itself ending the process. From then on calls
// are refused, and those that wait stay asleep: the process is about to end, and nobody's return may overtake that.
inline bool process_has_failed() noexcept {
  return internal::process_has_failed.load(std::memory_order_relaxed);
}

// The calling thread works for the library. What OpenCL runs on it may end the process, too.
void note_worker() noexcept;

// The first of the library's exit handlers runs, or the library is being unloaded. A worker that runs them can wait for no
// worker.
void note_end_of_process() noexcept;

// Ends the process with status 1. Exit handlers run on this thread, unless the library's own have begun already, and
// for a limited time. If nobody else can see to that limit, `wake_sleepers` wakes callers that do. A second thread that
// comes here only waits.
[[noreturn]] void fail_process(const std::function<void()>& wake_sleepers = {}) noexcept;

// Starts a thread that ends the process with status 1 when the exit handlers' time is up. False if none can be had.
bool limit_exit_handlers() noexcept;
// Sleeps for that time and does the same.
[[noreturn]] void end_process_after_exit_handlers() noexcept;

} // namespace oryn::tarva::library
