#pragma once

#include "ir/device_command.h"
#include "opencl/opencl_version.h"

#include <memory>
#include <vector>

namespace oryn::tarva::library::device_ir::opencl {

// The commands, in order, that a physical operation becomes on a device of version V.
template <version V>
std::vector<std::shared_ptr<device_command>>
generate_device_command_sequence(const std::shared_ptr<physical_ir::physical_operation>& operation);

} // namespace oryn::tarva::library::device_ir::opencl
