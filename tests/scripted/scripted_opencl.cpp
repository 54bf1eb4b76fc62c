// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The scripted machine as an OpenCL of its own, under the name of the loader: platforms whose functions are the
// commands of the machine. The real capability library runs over it.
#include "tests/scripted/scripted_machine.h"

#define CL_TARGET_OPENCL_VERSION 220
#define CL_USE_DEPRECATED_OPENCL_1_2_APIS
#include <cstdlib>
#pragma GCC visibility push(default)
#include <CL/cl.h>
#pragma GCC visibility pop

namespace scripted {
namespace {

cl_platform_id platform(std::size_t index) {
  return reinterpret_cast<cl_platform_id>(&machine::get().platforms.at(index));
}
const platform_options& options_of(cl_platform_id platform) {
  return *reinterpret_cast<const platform_options*>(platform);
}

// The device that an object lives on; the first, for what is none.
device& owner_of(machine& world, void* handle) {
  for (device& each : world.devices)
    if (&each == handle)
      return each;
  const auto found = world.objects.find(handle);
  return found == world.objects.end() ? world.devices.front() : *found->second->owner;
}

// Performs the operation. `about` tells the device.
template <qv::operation Op>
qv::record<Op> run(void* about, qv::record<Op> record) {
  const visit inside;
  machine& world = machine::get();
  std::unique_lock lock(world.lock);
  device& owner = owner_of(world, about);
  call_record log{Op, owner.options.capabilities.front(), owner.index, std::this_thread::get_id()};
  session now{world, owner, lock, log};
  if (const std::int32_t code = perform(now, Op, &record); code != 0)
    if constexpr (requires { record.status; })
      record.status = code;
  world.calls.push_back(log);
  return record;
}

template <qv::operation Op, class Handle>
Handle make(void* about, cl_int* status, const qv::record<Op>& inputs) {
  const auto record = run<Op>(about, inputs);
  if (status != nullptr)
    *status = record.status;
  return record.status == 0 ? static_cast<Handle>(record.result) : nullptr;
}

template <qv::operation Op>
cl_int ask(void* object, cl_device_id device, cl_uint name, std::size_t size, void* value,
           std::size_t* size_ret) {
  return run<Op>(object, {device, object, size, value, size_ret, 0, name}).status;
}

cl_int answer(const bytes& what, std::size_t size, void* value, std::size_t* size_ret) {
  struct {
    std::size_t param_value_size;
    void* param_value;
    std::size_t* param_value_size_ret;
  } const query{size, value, size_ret};
  return answer_query(what, query);
}

cl_int answer_badly(defect what, void* value, std::size_t* size_ret) {
  if (what == defect::refused)
    return CL_OUT_OF_RESOURCES;
  if (what == defect::thrown)
    throw std::bad_alloc();
  if (size_ret != nullptr)
    *size_ret = what == defect::absurd ? std::size_t{1} << 62 : value == nullptr ? 4 : 5;
  return CL_SUCCESS;
}

// The handles of a list, of which there are `count`.
template <class Handle>
cl_int list(const std::vector<Handle>& all, std::size_t count, cl_uint room, Handle* handles,
            cl_uint* found) {
  if (handles != nullptr)
    std::copy_n(all.begin(), std::min<std::size_t>(room, all.size()), handles);
  if (found != nullptr)
    *found = static_cast<cl_uint>(count);
  return all.empty() ? CL_DEVICE_NOT_FOUND : CL_SUCCESS;
}

template <class Entry>
void* const* handles(const Entry* entries) {
  return reinterpret_cast<void* const*>(entries);
}

// For programs that know nothing of scripts: one device, which may refuse a query.
[[gnu::constructor]] void take_device_from_environment() {
  const char* const name = std::getenv("SCRIPTED_DEVICE_NAME");
  const char* const query = std::getenv("SCRIPTED_REFUSED_QUERY");
  if (name == nullptr)
    return;
  device_options only{name, {3}};
  if (query != nullptr)
    only.defects[static_cast<std::uint32_t>(std::strtoul(query, nullptr, 0))] = defect::refused;
  set_devices({only});
}

} // namespace

bool is_opencl() {
  return true;
}

} // namespace scripted

using namespace scripted;
using op = qv::operation;

