#pragma once

#include "base/event_count.h"

#include <atomic>
#include <chrono>
#include <cstdint>

namespace oryn::tarva::library {

namespace internal {
inline std::atomic<std::uint64_t> busy_wait_limit = 0; // in microseconds
bool look_if_it_pays(const event_count& events, event_count::ticket seen);
} // namespace internal

// How long a wait looks before it sleeps: not at all, unless the environment variable TARVA_BUSY_WAIT_US says otherwise.
// Read when the library starts; a value that is no number is told in the log.
void read_busy_wait_limit();
inline std::chrono::microseconds get_busy_wait_limit() {
  return std::chrono::microseconds(internal::busy_wait_limit.load(std::memory_order_relaxed));
}

// Looks whether anything happens after the ticket was taken. False if it is time to sleep: since nothing has happened
// within the limit, or since looking does not pay here.
inline bool look_before_sleep(const event_count& events, event_count::ticket seen) {
  return get_busy_wait_limit().count() != 0 && internal::look_if_it_pays(events, seen);
}

} // namespace oryn::tarva::library
