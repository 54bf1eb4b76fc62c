// How physical operations become device commands.
#pragma once

#include "opencl/opencl_device_command.h"

#include <memory>
#include <vector>

namespace oryn::tarva::library::device_ir::opencl {

// The commands, in order, that a physical operation becomes on the device of these queues: one for most, and a sequence
// through a block on the host where the device's version has no command for it. Nothing is allocated, freed or enqueued
// before the commands run. On the caller's thread.
std::vector<std::shared_ptr<device_command>>
generate_device_command_sequence(const std::shared_ptr<physical_ir::physical_operation>& operation,
                                 opencl_queues& queues);

} // namespace oryn::tarva::library::device_ir::opencl