cl_int clGetPlatformIDs(cl_uint count, cl_platform_id* platforms, cl_uint* found) {
  const visit inside;
  std::vector<cl_platform_id> all;
  for (std::size_t i = 0; i < machine::get().platforms.size(); ++i)
    all.push_back(platform(i));
  const cl_int status = machine::get().platforms_status;
  return status != CL_SUCCESS ? status : list(all, all.size(), count, platforms, found);
}

cl_int clGetPlatformInfo(cl_platform_id of, cl_platform_info name, size_t size, void* value,
                         size_t* size_ret) {
  const visit inside;
  const auto& options = options_of(of);
  return answer(name == CL_PLATFORM_HOST_TIMER_RESOLUTION
                    ? value_answer(options.timer)
                    : text_answer(name == CL_PLATFORM_VERSION ? options.version : options.name),
                size, value, size_ret);
}

// Custom devices are listed only to those who ask for them.
cl_int clGetDeviceIDs(cl_platform_id of, cl_device_type type, cl_uint count, cl_device_id* devices,
                      cl_uint* found) {
  const visit inside;
  const auto& options = options_of(of);
  std::vector<cl_device_id> all;
  for (scripted::device& each : machine::get().devices) {
    cl_device_type own = scripted::number_of(CL_DEVICE_TYPE);
    if (const auto told = each.options.info.find(CL_DEVICE_TYPE);
        told != each.options.info.end() && told->second.size() == sizeof own)
      std::memcpy(&own, told->second.data(), sizeof own);
    const bool is_meant = type == CL_DEVICE_TYPE_ALL ? own != CL_DEVICE_TYPE_CUSTOM : (own & type) != 0;
    if (platform(each.options.platform) == of && is_meant)
      all.push_back(reinterpret_cast<cl_device_id>(&each));
  }
  if (options.devices_status != CL_SUCCESS)
    return options.devices_status;
  return list(all, options.false_count != 0 ? options.false_count : all.size(), count, devices, found);
}

// Each device reports the first version that it is given.
cl_int clGetDeviceInfo(cl_device_id id, cl_device_info name, size_t size, void* value, size_t* size_ret) {
  const visit inside;
  if (id == nullptr)
    return CL_INVALID_DEVICE;
  const auto& options = reinterpret_cast<scripted::device*>(id)->options;
  if (const auto found = options.defects.find(name); found != options.defects.end())
    return answer_badly(found->second, value, size_ret);
  if (name == CL_DEVICE_VERSION && options.info.count(name) == 0)
    return answer(
        text_answer(std::string("OpenCL ") + version_texts[options.capabilities.front() - 1] + " scripted"),
        size, value, size_ret);
  if (name == CL_DEVICE_PLATFORM)
    return answer(value_answer(platform(options.platform)), size, value, size_ret);
  return run<op::get_device_info>(id, {id, value, size_ret, name, size, 0}).status;
}

// The functions of one argument.
#define TAKES_OBJECT(function, handle, operation)                                                            \
  cl_int function(handle object) {                                                                           \
    return run<op::operation>(object, {object, 0}).status;                                                   \
  }
TAKES_OBJECT(clRetainDevice, cl_device_id, retain_device)
TAKES_OBJECT(clReleaseDevice, cl_device_id, release_device)
TAKES_OBJECT(clRetainContext, cl_context, retain_context)
TAKES_OBJECT(clReleaseContext, cl_context, release_context)
TAKES_OBJECT(clReleaseCommandQueue, cl_command_queue, release_command_queue)
TAKES_OBJECT(clFinish, cl_command_queue, finish)
TAKES_OBJECT(clReleaseMemObject, cl_mem, release_mem_object)
TAKES_OBJECT(clReleaseEvent, cl_event, release_event)
TAKES_OBJECT(clReleaseProgram, cl_program, release_program)
TAKES_OBJECT(clReleaseKernel, cl_kernel, release_kernel)

// The queries of objects.
#define ANSWERS(function, handle, operation)                                                                 \
  cl_int function(handle object, cl_uint name, size_t size, void* value, size_t* size_ret) {                 \
    return run<op::operation>(object, {object, size, value, size_ret, 0, name}).status;                      \
  }
ANSWERS(clGetEventInfo, cl_event, get_event_info)
ANSWERS(clGetEventProfilingInfo, cl_event, get_event_profiling_info)
ANSWERS(clGetProgramInfo, cl_program, get_program_info)
ANSWERS(clGetKernelInfo, cl_kernel, get_kernel_info)

