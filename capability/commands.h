// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The wire format between the OpenCL access layer and the capability library: the commands, their numbers
// under each capability, and their argument records. Both sides include this one header.
//
// A record is a plain block with natural alignment. The sender writes the input fields and reads the outputs;
// nothing else in it is defined. The order of the fields is not that of the OpenCL prototypes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace qv {

// One OpenCL function each; `device_of_handle` is none: it yields the device to which a call handle is bound.
enum class operation : std::uint32_t {
  build_program,
  create_buffer,
  create_command_queue,
  create_command_queue_with_properties,
  create_context,
  create_kernels_in_program,
  create_kernel,
  create_program_with_binary,
  create_program_with_builtin_kernels,
  create_program_with_source,
  create_program_with_il,
  enqueue_copy_buffer,
  enqueue_fill_buffer,
  enqueue_nd_range_kernel,
  enqueue_read_buffer,
  enqueue_write_buffer,
  finish,
  device_of_handle,
  get_context_info,
  get_device_info,
  get_event_info,
  get_event_profiling_info,
  get_extension_function_address_for_platform,
  get_kernel_info,
  get_kernel_work_group_info,
  get_program_build_info,
  get_program_info,
  release_command_queue,
  release_context,
  release_device,
  release_event,
  release_kernel,
  release_mem_object,
  release_program,
  retain_context,
  retain_device,
  retain_event,
  retain_program,
  set_kernel_arg,
  set_program_specialization_constant,
};

inline constexpr std::size_t operation_count = 40;
inline constexpr std::size_t capability_count = 6;

// The number of each operation under capability 1 to 6 (OpenCL 1.0, 1.1, 1.2, 2.0, 2.1, 2.2). 0: the
// capability has no such command.
struct command_row {
  operation op;
  std::array<std::uint16_t, capability_count> numbers;
};

// clang-format off
inline constexpr std::array<command_row, operation_count> command_table{{
    {operation::build_program, {1, 1, 1, 1, 1, 1}},
    {operation::create_buffer, {2, 2, 3, 3, 3, 3}},
    {operation::create_command_queue, {3, 3, 4, 0, 0, 0}},
    {operation::create_command_queue_with_properties, {0, 0, 0, 4, 4, 4}},
    {operation::create_context, {4, 4, 5, 5, 5, 5}},
    {operation::create_kernels_in_program, {8, 8, 0, 0, 0, 0}},
    {operation::create_kernel, {9, 9, 9, 9, 9, 9}},
    {operation::create_program_with_binary, {10, 10, 10, 11, 11, 11}},
    {operation::create_program_with_builtin_kernels, {0, 0, 11, 12, 12, 12}},
    {operation::create_program_with_source, {11, 11, 12, 13, 13, 13}},
    {operation::create_program_with_il, {0, 0, 0, 0, 95, 95}},
    {operation::enqueue_copy_buffer, {14, 16, 18, 19, 19, 19}},
    {operation::enqueue_fill_buffer, {0, 0, 23, 24, 24, 24}},
    {operation::enqueue_nd_range_kernel, {22, 25, 30, 31, 31, 31}},
    {operation::enqueue_read_buffer, {23, 26, 31, 32, 32, 32}},
    {operation::enqueue_write_buffer, {28, 32, 36, 41, 41, 41}},
    {operation::finish, {30, 35, 39, 44, 44, 44}},
    {operation::device_of_handle, {32, 37, 41, 46, 46, 46}},
    {operation::get_context_info, {34, 39, 43, 48, 48, 48}},
    {operation::get_device_info, {36, 41, 45, 50, 50, 50}},
    {operation::get_event_info, {37, 42, 46, 51, 51, 51}},
    {operation::get_event_profiling_info, {38, 43, 47, 52, 52, 52}},
    {operation::get_extension_function_address_for_platform, {0, 0, 48, 53, 0, 0}},
    {operation::get_kernel_info, {41, 46, 51, 56, 56, 56}},
    {operation::get_kernel_work_group_info, {42, 47, 52, 57, 57, 57}},
    {operation::get_program_build_info, {45, 50, 55, 61, 61, 61}},
    {operation::get_program_info, {46, 51, 56, 62, 62, 62}},
    {operation::release_command_queue, {49, 54, 60, 66, 66, 66}},
    {operation::release_context, {50, 55, 61, 67, 67, 67}},
    {operation::release_device, {0, 0, 62, 68, 68, 68}},
    {operation::release_event, {51, 56, 63, 69, 69, 69}},
    {operation::release_kernel, {52, 57, 64, 70, 70, 70}},
    {operation::release_mem_object, {53, 58, 65, 71, 71, 71}},
    {operation::release_program, {54, 59, 66, 72, 72, 72}},
    {operation::retain_context, {57, 62, 69, 75, 75, 75}},
    {operation::retain_device, {0, 0, 70, 76, 76, 76}},
    {operation::retain_event, {58, 63, 71, 77, 77, 77}},
    {operation::retain_program, {61, 66, 74, 80, 80, 80}},
    {operation::set_kernel_arg, {63, 69, 77, 83, 83, 83}},
    {operation::set_program_specialization_constant, {0, 0, 0, 0, 0, 99}},
}};
// clang-format on

