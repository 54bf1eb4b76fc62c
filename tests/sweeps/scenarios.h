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

class world;

struct scenario {
  const char* name;
  ending (world::*run)(const fault& planned, std::size_t first, std::size_t second);
  std::size_t choices = 1,
              second_choices = 1; // places, which are the host and two devices; or kinds of program
};
extern const std::vector<scenario> scenarios;

// A machine in use.
class world {
public:
  world();

  ending list_devices(const fault&, std::size_t, std::size_t);
  ending load(const fault&, std::size_t kind, std::size_t device);
  ending fail_build(const fault&, std::size_t, std::size_t);
  ending get_kernel(const fault&, std::size_t, std::size_t);
  ending allocate(const fault&, std::size_t, std::size_t);
  ending give_up(const fault&, std::size_t where, std::size_t);
  ending launch_with_one(const fault&, std::size_t where, std::size_t);
  ending launch_with_eight(const fault&, std::size_t where, std::size_t);
  ending read(const fault&, std::size_t where, std::size_t);
  ending write(const fault&, std::size_t where, std::size_t);
  ending fill(const fault&, std::size_t where, std::size_t);
  ending copy(const fault&, std::size_t from, std::size_t to);
  ending read_properties(const fault&, std::size_t of, std::size_t);
  ending write_string(const fault&, std::size_t of, std::size_t);
  ending follow_errors(const fault&, std::size_t, std::size_t);

private:
  caller::memory make_at(std::size_t where) const;
  std::vector<caller::property> roots() const;

  std::vector<caller::device> devices_ = caller::devices();
  caller::program programs_[2];
  caller::kernel add_[2], eight_[2];
};

// Not of the list: 32 threads do everything at random. What went wrong first, or nothing.
std::string run_schedule(unsigned seed);

// The devices and kernels of the scripted machine, before the library starts.
void set_up_machine(std::uint32_t first_version, std::uint32_t second_version);

} // namespace sweeps
