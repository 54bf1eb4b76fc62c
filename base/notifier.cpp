// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "base/notifier.h"

#include "base/logging.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <linux/futex.h>
#include <sched.h>
#include <stdexcept>
#include <string_view>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>

namespace oryn::tarva::library {

static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t));

void sleep_on(const std::atomic<std::uint32_t>& word, std::uint32_t seen) {
  syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, seen, nullptr, nullptr, 0);
}

void wake(const std::atomic<std::uint32_t>* word, int count) {
  syscall(SYS_futex, word, FUTEX_WAKE_PRIVATE, count, nullptr, nullptr, 0);
}

// Each side writes before it reads: a waiter counts itself before the system compares the word, and a sender changes the
// word before it looks for sleepers. So either the sender wakes the waiter, or the system does not let it fall asleep.

void event_count::wait(ticket seen) {
  if (look_before_sleep(*this, seen))
    return;
  ++sleepers_;
  sleep_on(events_, seen);
  --sleepers_;
}

void event_count::notify_all() {
  ++events_;
  if (sleepers_ != 0)
    wake(&events_);
}

namespace {

constexpr std::uint64_t longest_busy_wait = 1000; // in microseconds; waking a sleeper takes a tenth of that
constexpr const char* busy_wait_variable = "TARVA_BUSY_WAIT_US";

// How the latest waits of this thread went. The next one is mostly for the same kind of event.
struct wait_history {
  unsigned misses = 0;     // waits in a row that looked in vain
  unsigned pause = 0;      // the number of waits that then sleep at once
  unsigned pause_left = 0; // how many of these are still to come
};
constinit thread_local wait_history history;

bool is_pausing() {
  if (history.pause_left == 0)
    return false;
  --history.pause_left;
  return true;
}

// After some misses in a row the thread stops looking for a while, and each further miss doubles that while. Where
// looking never pays, the tries thus cost next to nothing.
void record_miss() {
  constexpr unsigned misses_before_pause = 8, shortest_pause = 8, longest_pause = 512;
  if (++history.misses >= misses_before_pause)
    history.pause_left = history.pause = std::clamp(history.pause * 2, shortest_pause, longest_pause);
}

// On a single processor the awaited thread could not run while this one looks. Asked each time, since a thread may be
// bound to other processors at any time.
bool has_one_processor() {
  cpu_set_t allowed;
  return sched_getaffinity(0, sizeof(allowed), &allowed) == 0 && CPU_COUNT(&allowed) == 1;
}

} // namespace

void read_busy_wait_limit() {
  busy_wait_limit = std::chrono::microseconds(0);
  const char* const value = secure_getenv(busy_wait_variable);
  if (value == nullptr)
    return;
  const std::string_view text = value;
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc::invalid_argument || end != text.data() + text.size())
    log_warning("{} is no number of microseconds, so no wait looks before it sleeps: {}", busy_wait_variable,
                text);
  else
    busy_wait_limit = std::chrono::microseconds(error == std::errc() ? std::min(number, longest_busy_wait)
                                                                     : longest_busy_wait);
}

bool look_before_sleep(const event_count& events, event_count::ticket seen) {
  const std::chrono::microseconds limit = busy_wait_limit.load(std::memory_order_relaxed);
  if (limit.count() == 0 || is_pausing())
    return false;
  if (has_one_processor()) {
    record_miss();
    return false;
  }
  const auto end = std::chrono::steady_clock::now() + limit;
  do {
    constexpr int looks = 16; // between two looks at the clock
    for (int i = 0; i < looks; ++i) {
      if (events.get_ticket() != seen) {
        history = {};
        return true;
      }
      __builtin_ia32_pause();
    }
  } while (std::chrono::steady_clock::now() < end);
  record_miss();
  return false;
}

struct internal::notifier_internals {
  event_count events;
  std::atomic<bool> closed = false; // never goes back

  notifier_internals() = default;
  notifier_internals(const notifier_internals&) = delete;
  notifier_internals& operator=(const notifier_internals&) = delete;
  ~notifier_internals() {
    if (!closed)
      log_warning("Destroying notifier that was never closed.  The notifier should have been closed.");
  }
};

notifier::notifier() : internals_(std::make_shared<internal::notifier_internals>()) {}

bool notifier::is_closed() const {
  return internals_->closed;
}

// In the three functions below, the woken thread may destroy the last notifier before the sender returns, and a predicate
// may destroy the one that it was passed to. A copy of the shared pointer keeps the state alive until they return.

void notifier::notify() const {
  const auto internals = internals_;
  if (internals->closed)
    throw std::logic_error("Attempting to call notify on a notifier that has its notification pipe closed.");
  internals->events.notify_all();
}

void notifier::close() const {
  const auto internals = internals_;
  internals->closed = true;
  internals->events.notify_all();
}

void notifier::wait(const std::function<bool()>& predicate) const {
  const auto internals = internals_;
  const event_count::ticket seen = internals->events.get_ticket();
  if (internals->closed)
    return;
  if (!predicate)
    throw std::bad_function_call();
  if (predicate())
    return;
  internals->events.wait(seen);
}

} // namespace oryn::tarva::library
