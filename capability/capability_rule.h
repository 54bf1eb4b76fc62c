// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Under which capability a device is offered of its own accord, that is, unless QV_OPENCL_VERSIONS says otherwise.
//
// A device that reports OpenCL 1.0 to 2.2 is offered as that. From 3.0 on nearly all of 2.x is optional, so such a device is
// offered by what it can do for the commands here:
//
//   2.2       if it takes SPIR-V, and with it specialization constants. On-device queues and pipes are not asked for; a
//             plain queue stands in for the default on-device queue where there is none.
//   2.1, 2.0  else, the higher one all of whose mandatory features it has
//   1.2       else
//
// Whoever asks a device for what the capability promises and the device lacks gets the device's own answer: 0, or a refusal.
//
// Asked once for each device, by the thread that looks at the machine. Nothing is kept.
#pragma once

#include "capability/opencl_functions.h"

#include <cstdint>

namespace qv {

// 0 for a version that is none. `cl` is what the device's platform has. Throws std::bad_alloc.
std::uint32_t natural_capability(const opencl_functions& cl, cl_platform_id platform, cl_device_id device,
                                 opencl_version version);

// Whether the device can make the default on-device queue. Asking one of a device that cannot may end the
// process.
bool has_device_queues(const opencl_functions& cl, cl_device_id device, opencl_version version);

} // namespace qv
