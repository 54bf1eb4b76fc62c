// The commands and the dispatcher of OpenCL 2.2.
#include "opencl/buffer_commands.inl.h"
#include "opencl/generate_device_command_sequence.inl.h"
#include "opencl/nd_range_kernel.inl.h"
#include "opencl/opencl_device_work_dispatcher.inl.h"

namespace oryn::tarva::library {

template std::unique_ptr<device_work_dispatcher>
make_work_dispatcher<version::v2_2>(const skerv::opencl::context<version::v2_2>& context,
                                    const skerv::opencl::device<version::v2_2>& device);

template std::vector<std::shared_ptr<device_ir::device_command>>
device_ir::opencl::generate_device_command_sequence<version::v2_2>(
    const std::shared_ptr<physical_ir::physical_operation>& operation);

} // namespace oryn::tarva::library
