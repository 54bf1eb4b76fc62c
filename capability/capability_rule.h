// Which capability a device has of its own accord.
#pragma once

#include "capability/opencl_functions.h"

#include <cstdint>

namespace qv {

// The capability of the version that the device reports. From 3.0 on, where most of 2.x is optional, the
// highest of 2.2, 2.1 and 2.0 all of whose mandatory features the device has, else 1.2. 0 for a version that
// is none.
std::uint32_t natural_capability(const opencl_functions& cl, cl_platform_id platform, cl_device_id device,
                                 opencl_version version);

// Whether the device can make the default on-device queue. Asking one of a device that cannot may end the
// process.
bool has_device_queues(const opencl_functions& cl, cl_device_id device, opencl_version version);

} // namespace qv
