// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What the sweeps go through: each scenario is one thing that callers do between the start of the library and its stop.
#pragma once

#include "tests/device/caller.h"
#include "tests/sweeps/faults.h"

#include <functional>
#include <string>
#include <vector>

namespace sweeps {

// How it ended: the code of the first call that failed, and whether all was done that was asked for. What is not done has left
// everything as it was.
struct ending {
  long code = TARVA_ABI_OK;
  bool is_done = false;
};

// In the line of the log that tells of the one call that is to fail.
inline constexpr const char* expected_refusal = "Fill operation would overflow target capacity.";

// What the error objects of the calls said since the last question.
std::string take_messages();

// Ends the process by this if what every run has to keep does not hold.
inline void (*report_fault)(const char* what) = nullptr;
inline void demand(bool holds, const char* what) {
  if (!holds)
    report_fault(what);
}

// A machine in use, and what is to go wrong in it.
struct world {
  // What may go wrong.
  template <class Action>
  auto try_to(Action action) const {
    arm(planned);
    const auto ended = action();
    disarm();
    return ended;
  }
  caller::memory make_at(std::size_t where) const;
  caller::property root_of(std::size_t which) const;

  fault planned{};
  std::vector<caller::device> devices = caller::devices();
  caller::program programs[2];
  caller::kernel add[2], eight[2];
};
world use_machine();

struct scenario {
  const char* name;
  ending (*run)(const world& in, std::size_t first, std::size_t second);
  std::size_t choices = 1,
              second_choices = 1; // places, which are the host and two devices; or kinds of program
};
extern const std::vector<scenario> scenarios;

// Not of the list: 32 threads do everything at random. What went wrong first, or nothing.
std::string run_schedule(unsigned seed);

// The devices and kernels of the scripted machine, before the library starts.
void set_up_machine(std::uint32_t first_version, std::uint32_t second_version);

} // namespace sweeps
