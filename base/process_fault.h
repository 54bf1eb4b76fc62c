#pragma once

#include <atomic>

namespace oryn::tarva::library {

namespace internal {
extern std::atomic<bool> process_has_failed;
}

// True once a worker has met what the library cannot go on from. From then on calls are refused, and those that wait
// stay asleep: the process is about to end with status 1, and nobody's return may overtake that.
inline bool process_has_failed() noexcept {
  return internal::process_has_failed.load(std::memory_order_relaxed);
}

// From then on the exit handlers of the process are running, or the library is being unloaded.
void note_end_of_process() noexcept;

// Ends the process with status 1. Exit handlers run on this thread. A second thread that comes here only waits.
[[noreturn]] void fail_process() noexcept;

} // namespace oryn::tarva::library