constexpr bool command_table_is_in_order() {
  for (std::size_t i = 0; i < operation_count; ++i)
    if (static_cast<std::size_t>(command_table[i].op) != i)
      return false;
  return true;
}
static_assert(command_table_is_in_order(), "command_number() indexes the table by operation");

// The number of `op` under `capability` (1 to 6), or 0 if it has none there.
constexpr std::uint64_t command_number(operation op, std::uint32_t capability) {
  return command_table[static_cast<std::size_t>(op)].numbers[capability - 1];
}

using program_callback = void (*)(void* program, void* user_data);
using context_callback = void (*)(const char* message, const void* private_info, std::size_t size,
                                  void* user_data);

// The records. `status` and `result` are written by the capability library.

struct build_program_record {
  void* program;
  void* const* device_list;
  const char* options;
  program_callback pfn_notify;
  void* user_data;
  std::int32_t status;
  std::uint32_t num_devices;
};
static_assert(offsetof(build_program_record, program) == 0);
static_assert(offsetof(build_program_record, device_list) == 8);
static_assert(offsetof(build_program_record, options) == 16);
static_assert(offsetof(build_program_record, pfn_notify) == 24);
static_assert(offsetof(build_program_record, user_data) == 32);
static_assert(offsetof(build_program_record, status) == 40);
static_assert(offsetof(build_program_record, num_devices) == 44);

struct create_buffer_record {
  std::uint64_t flags;
  void* context;
  std::size_t size;
  void* host_ptr;
  void* result;
  std::int32_t status;
};
static_assert(offsetof(create_buffer_record, flags) == 0);
static_assert(offsetof(create_buffer_record, context) == 8);
static_assert(offsetof(create_buffer_record, size) == 16);
static_assert(offsetof(create_buffer_record, host_ptr) == 24);
static_assert(offsetof(create_buffer_record, result) == 32);
static_assert(offsetof(create_buffer_record, status) == 40);

struct create_command_queue_record {
  void* context;
  void* device;
  std::uint64_t properties;
  std::int32_t status;
  void* result;
};
static_assert(offsetof(create_command_queue_record, context) == 0);
static_assert(offsetof(create_command_queue_record, device) == 8);
static_assert(offsetof(create_command_queue_record, properties) == 16);
static_assert(offsetof(create_command_queue_record, status) == 24);
static_assert(offsetof(create_command_queue_record, result) == 32);

struct create_command_queue_with_properties_record {
  void* device;
  void* context;
  const std::uint64_t* properties;
  void* result;
  std::int32_t status;
};
static_assert(offsetof(create_command_queue_with_properties_record, device) == 0);
static_assert(offsetof(create_command_queue_with_properties_record, context) == 8);
static_assert(offsetof(create_command_queue_with_properties_record, properties) == 16);
static_assert(offsetof(create_command_queue_with_properties_record, result) == 24);
static_assert(offsetof(create_command_queue_with_properties_record, status) == 32);

struct create_context_record {
  const std::uint64_t* properties;
  std::uint32_t num_devices;
  void* const* devices;
  context_callback pfn_notify;
  void* user_data;
  void* result;
  std::int32_t status;
};
static_assert(offsetof(create_context_record, properties) == 0);
static_assert(offsetof(create_context_record, num_devices) == 8);
static_assert(offsetof(create_context_record, devices) == 16);
static_assert(offsetof(create_context_record, pfn_notify) == 24);
static_assert(offsetof(create_context_record, user_data) == 32);
static_assert(offsetof(create_context_record, result) == 40);
static_assert(offsetof(create_context_record, status) == 48);

