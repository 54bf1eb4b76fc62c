#include "base/event_count.h"

#include <climits>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace oryn::tarva::library {

namespace {

static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t));

// The system compares the word with `value` and falls asleep in one step. That it did not, and why, is of no interest.
void call_futex(std::atomic<std::uint32_t>& word, int operation, std::uint32_t value) {
  syscall(SYS_futex, &word, operation, value, nullptr, nullptr, 0);
}

} // namespace

// Either the sender sees the sleeper, or the system sees the sender's event and does not let the sleeper sleep.

void event_count::wait(ticket seen) {
  ++sleepers_;
  call_futex(events_, FUTEX_WAIT_PRIVATE, seen);
  --sleepers_;
}

void event_count::notify_all() {
  ++events_;
  if (sleepers_ != 0)
    call_futex(events_, FUTEX_WAKE_PRIVATE, INT_MAX);
}

} // namespace oryn::tarva::library
