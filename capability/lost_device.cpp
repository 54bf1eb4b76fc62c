#include "capability/lost_device.h"

#include "capability/opencl_call.h"
#include "capability/root_device.h"

#include <cstdint>
#include <type_traits>

namespace qv {
namespace {

// An entry point that fails, and one that does nothing.
template <typename Function>
struct stand_in;
template <typename Result, typename... Parameters>
struct stand_in<Result (*)(Parameters...)> {
  static Result fail(Parameters... parameters) {
    (tell(parameters), ...);
    if constexpr (std::is_pointer_v<Result>)
      return nullptr;
    else
      return CL_DEVICE_NOT_AVAILABLE;
  }
  static Result succeed(Parameters...) { return CL_SUCCESS; }

private:
  template <typename Parameter>
  static void tell(Parameter parameter) {
    if constexpr (std::is_pointer_v<Result> && std::is_same_v<Parameter, cl_int*>)
      if (parameter != nullptr)
        *parameter = CL_DEVICE_NOT_AVAILABLE;
  }
};

template <typename... Functions>
void let_fail(Functions&... functions) {
  ((functions = functions == nullptr ? nullptr : &stand_in<Functions>::fail), ...);
}

template <typename... Functions>
void let_succeed(Functions&... functions) {
  ((functions = &stand_in<Functions>::succeed), ...);
}

} // namespace

bool device_watch::is_lost(const root_device& device) noexcept {
  std::uint64_t is_available = 0; // wider than the answer
  const cl_int status = call_or_refuse(device.cl.get_device_info, device.id,
                                       cl_device_info{CL_DEVICE_AVAILABLE}, sizeof is_available,
                                       static_cast<void*>(&is_available), static_cast<std::size_t*>(nullptr));
  const bool is_lost = status == CL_DEVICE_NOT_AVAILABLE || (status == CL_SUCCESS && is_available == 0);
  if (!is_lost)
    is_suspected_.store(false, std::memory_order_relaxed);
  return is_lost;
}

opencl_functions functions_of_lost_device(opencl_functions functions) {
  let_fail(functions.create_context, functions.create_command_queue,
           functions.create_command_queue_with_properties, functions.create_buffer,
           functions.enqueue_read_buffer, functions.enqueue_write_buffer, functions.enqueue_copy_buffer,
           functions.enqueue_fill_buffer, functions.enqueue_nd_range_kernel,
           functions.create_program_with_source, functions.create_program_with_binary,
           functions.create_program_with_builtin_kernels, functions.create_program_with_il,
           functions.set_program_specialization_constant, functions.build_program, functions.create_kernel,
           functions.create_kernels_in_program, functions.set_kernel_arg);
  let_succeed(functions.release_command_queue, functions.release_mem_object, functions.release_event,
              functions.release_program, functions.release_kernel, functions.release_context);
  return functions;
}

const root_device& as_it_is_now(const root_device& device) noexcept {
  const bool is_lost =
      device.watch != nullptr && device.watch->is_suspected() && device.watch->is_lost(device);
  return is_lost ? *device.when_lost : device;
}

} // namespace qv
