// The entry points of the machine's OpenCL loader that the commands need.
#pragma once

#define CL_TARGET_OPENCL_VERSION 300
#define CL_USE_DEPRECATED_OPENCL_1_2_APIS
#include <CL/cl.h>

#include "capability/opencl_version.h"

#include <optional>

namespace qv {

inline constexpr const char* opencl_loader_name = "libOpenCL.so.1";

// A null member is an entry point that the loader, or the platform, does not have.
struct opencl_functions {
  decltype(&::clGetPlatformIDs) get_platform_ids = nullptr;
  decltype(&::clGetPlatformInfo) get_platform_info = nullptr;
  decltype(&::clGetDeviceIDs) get_device_ids = nullptr;
  decltype(&::clGetDeviceInfo) get_device_info = nullptr;

  decltype(&::clCreateContext) create_context = nullptr;
  decltype(&::clGetContextInfo) get_context_info = nullptr;
  decltype(&::clReleaseContext) release_context = nullptr;

  decltype(&::clCreateCommandQueue) create_command_queue = nullptr;
  decltype(&::clCreateCommandQueueWithProperties) create_command_queue_with_properties = nullptr;
  decltype(&::clReleaseCommandQueue) release_command_queue = nullptr;
  decltype(&::clFinish) finish = nullptr;

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

  decltype(&::clCreateKernel) create_kernel = nullptr;
  decltype(&::clCreateKernelsInProgram) create_kernels_in_program = nullptr;
  decltype(&::clSetKernelArg) set_kernel_arg = nullptr;
  decltype(&::clGetKernelInfo) get_kernel_info = nullptr;
  decltype(&::clGetKernelArgInfo) get_kernel_arg_info = nullptr;
  decltype(&::clGetKernelWorkGroupInfo) get_kernel_work_group_info = nullptr;
  decltype(&::clReleaseKernel) release_kernel = nullptr;
};

// Loads `library`, for good, and resolves everything at once: later the dynamic loader may hold its lock.
// Nothing if there is no such library; throws if it is there and cannot be loaded.
std::optional<opencl_functions> load_opencl_functions(const char* library);

// `functions` without those that a platform of `version` does not have. The loader has them all, but would
// call through an empty entry of the platform's table.
opencl_functions functions_of_platform(opencl_functions functions, opencl_version version);

} // namespace qv
