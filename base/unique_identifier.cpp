#include "base/unique_identifier.h"

#include "base/logging.h"
#include "base/process_fault.h"

#include <limits>

namespace oryn::tarva::library {

namespace internal {

std::uint64_t draw_identifier(std::atomic<std::uint64_t>& pool) {
  const std::uint64_t identifier = pool.fetch_add(1, std::memory_order_relaxed);
  if (identifier == std::numeric_limits<std::uint64_t>::max()) {
    log_critical("Pool of unique identifiers within the library has been exhausted.");
    fail_process();
  }
  return identifier;
}

} // namespace internal

std::uint64_t get_unique_identifier() {
  static constinit std::atomic<std::uint64_t> pool{0};
  return internal::draw_identifier(pool);
}

} // namespace oryn::tarva::library
