// An OpenCL whose entry points all note how they were called and succeed.
#pragma once

#include "capability/dispatch.h"
#include "capability/kernels.h"
#include "capability/queues.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <thread>
#include <type_traits>
#include <vector>

namespace capability_test {

using cl = qv::opencl_functions;

// What tells one entry point from another, such as `id<&cl::finish>`.
template <auto Entry>
inline char tag = 0;
template <auto Entry>
constexpr const void* id = &tag<Entry>;

struct recorded {
  const void* function;
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

// Each entry point is one function.
template <auto Entry, typename Function>
struct recorder;
template <auto Entry, typename Result, typename... Parameters>
struct recorder<Entry, Result (*)(Parameters...)> {
  static Result call(Parameters... parameters) {
    calls.push_back({id<Entry>, {as_number(parameters)...}, std::this_thread::get_id()});
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

// Sets these entries.
template <auto... Entries>
qv::opencl_functions recording() {
  cl result;
  ((result.*Entries = &recorder<Entries, std::remove_reference_t<decltype(result.*Entries)>>::call), ...);
  return result;
}

inline qv::opencl_functions recording_functions() {
  return recording<&cl::get_device_info, &cl::create_context, &cl::get_context_info, &cl::release_context,
                   &cl::create_command_queue, &cl::create_command_queue_with_properties,
                   &cl::release_command_queue, &cl::finish, &cl::create_buffer, &cl::release_mem_object,
                   &cl::enqueue_read_buffer, &cl::enqueue_write_buffer, &cl::enqueue_copy_buffer,
                   &cl::enqueue_fill_buffer, &cl::enqueue_nd_range_kernel, &cl::get_event_info,
                   &cl::get_event_profiling_info, &cl::wait_for_events, &cl::release_event,
                   &cl::create_program_with_source, &cl::create_program_with_binary,
                   &cl::create_program_with_builtin_kernels, &cl::create_program_with_il,
                   &cl::set_program_specialization_constant, &cl::build_program, &cl::get_program_info,
                   &cl::get_program_build_info, &cl::release_program, &cl::get_extension_function_address,
                   &cl::create_kernel, &cl::create_kernels_in_program, &cl::set_kernel_arg,
                   &cl::get_kernel_info, &cl::get_kernel_work_group_info, &cl::release_kernel>();
}

// How a command ends under 2.2. It reaches OpenCL, or it fails; what is refused of work that is enqueued is told by its
// event.
template <qv::operation Op>
cl_int status_of(const qv::root_device& device, qv::record<Op> record, qv::record<Op>* out = nullptr) {
  calls.clear();
  void* event = nullptr;
  if constexpr (requires { record.event; })
    record.event = &event;
  EXPECT_EQ(qv::call_command({&device, &qv::commands_of_capability(6)}, qv::command_number(Op, 6), &record),
            QV_OK);
  if (out != nullptr)
    *out = record;
  cl_int status = record.status;
  if (auto* const made = static_cast<qv::event_object*>(event)) {
    EXPECT_EQ(status, CL_SUCCESS);
    status = made->failure();
    made->release(device.cl);
  }
  EXPECT_EQ(calls.empty(), status != CL_SUCCESS);
  return status;
}

// The objects of the library that commands are about. The kernel is one that is not kept for later use, since it was given
// an argument that OpenCL has not told of.
struct own_objects {
  explicit own_objects(const qv::root_device& device) {
    cl_int status = CL_SUCCESS;
    auto* const parent = new qv::program_object(as_made<cl_program>(), false);
    kernel = qv::kernel_object::make(device, *parent, "", status);
    kernel->set_argument(device, 9, 0, nullptr);
    *event->place_of_event() = as_made<cl_event>();
    calls.clear();
  }

  template <typename Handle>
  static Handle as_made() {
    return reinterpret_cast<Handle>(&made_object);
  }

  qv::queue_object* queue = new qv::queue_object(as_made<cl_command_queue>());
  qv::event_object* event = new qv::event_object;
  qv::program_object* program = new qv::program_object(as_made<cl_program>(), false);
  qv::kernel_object* kernel = nullptr;
};

} // namespace capability_test