cl_context clCreateContext(const cl_context_properties* properties, cl_uint count,
                           const cl_device_id* devices,
                           void (*notify)(const char*, const void*, size_t, void*), void* user_data,
                           cl_int* status) {
  return make<op::create_context, cl_context>(devices == nullptr ? nullptr : devices[0], status,
                                              {reinterpret_cast<const std::uint64_t*>(properties), count,
                                               handles(devices), notify, user_data, nullptr, 0});
}
cl_int clGetContextInfo(cl_context context, cl_context_info name, size_t size, void* value,
                        size_t* size_ret) {
  return run<op::get_context_info>(context, {context, name, size, value, size_ret, 0}).status;
}

cl_command_queue clCreateCommandQueue(cl_context context, cl_device_id device,
                                      cl_command_queue_properties properties, cl_int* status) {
  return make<op::create_command_queue, cl_command_queue>(context, status,
                                                          {context, device, properties, 0, nullptr});
}
cl_command_queue clCreateCommandQueueWithProperties(cl_context context, cl_device_id device,
                                                    const cl_queue_properties* properties, cl_int* status) {
  return make<op::create_command_queue_with_properties, cl_command_queue>(
      context, status, {device, context, properties, nullptr, 0});
}

cl_mem clCreateBuffer(cl_context context, cl_mem_flags flags, size_t size, void* host, cl_int* status) {
  return make<op::create_buffer, cl_mem>(context, status, {flags, context, size, host, nullptr, 0});
}

cl_int clEnqueueReadBuffer(cl_command_queue queue, cl_mem buffer, cl_bool blocking, size_t offset,
                           size_t size, void* host, cl_uint count, const cl_event* waits, cl_event* event) {
  return run<op::enqueue_read_buffer>(queue, {queue, buffer, offset, size, host, handles(waits),
                                              reinterpret_cast<void**>(event), 0, blocking, count})
      .status;
}
cl_int clEnqueueWriteBuffer(cl_command_queue queue, cl_mem buffer, cl_bool blocking, size_t offset,
                            size_t size, const void* host, cl_uint count, const cl_event* waits,
                            cl_event* event) {
  return run<op::enqueue_write_buffer>(queue,
                                       {queue, buffer, offset, size, const_cast<void*>(host), handles(waits),
                                        reinterpret_cast<void**>(event), 0, blocking, count})
      .status;
}
cl_int clEnqueueCopyBuffer(cl_command_queue queue, cl_mem from, cl_mem to, size_t from_offset,
                           size_t to_offset, size_t size, cl_uint count, const cl_event* waits,
                           cl_event* event) {
  return run<op::enqueue_copy_buffer>(queue, {queue, from, to, from_offset, to_offset, size, handles(waits),
                                              reinterpret_cast<void**>(event), 0, count})
      .status;
}
cl_int clEnqueueFillBuffer(cl_command_queue queue, cl_mem buffer, const void* pattern, size_t pattern_size,
                           size_t offset, size_t size, cl_uint count, const cl_event* waits,
                           cl_event* event) {
  return run<op::enqueue_fill_buffer>(queue, {queue, buffer, pattern, pattern_size, offset, size,
                                              handles(waits), reinterpret_cast<void**>(event), 0, count})
      .status;
}
cl_int clEnqueueNDRangeKernel(cl_command_queue queue, cl_kernel kernel, cl_uint work_dim,
                              const size_t* offset, const size_t* global, const size_t* local, cl_uint count,
                              const cl_event* waits, cl_event* event) {
  return run<op::enqueue_nd_range_kernel>(queue, {queue, kernel, offset, global, local, handles(waits),
                                                  reinterpret_cast<void**>(event), 0, work_dim, count})
      .status;
}

// Finishes all queues, or drops their work for good.
cl_int clWaitForEvents(cl_uint, const cl_event*) {
  machine& world = machine::get();
  const std::lock_guard guard(world.lock);
  const auto failure = world.take_plan(way::status, {});
  const cl_int status = failure ? failure->value : world.wait_status;
  for (const auto& [handle, each] : world.objects)
    if (auto* const waiting = dynamic_cast<queue*>(each.get()))
      for (const queue::command& command : std::exchange(waiting->pending, {})) {
        if (status != 0)
          continue;
        if (command.final_status == 0)
          command.run();
        command.done->status = command.final_status;
      }
  return status;
}

