#pragma once

#include <atomic>
#include <cstdint>

namespace oryn::tarva::library {

// A place to sleep until something has happened, for conditions that need no lock to be read:
//
//   waiting: take a ticket, read the condition, and wait with the ticket if it does not hold yet; all over again.
//   waking:  make the condition hold, then notify_all().
//
// Nothing is missed between the reading and the sleep, since a ticket is void after the next notification. Against a
// condition variable it saves the lock that a sleeper takes, and the call of the system that letting that lock go costs.
class event_count {
public:
  using ticket = std::uint32_t;

  event_count() = default;
  event_count(const event_count&) = delete;
  event_count& operator=(const event_count&) = delete;

  ticket get_ticket() const { return events_; }
  // Sleeps until the first notification after the ticket was taken; returns at once if there was one. May also return
  // without any.
  void wait(ticket seen);
  // Whoever calls it keeps the object alive until it returns.
  void notify_all();

private:
  std::atomic<std::uint32_t> events_ = 0;
  std::atomic<std::uint32_t> sleepers_ = 0;
};

} // namespace oryn::tarva::library
