#include "ir/host_function_call.h"

#include <chrono>

namespace oryn::tarva::library::device_ir {

void host_function_call::run() {
  using clock = std::chrono::steady_clock;
  set_submitted();
  try {
    if (is_profiling_enabled()) {
      const auto start = clock::now();
      function_(shared_from_this());
      const std::chrono::nanoseconds elapsed = clock::now() - start;
      set_elapsed_time(static_cast<std::uint64_t>(elapsed.count()));
    } else {
      function_(shared_from_this());
    }
    set_complete();
  } catch (...) {
    set_error(std::current_exception());
  }
}

} // namespace oryn::tarva::library::device_ir
