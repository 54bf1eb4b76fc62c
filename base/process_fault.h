#pragma once

#include <atomic>

namespace oryn::tarva::library {

namespace internal {
extern std::atomic<bool> process_has_failed;
}

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

// Ends the process with status 1. Exit handlers run on this thread, unless the library's own have begun already. A second
// thread that comes here only waits.
[[noreturn]] void fail_process() noexcept;

} // namespace oryn::tarva::library
