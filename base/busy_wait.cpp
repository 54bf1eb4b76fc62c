#include "base/busy_wait.h"

#include "base/logging.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <sched.h>
#include <string_view>
#include <system_error>

namespace oryn::tarva::library {

namespace {

constexpr std::uint64_t longest = 1000; // to wake a sleeper takes a tenth of that
constexpr const char* variable = "TARVA_BUSY_WAIT_US";

// What the waits of one thread were like of late. What it waits for next is mostly of the same kind.
struct experience {
  unsigned misses = 0; // in a row
  unsigned pause = 0;  // after that many waits it tries again
  unsigned left = 0;   // of these
};
constinit thread_local experience own;

bool expects_to_miss() {
  if (own.left == 0)
    return false;
  --own.left;
  return true;
}

// After a few misses ever more waits go by until the next try, so that these cost next to nothing.
void note_miss() {
  constexpr unsigned patience = 8, shortest_pause = 8, longest_pause = 512;
  if (++own.misses >= patience)
    own.left = own.pause = std::clamp(own.pause * 2, shortest_pause, longest_pause);
}

// Whoever is waited for could not run meanwhile. Asked each time, since it may change at any.
bool has_one_processor() {
  cpu_set_t allowed;
  return sched_getaffinity(0, sizeof(allowed), &allowed) == 0 && CPU_COUNT(&allowed) == 1;
}

} // namespace

void read_busy_wait_limit() {
  std::atomic<std::uint64_t>& limit = internal::busy_wait_limit;
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

bool internal::look_if_it_pays(const event_count& events, event_count::ticket seen) {
  if (expects_to_miss())
    return false;
  if (has_one_processor()) {
    note_miss();
    return false;
  }
  const auto end = std::chrono::steady_clock::now() + get_busy_wait_limit();
  do {
    constexpr int looks = 16; // for each at the clock
    for (int i = 0; i < looks; ++i) {
      if (events.get_ticket() != seen) {
        own = {};
        return true;
      }
      __builtin_ia32_pause();
    }
  } while (std::chrono::steady_clock::now() < end);
  note_miss();
  return false;
}

} // namespace oryn::tarva::library
