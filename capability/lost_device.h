// Devices that are lost while they are in use, such as one behind a network.
//
// An implementation may wait for an answer of a lost device for ever, be it to let go of an object. So once work or a finish
// has failed, the device is asked whether it is there. As long as it is not, it gets no new work, and what it holds is given
// up; only questions and the end of its queues still reach the implementation.
#pragma once

#include "capability/opencl_functions.h"

#include <atomic>

namespace qv {

struct root_device;

class device_watch {
public:
  // After a failure that may be the device's own.
  void suspect() noexcept { is_suspected_.store(true, std::memory_order_relaxed); }
  bool is_suspected() const noexcept { return is_suspected_.load(std::memory_order_relaxed); }

  // Asks the device.
  bool is_lost(const root_device& device) noexcept;

private:
  std::atomic<bool> is_suspected_ = false;
};

// `functions` without what a lost device would have to do: all of that fails with CL_DEVICE_NOT_AVAILABLE, save to let go
// of objects. Questions are the implementation's to answer, and so is when a queue is finished: should the device come back,
// work that is still under way must not write into memory that was given up.
opencl_functions functions_of_lost_device(opencl_functions functions);

// The device, or what stands for it as long as it is lost.
const root_device& as_it_is_now(const root_device& device) noexcept;

} // namespace qv