cl_program clCreateProgramWithSource(cl_context context, cl_uint count, const char** strings,
                                     const size_t* lengths, cl_int* status) {
  return make<op::create_program_with_source, cl_program>(context, status,
                                                          {context, strings, lengths, nullptr, 0, count});
}
cl_program clCreateProgramWithBinary(cl_context context, cl_uint count, const cl_device_id* devices,
                                     const size_t* lengths, const unsigned char** binaries,
                                     cl_int* binary_status, cl_int* status) {
  return make<op::create_program_with_binary, cl_program>(
      context, status, {context, handles(devices), lengths, binaries, binary_status, nullptr, 0, count});
}
cl_program clCreateProgramWithBuiltInKernels(cl_context context, cl_uint count, const cl_device_id* devices,
                                             const char* names, cl_int* status) {
  return make<op::create_program_with_builtin_kernels, cl_program>(
      context, status, {context, handles(devices), names, nullptr, 0, count});
}
cl_program clCreateProgramWithIL(cl_context context, const void* il, size_t length, cl_int* status) {
  return make<op::create_program_with_il, cl_program>(context, status, {context, il, length, nullptr, 0});
}
cl_int clSetProgramSpecializationConstant(cl_program program, cl_uint id, size_t size, const void* value) {
  return run<op::set_program_specialization_constant>(program, {program, id, size, value, 0}).status;
}
cl_int clBuildProgram(cl_program program, cl_uint count, const cl_device_id* devices, const char* options,
                      void (*notify)(cl_program, void*), void* user_data) {
  return run<op::build_program>(program,
                                {program, handles(devices), options,
                                 reinterpret_cast<qv::program_callback>(notify), user_data, 0, count})
      .status;
}
cl_int clGetProgramBuildInfo(cl_program program, cl_device_id device, cl_program_build_info name, size_t size,
                             void* value, size_t* size_ret) {
  return ask<op::get_program_build_info>(program, device, name, size, value, size_ret);
}
void* clGetExtensionFunctionAddressForPlatform(cl_platform_id platform, const char* name) {
  return run<op::get_extension_function_address_for_platform>(nullptr, {platform, name, nullptr}).result;
}

cl_kernel clCreateKernel(cl_program program, const char* name, cl_int* status) {
  return make<op::create_kernel, cl_kernel>(program, status, {program, name, nullptr, 0});
}
cl_int clCreateKernelsInProgram(cl_program program, cl_uint count, cl_kernel* kernels, cl_uint* found) {
  return run<op::create_kernels_in_program>(program,
                                            {program, reinterpret_cast<void**>(kernels), found, 0, count})
      .status;
}
cl_int clSetKernelArg(cl_kernel kernel, cl_uint index, size_t size, const void* value) {
  return run<op::set_kernel_arg>(kernel, {kernel, size, value, 0, index}).status;
}
cl_int clGetKernelArgInfo(cl_kernel handle, cl_uint index, cl_kernel_arg_info name, size_t size, void* value,
                          size_t* size_ret) {
  const visit inside;
  const std::lock_guard guard(machine::get().lock);
  const auto asked = machine::get().find<kernel>(handle);
  if (!asked->parent->owner->options.tells_parameters)
    return CL_KERNEL_ARG_INFO_NOT_AVAILABLE;
  const auto& [ignored, kinds, types, size_of_groups] = asked->description;
  if (index >= types.size())
    return CL_INVALID_ARG_INDEX;
  const cl_uint qualifier = kinds[index] == argument_kind::local ? CL_KERNEL_ARG_ADDRESS_LOCAL
                            : kinds[index] == argument_kind::memory || types[index].find("image") == 0
                                ? CL_KERNEL_ARG_ADDRESS_GLOBAL
                                : CL_KERNEL_ARG_ADDRESS_PRIVATE;
  return answer(name == CL_KERNEL_ARG_TYPE_NAME ? text_answer(types[index]) : value_answer(qualifier), size,
                value, size_ret);
}
cl_int clGetKernelWorkGroupInfo(cl_kernel kernel, cl_device_id device, cl_kernel_work_group_info name,
                                size_t size, void* value, size_t* size_ret) {
  return ask<op::get_kernel_work_group_info>(kernel, device, name, size, value, size_ret);
}
