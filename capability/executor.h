// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What performs one command: an executor reads the inputs of a record, calls OpenCL and writes the outputs.
//
// An executor runs on whatever thread has sent the command, several at once, and takes locks only through the objects that it
// works on. It writes the outputs of the record, and nothing else of the caller's, before it returns. It may throw, which the
// dispatch turns into a failure of the command, unless it says that it does not. The device is the one that the call handle is
// bound to, or its stand-in while it is lost.
#pragma once

#include "capability/commands.h"
#include "capability/root_device.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>

namespace qv {

// True for what some implementations follow blindly: an array, or an entry of it, that is not there.
template <class Entry>
bool lacks_entries(Entry* const* array, std::size_t count) {
  return count != 0 && (array == nullptr || std::find(array, array + count, nullptr) != array + count);
}

// The same for the devices of a command; where there is no array at all, OpenCL has an answer of its own.
inline bool lacks_devices(void* const* devices, std::size_t count) {
  return devices != nullptr && lacks_entries(devices, count);
}

inline const cl_device_id* device_array(void* const* devices) {
  return reinterpret_cast<const cl_device_id*>(devices);
}

// Ends a command that creates something.
template <class Record>
void refuse(Record& record, cl_int status) noexcept {
  record.result = nullptr;
  record.status = status;
}

// Has OpenCL create something.
template <class Record, class Object, class... Parameters, class... Arguments>
void create_or_refuse(Record& record, Object (*function)(Parameters...), Arguments&&... arguments) noexcept {
  cl_int status = CL_SUCCESS;
  record.result = make_or_refuse(status, function, std::forward<Arguments>(arguments)...);
  record.status = status;
}

// Puts an object of this library around what was created, if it was. Without memory for it, what was created goes.
template <class Object, class Record, class Handle, class... Arguments>
void wrap_created(Record& record, cl_int (*release)(Handle), Arguments... arguments) noexcept {
  if (record.status != CL_SUCCESS)
    return;
  auto* const created = static_cast<Handle>(record.result);
  record.result = new (std::nothrow) Object(created, arguments...);
  if (record.result != nullptr)
    return;
  static_cast<void>(call_or_refuse(release, created));
  record.status = CL_OUT_OF_HOST_MEMORY;
}

// The object of this library behind a handle. Null, and the command has failed, if there is none. What is neither null nor a
// handle cannot be told from one, as with OpenCL itself.
template <class Object, class Record>
Object* find_object(void* handle, Record& record) noexcept {
  if (handle == nullptr)
    record.status = Object::invalid;
  return static_cast<Object*>(handle);
}

// Answers a query in OpenCL's way, with a value of `size` bytes.
template <class Record>
void answer(Record& record, const void* value, std::size_t size) {
  if (record.param_value != nullptr) {
    if (record.param_value_size < size) {
      record.status = CL_INVALID_VALUE;
      return;
    }
    std::memcpy(record.param_value, value, size);
  }
  if (record.param_value_size_ret != nullptr)
    *record.param_value_size_ret = size;
  record.status = CL_SUCCESS;
}

// Puts the question of the record to OpenCL. `about` is the object, and the device if the query is about both.
template <class Record, class Query, class... Objects>
void ask(Record& record, Query query, Objects... about) {
  record.status = call_or_refuse(query, about..., record.param_name, record.param_value_size,
                                 record.param_value, record.param_value_size_ret);
}

// The retain and release commands of the objects of this library.
template <class Object>
void retain_object(const root_device&, object_record& record) noexcept {
  auto* const object = find_object<Object>(record.object, record);
  if (object == nullptr)
    return;
  object->retain();
  record.status = CL_SUCCESS;
}

template <class Object>
void release_object(const root_device& device, object_record& record) noexcept {
  if (auto* const object = find_object<Object>(record.object, record))
    record.status = object->release(device.cl);
}

// Contexts, queues and buffers: execute_contexts.cpp.
void create_context(const root_device& device, create_context_record& record);
void create_command_queue(const root_device& device, create_command_queue_record& record);
void create_command_queue_with_properties(const root_device& device,
                                          create_command_queue_with_properties_record& record);
void create_buffer(const root_device& device, create_buffer_record& record);
void retain_context(const root_device& device, object_record& record);
void release_context(const root_device& device, object_record& record);
// As they are counted here; takes the lock of contexts.
cl_uint references_of_context(void* context);
void release_mem_object(const root_device& device, object_record& record);

// Work: execute_enqueue.cpp.
void enqueue_read_buffer(const root_device& device, enqueue_transfer_buffer_record& record);
void enqueue_write_buffer(const root_device& device, enqueue_transfer_buffer_record& record);
void enqueue_copy_buffer(const root_device& device, enqueue_copy_buffer_record& record);
void enqueue_fill_buffer(const root_device& device, enqueue_fill_buffer_record& record);
void enqueue_nd_range_kernel(const root_device& device, enqueue_nd_range_kernel_record& record);
void finish(const root_device& device, object_record& record);
void get_event_info(const root_device& device, get_object_info_record& record);
void get_event_profiling_info(const root_device& device, get_object_info_record& record);

// Programs: execute_programs.cpp.
void create_program_with_source(const root_device& device, create_program_with_source_record& record);
void create_program_with_binary(const root_device& device, create_program_with_binary_record& record);
void create_program_with_builtin_kernels(const root_device& device,
                                         create_program_with_builtin_kernels_record& record);
void create_program_with_il(const root_device& device, create_program_with_il_record& record);
void set_program_specialization_constant(const root_device& device,
                                         set_program_specialization_constant_record& record);
void build_program(const root_device& device, build_program_record& record);

// clCreateProgramWithILKHR, which a caller asks for by its address: il_extension.cpp.
void get_extension_function_address(const root_device& device,
                                    get_extension_function_address_for_platform_record& record);

// Kernels, and the questions to them: execute_kernels.cpp.
void create_kernel(const root_device& device, create_kernel_record& record);
void create_kernels_in_program(const root_device& device, create_kernels_in_program_record& record);
void set_kernel_arg(const root_device& device, set_kernel_arg_record& record);
void get_kernel_info(const root_device& device, get_object_info_record& record);
void get_kernel_work_group_info(const root_device& device, get_object_device_info_record& record);

// The questions to all other objects, and what is asked of devices: execute_queries.cpp.
void get_device_info(const root_device& device, get_device_info_record& record) noexcept;
void get_context_info(const root_device& device, get_context_info_record& record);
void get_program_info(const root_device& device, get_object_info_record& record);
void get_program_build_info(const root_device& device, get_object_device_info_record& record);
void device_of_handle(const root_device& device, device_of_handle_record& record);
void retain_or_release_device(const root_device& device, object_record& record);

} // namespace qv
