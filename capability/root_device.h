// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// A root device: one OpenCL device of the machine, what is known of it, and whether it can be reached now.
//
// Root devices are made while the machine is looked at and do not change afterwards, but for what guards itself: the objects
// that were kept, and the watch. So every command reads them without a lock. The machine owns them and outlives every open
// call handle; objects that are given out point to them.
#pragma once

#include "capability/opencl_functions.h"
#include "capability/quirks.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace qv {

class kept_objects;
struct root_device;

// Devices may be lost while they are in use, such as one behind a network, and may come back.
//
// An implementation may wait for an answer of a lost device for ever, be it to let go of an object. So once work or a finish
// has failed, the device is asked whether it is there, before each command until it is. As long as it is not, it gets no new
// work, and what it holds is given up; only questions and the end of its queues still reach the implementation.
struct device_watch {
  // After a failure that may be the device's own. Called by the commands, on any thread.
  void suspect() noexcept { is_suspected.store(true, std::memory_order_relaxed); }
  // Asks the device, and ends the suspicion unless it is lost.
  bool is_lost(const root_device& device) noexcept;

  // Nothing else is handed over with it, so no order is needed.
  std::atomic<bool> is_suspected = false;
};

// What a device has said of itself, and will go on saying. Every question to a device passes here first, so an answer is found
// by the number of its parameter and not searched for.
class device_answers {
public:
  struct answer {
    std::string bytes;
    std::size_t size; // as OpenCL counts it: of a text, with its closing zero
  };

  // Each parameter once, of those that OpenCL itself numbers.
  void add_text(cl_device_info name, std::string text);
  void add_number(cl_device_info name, cl_uint number);

  // Null if it was not asked for.
  const answer* find(cl_device_info name) const noexcept {
    const std::size_t row = std::size_t{name} - first_name;
    return row < places_.size() && places_[row] != 0 ? &answers_[places_[row] - 1] : nullptr;
  }

private:
  static constexpr cl_device_info first_name = 0x1000;

  void add(cl_device_info name, answer added);

  std::array<std::uint8_t, 0x80>
      places_{}; // by name: the place among the answers, counted from 1, or 0 for none
  std::vector<answer> answers_;
};

struct root_device {
  cl_device_id id = nullptr;
  opencl_version version;
  // Only what the device's platform has.
  opencl_functions cl;
  // Under which it is offered. None if its version is none: then nobody can use it.
  capability_set capabilities;
  bool has_device_queues = false;
  // False if it did not say at the first look whether it is available. As long as it does not, it counts as not available.
  bool tells_availability = true;
  std::uint64_t local_memory_size = 0;
  qv::quirks quirks;
  // What every start asks for.
  device_answers answers;
  // Null if the device has not been tried, or is lost.
  std::shared_ptr<kept_objects> kept;
  // Null if nobody watches it. The other is the same device as long as it is lost.
  std::shared_ptr<device_watch> watch;
  std::shared_ptr<const root_device> lost_stand_in;

  // One of those that were asked for.
  const std::string& text_of(cl_device_info name) const { return answers.find(name)->bytes; }
};

// Asks the device whether it is there. One that does not tell is taken to be.
bool is_not_there(const root_device& device) noexcept;

// Has the device watched from now on. Throws std::bad_alloc.
void watch(root_device& device);

// Whether something has failed, so that the device may be lost.
inline bool is_suspected(const root_device& device) noexcept {
  return device.watch != nullptr && device.watch->is_suspected.load(std::memory_order_relaxed);
}

// The device, or what stands for it as long as it is lost. Costs one relaxed read as long as nothing has failed.
inline const root_device& device_or_stand_in(const root_device& device) noexcept {
  return is_suspected(device) && device.watch->is_lost(device) ? *device.lost_stand_in : device;
}

// A thread goes on running after its thread-local objects were destroyed: in exit handlers and static destructors, after
// main or exit(). An implementation that keeps thread-local state, and uses it nevertheless, must not be called then.

// To be called before the first question below, while nothing is being unloaded: each thread that asks it has
// to find this library when it ends, so the library stays loaded.
void prepare_for_thread_ends() noexcept;

// Whether that time has come for the calling thread. It is noticed on threads that have asked before.
bool thread_locals_have_ended() noexcept;

} // namespace qv
