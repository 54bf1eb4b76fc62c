#pragma once

#include "base/event_count.h"

#include <chrono>

namespace oryn::tarva::library {

// How long a wait looks before it sleeps: not at all, unless the environment variable TARVA_BUSY_WAIT_US says otherwise.
// Read when the library starts; a value that is no number is told in the log.
void read_busy_wait_limit();
std::chrono::microseconds get_busy_wait_limit();

// Looks whether anything happens after the ticket was taken. False if it is time to sleep: since nothing has happened
// within the limit, or since looking does not pay here.
bool look_before_sleep(const event_count& events, event_count::ticket seen);

} // namespace oryn::tarva::library
