// The OpenCL devices of the machine.
#pragma once

#include "capability/opencl_functions.h"
#include "capability/quirks.h"

#include <cstdint>
#include <vector>

namespace qv {

struct root_device {
  cl_device_id id = nullptr;
  opencl_version version;
  // Only what the device's platform has.
  opencl_functions cl;
  capability_set capabilities;
  bool has_device_queues = false;
  std::uint64_t local_memory_size = 0;
  qv::quirks quirks;
};

// All devices that can be used, in the order of the loader. Each is offered under `forced` if that holds any
// capability, else under its natural one. What fails while it is looked at is left out.
std::vector<root_device> find_root_devices(const opencl_functions& cl, const capability_set& forced);

} // namespace qv
