// The classes of OpenCL 2.2 under their plain names.
#pragma once

#include "access/opencl/buffer.h"
#include "access/opencl/command.h"
#include "access/opencl/context.h"
#include "access/opencl/copy_buffer.h"
#include "access/opencl/device.h"
#include "access/opencl/device_binary.h"
#include "access/opencl/device_command_queue.h"
#include "access/opencl/discovery.h"
#include "access/opencl/event.h"
#include "access/opencl/fill_buffer_bytes.h"
#include "access/opencl/host_command_queue.h"
#include "access/opencl/kernel.h"
#include "access/opencl/memory_object.h"
#include "access/opencl/nd_range_kernel.h"
#include "access/opencl/program.h"
#include "access/opencl/transfer_buffer.h"

#include <vector>

namespace oryn::skerv::opencl_2_2 {

using buffer = opencl::buffer<opencl::version::v2_2>;
using buffer_reference = opencl::buffer_reference<opencl::version::v2_2>;
using command = opencl::command<opencl::version::v2_2>;
using context = opencl::context<opencl::version::v2_2>;
using copy_buffer = opencl::copy_buffer<opencl::version::v2_2>;
using device = opencl::device<opencl::version::v2_2>;
using device_binary = opencl::device_binary<opencl::version::v2_2>;
using device_command_queue = opencl::device_command_queue<opencl::version::v2_2>;
using event = opencl::event<opencl::version::v2_2>;
using fill_buffer_bytes = opencl::fill_buffer_bytes<opencl::version::v2_2>;
using host_command_queue = opencl::host_command_queue<opencl::version::v2_2>;
using kernel = opencl::kernel<opencl::version::v2_2>;
using memory_object = opencl::memory_object<opencl::version::v2_2>;
using nd_range_kernel = opencl::nd_range_kernel<opencl::version::v2_2>;
using program = opencl::program<opencl::version::v2_2>;
using read_buffer = opencl::read_buffer<opencl::version::v2_2>;
using write_buffer = opencl::write_buffer<opencl::version::v2_2>;

inline std::vector<device> find_devices() {
  return opencl::find_devices<opencl::version::v2_2>();
}

} // namespace oryn::skerv::opencl_2_2
