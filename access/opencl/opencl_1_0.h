// The classes of OpenCL 1.0 under their plain names.
#pragma once

#include "access/opencl/buffer.h"
#include "access/opencl/command.h"
#include "access/opencl/command_queue.h"
#include "access/opencl/context.h"
#include "access/opencl/copy_buffer.h"
#include "access/opencl/device.h"
#include "access/opencl/device_binary.h"
#include "access/opencl/discovery.h"
#include "access/opencl/event.h"
#include "access/opencl/kernel.h"
#include "access/opencl/memory_object.h"
#include "access/opencl/nd_range_kernel.h"
#include "access/opencl/program.h"
#include "access/opencl/transfer_buffer.h"

#include <vector>

namespace oryn::skerv::opencl_1_0 {

using buffer = opencl::buffer<opencl::version::v1_0>;
using buffer_reference = opencl::buffer_reference<opencl::version::v1_0>;
using command = opencl::command<opencl::version::v1_0>;
using command_queue = opencl::command_queue<opencl::version::v1_0>;
using context = opencl::context<opencl::version::v1_0>;
using copy_buffer = opencl::copy_buffer<opencl::version::v1_0>;
using device = opencl::device<opencl::version::v1_0>;
using device_binary = opencl::device_binary<opencl::version::v1_0>;
using event = opencl::event<opencl::version::v1_0>;
using kernel = opencl::kernel<opencl::version::v1_0>;
using memory_object = opencl::memory_object<opencl::version::v1_0>;
using nd_range_kernel = opencl::nd_range_kernel<opencl::version::v1_0>;
using program = opencl::program<opencl::version::v1_0>;
using read_buffer = opencl::read_buffer<opencl::version::v1_0>;
using write_buffer = opencl::write_buffer<opencl::version::v1_0>;

inline std::vector<device> find_devices() {
  return opencl::find_devices<opencl::version::v1_0>();
}

} // namespace oryn::skerv::opencl_1_0
