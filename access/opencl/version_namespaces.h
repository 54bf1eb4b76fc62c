// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The classes of each version of OpenCL under their plain names, one namespace for each version. A name is missing
// where its version has no such class. The floors above are templates over the version
// themselves and do not need these; whoever works with one version does.
#pragma once

#include "access/opencl/buffer.h"
#include "access/opencl/command_queue.h"
#include "access/opencl/commands.h"
#include "access/opencl/context.h"
#include "access/opencl/device.h"
#include "access/opencl/kernel.h"
#include "access/opencl/program.h"

#include <vector>

// Kernels are found by creating all of them, and launches begin at the global id 0.
namespace oryn::skerv::opencl_1_0 {

using buffer = opencl::buffer<opencl::version::v1_0>;
using buffer_reference = opencl::buffer_reference<opencl::version::v1_0>;
template <qv::operation Op>
using command = opencl::command<opencl::version::v1_0, Op>;
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

// Adds the global offset of launches.
namespace oryn::skerv::opencl_1_1 {

using buffer = opencl::buffer<opencl::version::v1_1>;
using buffer_reference = opencl::buffer_reference<opencl::version::v1_1>;
template <qv::operation Op>
using command = opencl::command<opencl::version::v1_1, Op>;
using command_queue = opencl::command_queue<opencl::version::v1_1>;
using context = opencl::context<opencl::version::v1_1>;
using copy_buffer = opencl::copy_buffer<opencl::version::v1_1>;
using device = opencl::device<opencl::version::v1_1>;
using device_binary = opencl::device_binary<opencl::version::v1_1>;
using event = opencl::event<opencl::version::v1_1>;
using kernel = opencl::kernel<opencl::version::v1_1>;
using memory_object = opencl::memory_object<opencl::version::v1_1>;
using nd_range_kernel = opencl::nd_range_kernel<opencl::version::v1_1>;
using program = opencl::program<opencl::version::v1_1>;
using read_buffer = opencl::read_buffer<opencl::version::v1_1>;
using write_buffer = opencl::write_buffer<opencl::version::v1_1>;

inline std::vector<device> find_devices() {
  return opencl::find_devices<opencl::version::v1_1>();
}

} // namespace oryn::skerv::opencl_1_1

// Adds counted devices, fills, built-in kernels, and the extension for an intermediate language.
namespace oryn::skerv::opencl_1_2 {

using buffer = opencl::buffer<opencl::version::v1_2>;
using buffer_reference = opencl::buffer_reference<opencl::version::v1_2>;
template <qv::operation Op>
using command = opencl::command<opencl::version::v1_2, Op>;
using command_queue = opencl::command_queue<opencl::version::v1_2>;
using context = opencl::context<opencl::version::v1_2>;
using copy_buffer = opencl::copy_buffer<opencl::version::v1_2>;
using device = opencl::device<opencl::version::v1_2>;
using device_binary = opencl::device_binary<opencl::version::v1_2>;
using event = opencl::event<opencl::version::v1_2>;
using fill_buffer_bytes = opencl::fill_buffer_bytes<opencl::version::v1_2>;
using kernel = opencl::kernel<opencl::version::v1_2>;
using memory_object = opencl::memory_object<opencl::version::v1_2>;
using nd_range_kernel = opencl::nd_range_kernel<opencl::version::v1_2>;
using platform = opencl::platform<opencl::version::v1_2>;
using program = opencl::program<opencl::version::v1_2>;
using read_buffer = opencl::read_buffer<opencl::version::v1_2>;
using write_buffer = opencl::write_buffer<opencl::version::v1_2>;

inline std::vector<device> find_devices() {
  return opencl::find_devices<opencl::version::v1_2>();
}

} // namespace oryn::skerv::opencl_1_2

// Tells the queues of the host from those of the device.
namespace oryn::skerv::opencl_2_0 {

using buffer = opencl::buffer<opencl::version::v2_0>;
using buffer_reference = opencl::buffer_reference<opencl::version::v2_0>;
template <qv::operation Op>
using command = opencl::command<opencl::version::v2_0, Op>;
using context = opencl::context<opencl::version::v2_0>;
using copy_buffer = opencl::copy_buffer<opencl::version::v2_0>;
using device = opencl::device<opencl::version::v2_0>;
using device_binary = opencl::device_binary<opencl::version::v2_0>;
using device_command_queue = opencl::device_command_queue<opencl::version::v2_0>;
using event = opencl::event<opencl::version::v2_0>;
using fill_buffer_bytes = opencl::fill_buffer_bytes<opencl::version::v2_0>;
using host_command_queue = opencl::host_command_queue<opencl::version::v2_0>;
using kernel = opencl::kernel<opencl::version::v2_0>;
using memory_object = opencl::memory_object<opencl::version::v2_0>;
using nd_range_kernel = opencl::nd_range_kernel<opencl::version::v2_0>;
using platform = opencl::platform<opencl::version::v2_0>;
using program = opencl::program<opencl::version::v2_0>;
using read_buffer = opencl::read_buffer<opencl::version::v2_0>;
using write_buffer = opencl::write_buffer<opencl::version::v2_0>;

inline std::vector<device> find_devices() {
  return opencl::find_devices<opencl::version::v2_0>();
}

} // namespace oryn::skerv::opencl_2_0

// Has the intermediate language as a command.
namespace oryn::skerv::opencl_2_1 {

using buffer = opencl::buffer<opencl::version::v2_1>;
using buffer_reference = opencl::buffer_reference<opencl::version::v2_1>;
template <qv::operation Op>
using command = opencl::command<opencl::version::v2_1, Op>;
using context = opencl::context<opencl::version::v2_1>;
using copy_buffer = opencl::copy_buffer<opencl::version::v2_1>;
using device = opencl::device<opencl::version::v2_1>;
using device_binary = opencl::device_binary<opencl::version::v2_1>;
using device_command_queue = opencl::device_command_queue<opencl::version::v2_1>;
using event = opencl::event<opencl::version::v2_1>;
using fill_buffer_bytes = opencl::fill_buffer_bytes<opencl::version::v2_1>;
using host_command_queue = opencl::host_command_queue<opencl::version::v2_1>;
using kernel = opencl::kernel<opencl::version::v2_1>;
using memory_object = opencl::memory_object<opencl::version::v2_1>;
using nd_range_kernel = opencl::nd_range_kernel<opencl::version::v2_1>;
using program = opencl::program<opencl::version::v2_1>;
using read_buffer = opencl::read_buffer<opencl::version::v2_1>;
using write_buffer = opencl::write_buffer<opencl::version::v2_1>;

inline std::vector<device> find_devices() {
  return opencl::find_devices<opencl::version::v2_1>();
}

} // namespace oryn::skerv::opencl_2_1

// Adds specialization constants.
namespace oryn::skerv::opencl_2_2 {

using buffer = opencl::buffer<opencl::version::v2_2>;
using buffer_reference = opencl::buffer_reference<opencl::version::v2_2>;
template <qv::operation Op>
using command = opencl::command<opencl::version::v2_2, Op>;
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