struct create_kernels_in_program_record {
  void* program;
  void** kernels;
  std::uint32_t* num_kernels_ret;
  std::int32_t status;
  std::uint32_t num_kernels;
};
static_assert(offsetof(create_kernels_in_program_record, program) == 0);
static_assert(offsetof(create_kernels_in_program_record, kernels) == 8);
static_assert(offsetof(create_kernels_in_program_record, num_kernels_ret) == 16);
static_assert(offsetof(create_kernels_in_program_record, status) == 24);
static_assert(offsetof(create_kernels_in_program_record, num_kernels) == 28);

struct create_kernel_record {
  void* program;
  const char* kernel_name;
  void* result;
  std::int32_t status;
};
static_assert(offsetof(create_kernel_record, program) == 0);
static_assert(offsetof(create_kernel_record, kernel_name) == 8);
static_assert(offsetof(create_kernel_record, result) == 16);
static_assert(offsetof(create_kernel_record, status) == 24);

struct create_program_with_binary_record {
  void* context;
  void* const* device_list;
  const std::size_t* lengths;
  const unsigned char* const* binaries;
  std::int32_t* binary_status;
  void* result;
  std::int32_t status;
  std::uint32_t num_devices;
};
static_assert(offsetof(create_program_with_binary_record, context) == 0);
static_assert(offsetof(create_program_with_binary_record, device_list) == 8);
static_assert(offsetof(create_program_with_binary_record, lengths) == 16);
static_assert(offsetof(create_program_with_binary_record, binaries) == 24);
static_assert(offsetof(create_program_with_binary_record, binary_status) == 32);
static_assert(offsetof(create_program_with_binary_record, result) == 40);
static_assert(offsetof(create_program_with_binary_record, status) == 48);
static_assert(offsetof(create_program_with_binary_record, num_devices) == 52);

struct create_program_with_builtin_kernels_record {
  void* context;
  void* const* device_list;
  const char* kernel_names;
  void* result;
  std::int32_t status;
  std::uint32_t num_devices;
};
static_assert(offsetof(create_program_with_builtin_kernels_record, context) == 0);
static_assert(offsetof(create_program_with_builtin_kernels_record, device_list) == 8);
static_assert(offsetof(create_program_with_builtin_kernels_record, kernel_names) == 16);
static_assert(offsetof(create_program_with_builtin_kernels_record, result) == 24);
static_assert(offsetof(create_program_with_builtin_kernels_record, status) == 32);
static_assert(offsetof(create_program_with_builtin_kernels_record, num_devices) == 36);

struct create_program_with_source_record {
  void* context;
  const char* const* strings;
  const std::size_t* lengths;
  void* result;
  std::int32_t status;
  std::uint32_t count;
};
static_assert(offsetof(create_program_with_source_record, context) == 0);
static_assert(offsetof(create_program_with_source_record, strings) == 8);
static_assert(offsetof(create_program_with_source_record, lengths) == 16);
static_assert(offsetof(create_program_with_source_record, result) == 24);
static_assert(offsetof(create_program_with_source_record, status) == 32);
static_assert(offsetof(create_program_with_source_record, count) == 36);

struct create_program_with_il_record {
  void* context;
  const void* il;
  std::size_t length;
  void* result;
  std::int32_t status;
};
static_assert(offsetof(create_program_with_il_record, context) == 0);
static_assert(offsetof(create_program_with_il_record, il) == 8);
static_assert(offsetof(create_program_with_il_record, length) == 16);
static_assert(offsetof(create_program_with_il_record, result) == 24);
static_assert(offsetof(create_program_with_il_record, status) == 32);

