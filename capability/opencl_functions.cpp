// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The table of entry points, filled from the loader's library and thinned by a platform's version.
#include "capability/opencl_functions.h"

#include "capability/environment.h"

#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <stdexcept>
#include <string>

namespace qv {
namespace {

// A name that the library lacks leaves its place null: loaders of older versions have fewer entry points.
struct resolver {
  void* library;

  template <class Function>
  void operator()(const char* name, Function*& function) const {
    function = reinterpret_cast<Function*>(dlsym(library, name));
  }
};

void resolve_devices_and_queues(const resolver& resolve, opencl_functions& functions) {
  resolve("clGetPlatformIDs", functions.get_platform_ids);
  resolve("clGetPlatformInfo", functions.get_platform_info);
  resolve("clGetDeviceIDs", functions.get_device_ids);
  resolve("clGetDeviceInfo", functions.get_device_info);
  resolve("clCreateContext", functions.create_context);
  resolve("clGetContextInfo", functions.get_context_info);
  resolve("clReleaseContext", functions.release_context);
  resolve("clCreateCommandQueue", functions.create_command_queue);
  resolve("clCreateCommandQueueWithProperties", functions.create_command_queue_with_properties);
  resolve("clReleaseCommandQueue", functions.release_command_queue);
  resolve("clFinish", functions.finish);
}

void resolve_memory_and_events(const resolver& resolve, opencl_functions& functions) {
  resolve("clCreateBuffer", functions.create_buffer);
  resolve("clReleaseMemObject", functions.release_mem_object);
  resolve("clEnqueueReadBuffer", functions.enqueue_read_buffer);
  resolve("clEnqueueWriteBuffer", functions.enqueue_write_buffer);
  resolve("clEnqueueCopyBuffer", functions.enqueue_copy_buffer);
  resolve("clEnqueueFillBuffer", functions.enqueue_fill_buffer);
  resolve("clEnqueueNDRangeKernel", functions.enqueue_nd_range_kernel);
  resolve("clWaitForEvents", functions.wait_for_events);
  resolve("clGetEventInfo", functions.get_event_info);
  resolve("clGetEventProfilingInfo", functions.get_event_profiling_info);
  resolve("clReleaseEvent", functions.release_event);
}

void resolve_programs_and_kernels(const resolver& resolve, opencl_functions& functions) {
  resolve("clCreateProgramWithSource", functions.create_program_with_source);
  resolve("clCreateProgramWithBinary", functions.create_program_with_binary);
  resolve("clCreateProgramWithBuiltInKernels", functions.create_program_with_builtin_kernels);
  resolve("clCreateProgramWithIL", functions.create_program_with_il);
  resolve("clSetProgramSpecializationConstant", functions.set_program_specialization_constant);
  resolve("clBuildProgram", functions.build_program);
  resolve("clGetProgramInfo", functions.get_program_info);
  resolve("clGetProgramBuildInfo", functions.get_program_build_info);
  resolve("clReleaseProgram", functions.release_program);
  resolve("clGetExtensionFunctionAddressForPlatform", functions.get_extension_function_address);
  resolve("clCreateKernel", functions.create_kernel);
  resolve("clCreateKernelsInProgram", functions.create_kernels_in_program);
  resolve("clSetKernelArg", functions.set_kernel_arg);
  resolve("clGetKernelInfo", functions.get_kernel_info);
  resolve("clGetKernelArgInfo", functions.get_kernel_arg_info);
  resolve("clGetKernelWorkGroupInfo", functions.get_kernel_work_group_info);
  resolve("clReleaseKernel", functions.release_kernel);
}

} // namespace

std::optional<opencl_functions> load_opencl_functions(const char* library) {
  // Local: in the global scope some implementations would bind their own entry points to the loader's, which calls them, and
  // so on without end.
  void* handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    const char* const reason = dlerror();
    const std::string text = reason == nullptr ? "" : reason;
    log_line({"no OpenCL: ", text});
    // A machine without OpenCL is nothing unusual; one whose OpenCL is broken, or has found no memory, is not to be taken for
    // it. The dynamic loader tells the one from the other by its text alone.
    if (text.find(std::strerror(ENOENT)) == std::string::npos)
      throw std::runtime_error(text);
    return std::nullopt;
  }

  opencl_functions functions;
  const resolver resolve{handle};
  resolve_devices_and_queues(resolve, functions);
  resolve_memory_and_events(resolve, functions);
  resolve_programs_and_kernels(resolve, functions);
  return functions;
}

// One block a version that brought something.
opencl_functions functions_of_platform(opencl_functions functions, opencl_version version) {
  if (version < opencl_version{1, 2}) {
    functions.enqueue_fill_buffer = nullptr;
    functions.create_program_with_builtin_kernels = nullptr;
    functions.get_extension_function_address = nullptr;
    functions.get_kernel_arg_info = nullptr;
  }
  if (version < opencl_version{2, 0})
    functions.create_command_queue_with_properties = nullptr;
  if (version < opencl_version{2, 1})
    functions.create_program_with_il = nullptr;
  if (version < opencl_version{2, 2})
    functions.set_program_specialization_constant = nullptr;
  return functions;
}

} // namespace qv
