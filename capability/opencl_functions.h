// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The entry points of the machine's OpenCL loader that the commands need, and how they are called.
//
// No OpenCL is linked: the loader is opened when the machine is first looked at. The functions are a table, so that a
// platform of an older version, a device that is lost, and a test can each have a table of their own.
//
// Tables are plain values. Whoever holds one may call through it from any thread, as OpenCL itself allows. A member is null
// if the loader, or the platform, does not have the entry point; the calls below answer for those.
#pragma once

#define CL_TARGET_OPENCL_VERSION 300
#define CL_USE_DEPRECATED_OPENCL_1_2_APIS
#include <CL/cl.h>

#include "capability/opencl_version.h"

#include <new>
#include <optional>
#include <utility>

namespace qv {

inline constexpr const char* opencl_loader_name = "libOpenCL.so.1";

struct opencl_functions {
  // What there is.
  decltype(&::clGetPlatformIDs) get_platform_ids = nullptr;
  decltype(&::clGetPlatformInfo) get_platform_info = nullptr;
  decltype(&::clGetDeviceIDs) get_device_ids = nullptr;
  decltype(&::clGetDeviceInfo) get_device_info = nullptr;

  // Contexts and queues.
  decltype(&::clCreateContext) create_context = nullptr;
  decltype(&::clGetContextInfo) get_context_info = nullptr;
  decltype(&::clReleaseContext) release_context = nullptr;
  decltype(&::clCreateCommandQueue) create_command_queue = nullptr;
  decltype(&::clCreateCommandQueueWithProperties) create_command_queue_with_properties = nullptr;
  decltype(&::clReleaseCommandQueue) release_command_queue = nullptr;
  decltype(&::clFinish) finish = nullptr;

  // Buffers and work.
  decltype(&::clCreateBuffer) create_buffer = nullptr;
  decltype(&::clReleaseMemObject) release_mem_object = nullptr;
  decltype(&::clEnqueueReadBuffer) enqueue_read_buffer = nullptr;
  decltype(&::clEnqueueWriteBuffer) enqueue_write_buffer = nullptr;
  decltype(&::clEnqueueCopyBuffer) enqueue_copy_buffer = nullptr;
  decltype(&::clEnqueueFillBuffer) enqueue_fill_buffer = nullptr;
  decltype(&::clEnqueueNDRangeKernel) enqueue_nd_range_kernel = nullptr;
  decltype(&::clWaitForEvents) wait_for_events = nullptr;
  decltype(&::clGetEventInfo) get_event_info = nullptr;
  decltype(&::clGetEventProfilingInfo) get_event_profiling_info = nullptr;
  decltype(&::clReleaseEvent) release_event = nullptr;

  // Programs.
  decltype(&::clCreateProgramWithSource) create_program_with_source = nullptr;
  decltype(&::clCreateProgramWithBinary) create_program_with_binary = nullptr;
  decltype(&::clCreateProgramWithBuiltInKernels) create_program_with_builtin_kernels = nullptr;
  decltype(&::clCreateProgramWithIL) create_program_with_il = nullptr;
  decltype(&::clSetProgramSpecializationConstant) set_program_specialization_constant = nullptr;
  decltype(&::clBuildProgram) build_program = nullptr;
  decltype(&::clGetProgramInfo) get_program_info = nullptr;
  decltype(&::clGetProgramBuildInfo) get_program_build_info = nullptr;
  decltype(&::clReleaseProgram) release_program = nullptr;
  decltype(&::clGetExtensionFunctionAddressForPlatform) get_extension_function_address = nullptr;

  // Kernels.
  decltype(&::clCreateKernel) create_kernel = nullptr;
  decltype(&::clCreateKernelsInProgram) create_kernels_in_program = nullptr;
  decltype(&::clSetKernelArg) set_kernel_arg = nullptr;
  decltype(&::clGetKernelInfo) get_kernel_info = nullptr;
  decltype(&::clGetKernelArgInfo) get_kernel_arg_info = nullptr;
  decltype(&::clGetKernelWorkGroupInfo) get_kernel_work_group_info = nullptr;
  decltype(&::clReleaseKernel) release_kernel = nullptr;
};

// Loads `library`, for good, and resolves everything at once: later, in a destructor, the dynamic loader may hold its lock.
// Nothing if there is no such library; throws if it is there and cannot be loaded.
std::optional<opencl_functions> load_opencl_functions(const char* library);

// `functions` without those that a platform of `version` does not have. The loader has them all, but would
// call through an empty entry of the platform's table.
opencl_functions functions_of_platform(opencl_functions functions, opencl_version version);

// Calls that always come back with a status. Implementations written in C++ throw through the C interface at times, and
// nothing thrown may pass the commands.

// The status for what was thrown. To be called in a handler.
inline cl_int status_of_exception() noexcept {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return CL_OUT_OF_HOST_MEMORY;
  } catch (...) {
    return CL_OUT_OF_RESOURCES;
  }
}

// The status of something that has failed, also where an implementation fails with a status that is no failure.
inline cl_int as_failure(cl_int status) noexcept {
  return status < 0 ? status : CL_OUT_OF_RESOURCES;
}

// Calls an entry point, or answers as OpenCL does for what a device does not support.
template <class... Parameters, class... Arguments>
cl_int call_or_refuse(cl_int (*function)(Parameters...), Arguments&&... arguments) noexcept {
  if (function == nullptr)
    return CL_INVALID_OPERATION;
  try {
    return function(std::forward<Arguments>(arguments)...);
  } catch (...) {
    return status_of_exception();
  }
}

// The same for entry points that give out an object, and the status through their last parameter. Null if that is no
// success, whatever was given out; and null with success, which some implementations answer, is a failure.
template <class Object, class... Parameters, class... Arguments>
Object make_or_refuse(cl_int& status, Object (*function)(Parameters...), Arguments&&... arguments) noexcept {
  status = CL_INVALID_OPERATION;
  if (function == nullptr)
    return nullptr;
  try {
    Object const made = function(std::forward<Arguments>(arguments)..., &status);
    if (made == nullptr && status == CL_SUCCESS)
      status = CL_OUT_OF_RESOURCES;
    return status == CL_SUCCESS ? made : nullptr;
  } catch (...) {
    status = status_of_exception();
    return nullptr;
  }
}

} // namespace qv