struct enqueue_copy_buffer_record {
  void* command_queue;
  void* src_buffer;
  void* dst_buffer;
  std::size_t src_offset;
  std::size_t dst_offset;
  std::size_t size;
  void* const* event_wait_list;
  void** event;
  std::int32_t status;
  std::uint32_t num_events_in_wait_list;
};
static_assert(offsetof(enqueue_copy_buffer_record, command_queue) == 0);
static_assert(offsetof(enqueue_copy_buffer_record, src_buffer) == 8);
static_assert(offsetof(enqueue_copy_buffer_record, dst_buffer) == 16);
static_assert(offsetof(enqueue_copy_buffer_record, src_offset) == 24);
static_assert(offsetof(enqueue_copy_buffer_record, dst_offset) == 32);
static_assert(offsetof(enqueue_copy_buffer_record, size) == 40);
static_assert(offsetof(enqueue_copy_buffer_record, event_wait_list) == 48);
static_assert(offsetof(enqueue_copy_buffer_record, event) == 56);
static_assert(offsetof(enqueue_copy_buffer_record, status) == 64);
static_assert(offsetof(enqueue_copy_buffer_record, num_events_in_wait_list) == 68);

struct enqueue_fill_buffer_record {
  void* command_queue;
  void* buffer;
  const void* pattern;
  std::size_t pattern_size;
  std::size_t offset;
  std::size_t size;
  void* const* event_wait_list;
  void** event;
  std::int32_t status;
  std::uint32_t num_events_in_wait_list;
};
static_assert(offsetof(enqueue_fill_buffer_record, command_queue) == 0);
static_assert(offsetof(enqueue_fill_buffer_record, buffer) == 8);
static_assert(offsetof(enqueue_fill_buffer_record, pattern) == 16);
static_assert(offsetof(enqueue_fill_buffer_record, pattern_size) == 24);
static_assert(offsetof(enqueue_fill_buffer_record, offset) == 32);
static_assert(offsetof(enqueue_fill_buffer_record, size) == 40);
static_assert(offsetof(enqueue_fill_buffer_record, event_wait_list) == 48);
static_assert(offsetof(enqueue_fill_buffer_record, event) == 56);
static_assert(offsetof(enqueue_fill_buffer_record, status) == 64);
static_assert(offsetof(enqueue_fill_buffer_record, num_events_in_wait_list) == 68);

struct enqueue_nd_range_kernel_record {
  void* command_queue;
  void* kernel;
  const std::size_t* global_work_offset;
  const std::size_t* global_work_size;
  const std::size_t* local_work_size;
  void* const* event_wait_list;
  void** event;
  std::int32_t status;
  std::uint32_t work_dim;
  std::uint32_t num_events_in_wait_list;
};
static_assert(offsetof(enqueue_nd_range_kernel_record, command_queue) == 0);
static_assert(offsetof(enqueue_nd_range_kernel_record, kernel) == 8);
static_assert(offsetof(enqueue_nd_range_kernel_record, global_work_offset) == 16);
static_assert(offsetof(enqueue_nd_range_kernel_record, global_work_size) == 24);
static_assert(offsetof(enqueue_nd_range_kernel_record, local_work_size) == 32);
static_assert(offsetof(enqueue_nd_range_kernel_record, event_wait_list) == 40);
static_assert(offsetof(enqueue_nd_range_kernel_record, event) == 48);
static_assert(offsetof(enqueue_nd_range_kernel_record, status) == 56);
static_assert(offsetof(enqueue_nd_range_kernel_record, work_dim) == 60);
static_assert(offsetof(enqueue_nd_range_kernel_record, num_events_in_wait_list) == 64);

// clEnqueueReadBuffer and clEnqueueWriteBuffer.
struct enqueue_transfer_buffer_record {
  void* command_queue;
  void* buffer;
  std::size_t offset;
  std::size_t size;
  void* ptr;
  void* const* event_wait_list;
  void** event;
  std::int32_t status;
  std::uint32_t blocking;
  std::uint32_t num_events_in_wait_list;
};
static_assert(offsetof(enqueue_transfer_buffer_record, command_queue) == 0);
static_assert(offsetof(enqueue_transfer_buffer_record, buffer) == 8);
static_assert(offsetof(enqueue_transfer_buffer_record, offset) == 16);
static_assert(offsetof(enqueue_transfer_buffer_record, size) == 24);
static_assert(offsetof(enqueue_transfer_buffer_record, ptr) == 32);
static_assert(offsetof(enqueue_transfer_buffer_record, event_wait_list) == 40);
static_assert(offsetof(enqueue_transfer_buffer_record, event) == 48);
static_assert(offsetof(enqueue_transfer_buffer_record, status) == 56);
static_assert(offsetof(enqueue_transfer_buffer_record, blocking) == 60);
static_assert(offsetof(enqueue_transfer_buffer_record, num_events_in_wait_list) == 64);

