// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What goes wrong in a run: an allocation, a call of the capability library, or one of each, once or from then on. It goes wrong
// only inside calls of the interface that a scenario is about, never in what the driver does beside.
#pragma once

#include "tests/scripted/scripted_qv.h"

#include <cstdint>
#include <string>

namespace sweeps {

struct fault {
  std::uint64_t allocation = 0; // which one, 1 being the first; none if 0
  bool allocations_last = false;
  int call = 0; // the same
  scripted::way how{};
  std::int32_t value = 0;
  bool calls_last = false;

  std::string text() const;
};

// Between these two the fault may happen.
void arm(const fault& planned);
void disarm();
// Whether each part of it has happened since it was armed.
bool allocation_has_failed();
bool call_has_failed();

// Memory fails only in here, on any thread.
struct inside_call {
  inside_call();
  inside_call(const inside_call&) = delete;
  inside_call& operator=(const inside_call&) = delete;
  ~inside_call();
};

// Allocations that somebody asked for in a scenario's calls; and those of the process that nobody has freed.
std::uint64_t allocations_seen();
std::int64_t live_allocations();

} // namespace sweeps
