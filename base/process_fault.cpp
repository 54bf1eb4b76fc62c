#include "base/process_fault.h"

#include <cstdlib>
#include <unistd.h>

namespace oryn::tarva::library {

namespace internal {
constinit std::atomic<bool> process_has_failed = false;
}

void fail_process() noexcept {
  // Two threads must not run the exit handlers at once.
  while (internal::process_has_failed.exchange(true))
    pause();
  std::exit(1);
}

} // namespace oryn::tarva::library
