// What performs one command: an executor reads the inputs of a record, calls OpenCL and writes the outputs.
#pragma once

#include "capability/commands.h"
#include "capability/opencl_call.h"
#include "capability/root_device.h"

#include <algorithm>
#include <cstddef>

namespace qv {

using executor = void (*)(const root_device&, void* record);

// True for what some implementations follow blindly: an array, or an entry of it, that is not there.
template <typename Entry>
bool lacks_entries(Entry* const* array, std::size_t count) {
  return count != 0 && (array == nullptr || std::find(array, array + count, nullptr) != array + count);
}

// The same for a list of devices; one that is not there at all is left to OpenCL.
inline bool lacks_devices(void* const* devices, std::size_t count) {
  return devices != nullptr && lacks_entries(devices, count);
}

inline const cl_device_id* device_array(void* const* devices) {
  return reinterpret_cast<const cl_device_id*>(devices);
}

// Contexts, queues and buffers.
void create_context(const root_device& device, create_context_record& record);
void create_command_queue(const root_device& device, create_command_queue_record& record);
void create_command_queue_with_properties(const root_device& device,
                                          create_command_queue_with_properties_record& record);
void create_buffer(const root_device& device, create_buffer_record& record);
void retain_context(const root_device& device, object_record& record);
void release_context(const root_device& device, object_record& record);
// As they are counted here.
cl_uint references_of_context(void* context);
void release_command_queue(const root_device& device, object_record& record);
void release_mem_object(const root_device& device, object_record& record);

// Enqueued work.
void enqueue_read_buffer(const root_device& device, enqueue_transfer_buffer_record& record);
void enqueue_write_buffer(const root_device& device, enqueue_transfer_buffer_record& record);
void enqueue_copy_buffer(const root_device& device, enqueue_copy_buffer_record& record);
void enqueue_fill_buffer(const root_device& device, enqueue_fill_buffer_record& record);
void enqueue_nd_range_kernel(const root_device& device, enqueue_nd_range_kernel_record& record);
void finish(const root_device& device, object_record& record);
void get_event_info(const root_device& device, get_object_info_record& record);
void get_event_profiling_info(const root_device& device, get_object_info_record& record);
void retain_event(const root_device& device, object_record& record);
void release_event(const root_device& device, object_record& record);

// Programs.
void create_program_with_source(const root_device& device, create_program_with_source_record& record);
void create_program_with_binary(const root_device& device, create_program_with_binary_record& record);
void create_program_with_builtin_kernels(const root_device& device,
                                         create_program_with_builtin_kernels_record& record);
void create_program_with_il(const root_device& device, create_program_with_il_record& record);
void set_program_specialization_constant(const root_device& device,
                                         set_program_specialization_constant_record& record);
void get_extension_function_address(const root_device& device,
                                    get_extension_function_address_for_platform_record& record);
void build_program(const root_device& device, build_program_record& record);
void get_program_info(const root_device& device, get_object_info_record& record);
void get_program_build_info(const root_device& device, get_object_device_info_record& record);
void retain_program(const root_device& device, object_record& record);
void release_program(const root_device& device, object_record& record);

// Kernels.
void create_kernel(const root_device& device, create_kernel_record& record);
void create_kernels_in_program(const root_device& device, create_kernels_in_program_record& record);
void set_kernel_arg(const root_device& device, set_kernel_arg_record& record);
void get_kernel_info(const root_device& device, get_object_info_record& record);
void get_kernel_work_group_info(const root_device& device, get_object_device_info_record& record);
void release_kernel(const root_device& device, object_record& record);

// Queries that are more than a call.
void get_device_info(const root_device& device, get_device_info_record& record);
void get_context_info(const root_device& device, get_context_info_record& record);
void device_of_handle(const root_device& device, device_of_handle_record& record);
void count_device(const root_device& device, object_record& record);

} // namespace qv
