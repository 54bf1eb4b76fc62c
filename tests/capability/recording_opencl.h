// An OpenCL whose entry points all note how they were called and succeed.
#pragma once

#include "capability/opencl_functions.h"

#include <cstdint>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace capability_test {

struct recorded {
  std::string name;
  std::vector<std::uint64_t> arguments;
  std::thread::id thread;
};
inline std::vector<recorded> calls;

// What every create function gives out.
inline char made_object = 0;

template <typename T>
std::uint64_t as_number(T value) {
  if constexpr (std::is_pointer_v<T>)
    return reinterpret_cast<std::uint64_t>(value);
  else
    return static_cast<std::uint64_t>(value);
}

// Each entry point is one function, told from its like by the place of its name among them.
template <std::size_t Place, typename Function>
struct recorder;
template <std::size_t Place, typename Result, typename... Parameters>
struct recorder<Place, Result (*)(Parameters...)> {
  static inline const char* name = nullptr;

  static Result call(Parameters... parameters) {
    calls.push_back({name, {as_number(parameters)...}, std::this_thread::get_id()});
    if constexpr (std::is_pointer_v<Result>) {
      (succeed(parameters), ...);
      return reinterpret_cast<Result>(&made_object);
    } else {
      return CL_SUCCESS;
    }
  }

private:
  template <typename T>
  static void succeed(T parameter) {
    if constexpr (std::is_same_v<T, cl_int*>)
      *parameter = CL_SUCCESS;
  }
};

template <std::size_t Place, typename Function>
void record(Function& entry, const char* name) {
  recorder<Place, Function>::name = name;
  entry = &recorder<Place, Function>::call;
}

inline qv::opencl_functions recording_functions() {
  qv::opencl_functions cl;
  record<__COUNTER__>(cl.get_device_info, "clGetDeviceInfo");
  record<__COUNTER__>(cl.retain_device, "clRetainDevice");
  record<__COUNTER__>(cl.release_device, "clReleaseDevice");
  record<__COUNTER__>(cl.create_context, "clCreateContext");
  record<__COUNTER__>(cl.get_context_info, "clGetContextInfo");
  record<__COUNTER__>(cl.retain_context, "clRetainContext");
  record<__COUNTER__>(cl.release_context, "clReleaseContext");
  record<__COUNTER__>(cl.create_command_queue, "clCreateCommandQueue");
  record<__COUNTER__>(cl.create_command_queue_with_properties, "clCreateCommandQueueWithProperties");
  record<__COUNTER__>(cl.release_command_queue, "clReleaseCommandQueue");
  record<__COUNTER__>(cl.finish, "clFinish");
  record<__COUNTER__>(cl.create_buffer, "clCreateBuffer");
  record<__COUNTER__>(cl.release_mem_object, "clReleaseMemObject");
  record<__COUNTER__>(cl.enqueue_read_buffer, "clEnqueueReadBuffer");
  record<__COUNTER__>(cl.enqueue_write_buffer, "clEnqueueWriteBuffer");
  record<__COUNTER__>(cl.enqueue_copy_buffer, "clEnqueueCopyBuffer");
  record<__COUNTER__>(cl.enqueue_fill_buffer, "clEnqueueFillBuffer");
  record<__COUNTER__>(cl.enqueue_nd_range_kernel, "clEnqueueNDRangeKernel");
  record<__COUNTER__>(cl.get_event_info, "clGetEventInfo");
  record<__COUNTER__>(cl.get_event_profiling_info, "clGetEventProfilingInfo");
  record<__COUNTER__>(cl.retain_event, "clRetainEvent");
  record<__COUNTER__>(cl.release_event, "clReleaseEvent");
  record<__COUNTER__>(cl.create_program_with_source, "clCreateProgramWithSource");
  record<__COUNTER__>(cl.create_program_with_binary, "clCreateProgramWithBinary");
  record<__COUNTER__>(cl.create_program_with_builtin_kernels, "clCreateProgramWithBuiltInKernels");
  record<__COUNTER__>(cl.create_program_with_il, "clCreateProgramWithIL");
  record<__COUNTER__>(cl.set_program_specialization_constant, "clSetProgramSpecializationConstant");
  record<__COUNTER__>(cl.build_program, "clBuildProgram");
  record<__COUNTER__>(cl.get_program_info, "clGetProgramInfo");
  record<__COUNTER__>(cl.get_program_build_info, "clGetProgramBuildInfo");
  record<__COUNTER__>(cl.retain_program, "clRetainProgram");
  record<__COUNTER__>(cl.release_program, "clReleaseProgram");
  record<__COUNTER__>(cl.get_extension_function_address, "clGetExtensionFunctionAddressForPlatform");
  record<__COUNTER__>(cl.create_kernel, "clCreateKernel");
  record<__COUNTER__>(cl.create_kernels_in_program, "clCreateKernelsInProgram");
  record<__COUNTER__>(cl.set_kernel_arg, "clSetKernelArg");
  record<__COUNTER__>(cl.get_kernel_info, "clGetKernelInfo");
  record<__COUNTER__>(cl.get_kernel_work_group_info, "clGetKernelWorkGroupInfo");
  record<__COUNTER__>(cl.release_kernel, "clReleaseKernel");
  return cl;
}

} // namespace capability_test
