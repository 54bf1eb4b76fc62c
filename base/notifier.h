// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// How threads of the library wait for each other: the system calls, event_count, the place to sleep, and notifier, the wake-up that
// objects share. All are free of locks. Before a thread sleeps it may look out for the event for a while, if the
// environment variable TARVA_BUSY_WAIT_US asks for that.
#pragma once

#include <atomic>
#include <chrono>
#include <climits>
#include <cstdint>
#include <functional>
#include <memory>

namespace oryn::tarva::library {

// The system calls that threads sleep and wake by.

// The system compares the word with `seen` and falls asleep in one step, or returns at once. May also return without a
// wake-up, so callers read their condition again.
void sleep_on(const std::atomic<std::uint32_t>& word, std::uint32_t seen);
// Wakes `count` of those who sleep on the word. The address alone counts, so the word itself may be gone.
void wake(const std::atomic<std::uint32_t>* word, int count = INT_MAX);

// A place to sleep until something has happened, for conditions that need no lock to be read:
//
//   waiting: take a ticket, read the condition, and wait with the ticket if it does not hold yet; then start over.
//   waking:  make the condition hold, then call notify_all().
//
// No wake-up is lost between reading the condition and falling asleep, because a notification makes older tickets
// void. A condition variable would need a lock around both, and one system call more for each wake-up.
//
// Any thread may call anything at any time. The object must live until notify_all() has returned.
class event_count {
public:
  using ticket = std::uint32_t;

  event_count() = default;
  event_count(const event_count&) = delete;
  event_count& operator=(const event_count&) = delete;

  ticket get_ticket() const { return events_; }

  // Sleeps until the first notification after the ticket was taken; returns at once if there was one. May also return
  // without any. Looks out for the notification first, if TARVA_BUSY_WAIT_US asks for it.
  void wait(ticket seen);
  void notify_all();

private:
  std::atomic<std::uint32_t> events_ = 0; // how many there were; the word that sleepers sleep on
  std::atomic<std::uint32_t> sleepers_ = 0;
};

namespace internal {
struct notifier_internals;
}

// The time that a wait looks before it sleeps; at 0, no wait looks.
inline std::atomic<std::chrono::microseconds> busy_wait_limit{};
// Sets it to what TARVA_BUSY_WAIT_US says. Without the variable that is 0. A value that is not a number counts as 0 and is
// reported in the log. Called once, when the library starts.
void read_busy_wait_limit();

// Looks for an event after the ticket was taken, at most for the limit. True if there was one. False if the caller
// should sleep: the time is over, or looking has not paid on this thread of late.
bool look_before_sleep(const event_count& events, event_count::ticket seen);

// A wake-up without data. It serves as a doorbell that rings again and again, for the worker of a device, and as a latch
// that closes once, when an operation has ended.
//
// Any thread may call anything at any time. Copies share one state, which lives as long as the last of them; a copy
// therefore outlives the owner of the original. A sender first makes the condition hold that the waiter looks at, then
// rings or closes. wait() returns when something may have changed, so callers loop on their own condition.
class notifier {
public:
  // Throws std::bad_alloc; nothing else here takes memory.
  notifier();
  notifier(const notifier&) = default;
  notifier& operator=(const notifier&) = default;

  bool is_closed() const;
  // Throws std::logic_error if it is closed.
  void notify() const;
  void close() const;

  // Returns at once if it is closed or the predicate is true; otherwise waits for the first wake-up. The predicate is
  // called once, on this thread and without a lock, and may take locks of its own. A wake-up between its answer and
  // the sleep is not lost.
  void wait(const std::function<bool()>& predicate) const;

private:
  std::shared_ptr<internal::notifier_internals> internals_;
};

} // namespace oryn::tarva::library
