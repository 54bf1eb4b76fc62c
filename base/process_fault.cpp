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
}

void note_end_of_process() noexcept {
  process_is_ending = true;
}

void fail_process() noexcept {
  // Two threads must not run the exit handlers at once.
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