// clFinish and each retain and release command.
struct object_record {
  void* object;
  std::int32_t status;
};
static_assert(offsetof(object_record, object) == 0);
static_assert(offsetof(object_record, status) == 8);

// The device to which the call handle is bound. No status: this cannot fail.
struct device_of_handle_record {
  void* result;
};
static_assert(offsetof(device_of_handle_record, result) == 0);

struct get_context_info_record {
  void* context;
  std::uint32_t param_name;
  std::size_t param_value_size;
  void* param_value;
  std::size_t* param_value_size_ret;
  std::int32_t status;
};
static_assert(offsetof(get_context_info_record, context) == 0);
static_assert(offsetof(get_context_info_record, param_name) == 8);
static_assert(offsetof(get_context_info_record, param_value_size) == 16);
static_assert(offsetof(get_context_info_record, param_value) == 24);
static_assert(offsetof(get_context_info_record, param_value_size_ret) == 32);
static_assert(offsetof(get_context_info_record, status) == 40);

struct get_device_info_record {
  void* device;
  void* param_value;
  std::size_t* param_value_size_ret;
  std::uint32_t param_name;
  std::size_t param_value_size;
  std::int32_t status;
};
static_assert(offsetof(get_device_info_record, device) == 0);
static_assert(offsetof(get_device_info_record, param_value) == 8);
static_assert(offsetof(get_device_info_record, param_value_size_ret) == 16);
static_assert(offsetof(get_device_info_record, param_name) == 24);
static_assert(offsetof(get_device_info_record, param_value_size) == 32);
static_assert(offsetof(get_device_info_record, status) == 40);

// clGetEventInfo, clGetEventProfilingInfo, clGetKernelInfo and clGetProgramInfo.
struct get_object_info_record {
  void* object;
  std::size_t param_value_size;
  void* param_value;
  std::size_t* param_value_size_ret;
  std::int32_t status;
  std::uint32_t param_name;
};
static_assert(offsetof(get_object_info_record, object) == 0);
static_assert(offsetof(get_object_info_record, param_value_size) == 8);
static_assert(offsetof(get_object_info_record, param_value) == 16);
static_assert(offsetof(get_object_info_record, param_value_size_ret) == 24);
static_assert(offsetof(get_object_info_record, status) == 32);
static_assert(offsetof(get_object_info_record, param_name) == 36);

// clGetKernelWorkGroupInfo and clGetProgramBuildInfo; the device comes first.
struct get_object_device_info_record {
  void* device;
  void* object;
  std::size_t param_value_size;
  void* param_value;
  std::size_t* param_value_size_ret;
  std::int32_t status;
  std::uint32_t param_name;
};
static_assert(offsetof(get_object_device_info_record, device) == 0);
static_assert(offsetof(get_object_device_info_record, object) == 8);
static_assert(offsetof(get_object_device_info_record, param_value_size) == 16);
static_assert(offsetof(get_object_device_info_record, param_value) == 24);
static_assert(offsetof(get_object_device_info_record, param_value_size_ret) == 32);
static_assert(offsetof(get_object_device_info_record, status) == 40);
static_assert(offsetof(get_object_device_info_record, param_name) == 44);

// No status: a missing function is a null result.
struct get_extension_function_address_for_platform_record {
  void* platform;
  const char* func_name;
  void* result;
};
static_assert(offsetof(get_extension_function_address_for_platform_record, platform) == 0);
static_assert(offsetof(get_extension_function_address_for_platform_record, func_name) == 8);
static_assert(offsetof(get_extension_function_address_for_platform_record, result) == 16);

struct set_kernel_arg_record {
  void* kernel;
  std::size_t arg_size;
  const void* arg_value;
  std::int32_t status;
  std::uint32_t arg_index;
};
static_assert(offsetof(set_kernel_arg_record, kernel) == 0);
static_assert(offsetof(set_kernel_arg_record, arg_size) == 8);
static_assert(offsetof(set_kernel_arg_record, arg_value) == 16);
static_assert(offsetof(set_kernel_arg_record, status) == 24);
static_assert(offsetof(set_kernel_arg_record, arg_index) == 28);

