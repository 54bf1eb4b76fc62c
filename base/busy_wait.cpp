#include "base/busy_wait.h"

#include "base/logging.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <sched.h>
#include <string_view>
#include <system_error>

namespace oryn::tarva::library {

namespace {

using std::chrono::microseconds;

constexpr std::uint64_t longest = 1000; // a sleeper is awake again after a tenth of that
constexpr const char* variable = "TARVA_BUSY_WAIT_US";

std::atomic<std::uint64_t> limit = 0; // in microseconds

// What the waits of one thread were like of late. What it waits for next is mostly of the same kind.
struct experience {
  unsigned misses = 0; // in a row
  unsigned slept_at_once = 0;
};
constexpr unsigned patience = 8, time_out = 64;
constinit thread_local experience own;

bool expects_to_miss() {
  return own.misses >= patience && ++own.slept_at_once % time_out != 0;
}

// Whoever is waited for could not run meanwhile. Asked each time, since it may change at any.
bool has_one_processor() {
  cpu_set_t allowed;
  return sched_getaffinity(0, sizeof(allowed), &allowed) == 0 && CPU_COUNT(&allowed) == 1;
}

} // namespace

void read_busy_wait_limit() {
  limit = 0;
  const char* const value = secure_getenv(variable);
  if (value == nullptr)
    return;
  const std::string_view text = value;
  std::uint64_t number = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (fault == std::errc::invalid_argument || end != text.data() + text.size())
    log_warning("{} is no number of microseconds, so no wait looks before it sleeps: {}", variable, text);
  else
    limit = fault == std::errc() ? std::min(number, longest) : longest;
}

microseconds get_busy_wait_limit() {
  return microseconds(limit.load(std::memory_order_relaxed));
}

bool look_before_sleep(const event_count& events, event_count::ticket seen) {
  const microseconds allowed = get_busy_wait_limit();
  if (allowed.count() == 0 || expects_to_miss() || has_one_processor())
    return false;
  const auto end = std::chrono::steady_clock::now() + allowed;
  do {
    constexpr int looks = 8; // for each at the clock
    for (int i = 0; i < looks; ++i) {
      if (events.get_ticket() != seen) {
        own = {};
        return true;
      }
      __builtin_ia32_pause();
    }
  } while (std::chrono::steady_clock::now() < end);
  own.misses = std::min(own.misses + 1, patience);
  return false;
}

} // namespace oryn::tarva::library
