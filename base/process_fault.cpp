#include "base/process_fault.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace oryn::tarva::library {

namespace internal {
constinit std::atomic<bool> process_has_failed = false;
}

namespace {
constinit std::atomic<bool> process_is_ending = false;
constinit thread_local bool is_worker = false;
} // namespace

void note_worker() noexcept {
  is_worker = true;
}

void note_end_of_process() noexcept {
  if (is_worker)
    internal::process_has_failed = true;
  process_is_ending = true;
}

void fail_process() noexcept {
  // Two threads must not run the library's exit handler at once.
  while (internal::process_has_failed.exchange(true))
    pause();
  if (process_is_ending) {
    // Whoever runs them waits for the thread that has failed.
    std::fflush(nullptr);
    _exit(1);
  }
  std::exit(1);
}

} // namespace oryn::tarva::library