struct set_program_specialization_constant_record {
  void* program;
  std::uint32_t spec_id;
  std::size_t spec_size;
  const void* spec_value;
  std::int32_t status;
};
static_assert(offsetof(set_program_specialization_constant_record, program) == 0);
static_assert(offsetof(set_program_specialization_constant_record, spec_id) == 8);
static_assert(offsetof(set_program_specialization_constant_record, spec_size) == 16);
static_assert(offsetof(set_program_specialization_constant_record, spec_value) == 24);
static_assert(offsetof(set_program_specialization_constant_record, status) == 32);

// The record that each operation takes.
template <operation>
struct record_of;

// clang-format off
template <> struct record_of<operation::build_program> { using type = build_program_record; };
template <> struct record_of<operation::create_buffer> { using type = create_buffer_record; };
template <> struct record_of<operation::create_command_queue> { using type = create_command_queue_record; };
template <> struct record_of<operation::create_command_queue_with_properties> { using type = create_command_queue_with_properties_record; };
template <> struct record_of<operation::create_context> { using type = create_context_record; };
template <> struct record_of<operation::create_kernels_in_program> { using type = create_kernels_in_program_record; };
template <> struct record_of<operation::create_kernel> { using type = create_kernel_record; };
template <> struct record_of<operation::create_program_with_binary> { using type = create_program_with_binary_record; };
template <> struct record_of<operation::create_program_with_builtin_kernels> { using type = create_program_with_builtin_kernels_record; };
template <> struct record_of<operation::create_program_with_source> { using type = create_program_with_source_record; };
template <> struct record_of<operation::create_program_with_il> { using type = create_program_with_il_record; };
template <> struct record_of<operation::enqueue_copy_buffer> { using type = enqueue_copy_buffer_record; };
template <> struct record_of<operation::enqueue_fill_buffer> { using type = enqueue_fill_buffer_record; };
template <> struct record_of<operation::enqueue_nd_range_kernel> { using type = enqueue_nd_range_kernel_record; };
template <> struct record_of<operation::enqueue_read_buffer> { using type = enqueue_transfer_buffer_record; };
template <> struct record_of<operation::enqueue_write_buffer> { using type = enqueue_transfer_buffer_record; };
template <> struct record_of<operation::finish> { using type = object_record; };
template <> struct record_of<operation::device_of_handle> { using type = device_of_handle_record; };
template <> struct record_of<operation::get_context_info> { using type = get_context_info_record; };
template <> struct record_of<operation::get_device_info> { using type = get_device_info_record; };
template <> struct record_of<operation::get_event_info> { using type = get_object_info_record; };
template <> struct record_of<operation::get_event_profiling_info> { using type = get_object_info_record; };
template <> struct record_of<operation::get_extension_function_address_for_platform> { using type = get_extension_function_address_for_platform_record; };
template <> struct record_of<operation::get_kernel_info> { using type = get_object_info_record; };
template <> struct record_of<operation::get_kernel_work_group_info> { using type = get_object_device_info_record; };
template <> struct record_of<operation::get_program_build_info> { using type = get_object_device_info_record; };
template <> struct record_of<operation::get_program_info> { using type = get_object_info_record; };
template <> struct record_of<operation::release_command_queue> { using type = object_record; };
template <> struct record_of<operation::release_context> { using type = object_record; };
template <> struct record_of<operation::release_device> { using type = object_record; };
template <> struct record_of<operation::release_event> { using type = object_record; };
template <> struct record_of<operation::release_kernel> { using type = object_record; };
template <> struct record_of<operation::release_mem_object> { using type = object_record; };
template <> struct record_of<operation::release_program> { using type = object_record; };
template <> struct record_of<operation::retain_context> { using type = object_record; };
template <> struct record_of<operation::retain_device> { using type = object_record; };
template <> struct record_of<operation::retain_event> { using type = object_record; };
template <> struct record_of<operation::retain_program> { using type = object_record; };
template <> struct record_of<operation::set_kernel_arg> { using type = set_kernel_arg_record; };
template <> struct record_of<operation::set_program_specialization_constant> { using type = set_program_specialization_constant_record; };
// clang-format on

template <operation Op>
using record = typename record_of<Op>::type;

} // namespace qv
