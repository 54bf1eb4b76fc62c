// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "capability/root_device.h"

#include "capability/opencl_queries.h"

#include <cstring>
#include <dlfcn.h>
#include <type_traits>
#include <utility>

namespace qv {
namespace {

// For each type of entry point, one that fails and one that does nothing. Objects come with a place for the status.
template <class Function>
struct stand_in;
template <class Result, class... Parameters>
struct stand_in<Result (*)(Parameters...)> {
  static Result fail(Parameters... parameters) {
    (put_status(parameters), ...);
    if constexpr (std::is_pointer_v<Result>)
      return nullptr;
    else
      return CL_DEVICE_NOT_AVAILABLE;
  }
  static Result succeed(Parameters...) { return CL_SUCCESS; }

private:
  template <class Parameter>
  static void put_status(Parameter parameter) {
    if constexpr (std::is_pointer_v<Result> && std::is_same_v<Parameter, cl_int*>)
      if (parameter != nullptr)
        *parameter = CL_DEVICE_NOT_AVAILABLE;
  }
};

template <class... Functions>
void let_fail(Functions&... functions) {
  ((functions = functions == nullptr ? nullptr : &stand_in<Functions>::fail), ...);
}

template <class... Functions>
void let_succeed(Functions&... functions) {
  ((functions = &stand_in<Functions>::succeed), ...);
}

// `functions` without what a lost device would have to do: all of that fails with CL_DEVICE_NOT_AVAILABLE, save to let go
// of objects. Questions are the implementation's to answer, and so is when a queue is finished: should the device come back,
// work that is still under way must not write into memory that was given up.
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

// Plain, so that it can be read when the thread's objects are gone.
thread_local bool have_ended = false;

struct end_marker {
  bool is_registered = false;
  ~end_marker() { have_ended = true; }
};
thread_local end_marker marker;

} // namespace

void device_answers::add_text(cl_device_info name, std::string text) {
  const std::size_t size = text.size() + 1;
  add(name, {std::move(text), size});
}

void device_answers::add_number(cl_device_info name, cl_uint number) {
  std::string bytes(sizeof number, '\0');
  std::memcpy(bytes.data(), &number, sizeof number);
  add(name, {std::move(bytes), sizeof number});
}

void device_answers::add(cl_device_info name, answer added) {
  answers_.push_back(std::move(added));
  places_.at(name - first_name) = static_cast<std::uint8_t>(answers_.size());
}

bool is_not_there(const root_device& device) noexcept {
  std::uint64_t is_available = 0; // wider than the answer
  const cl_int status = ask_value(is_available, CL_DEVICE_AVAILABLE, device.cl.get_device_info, device.id);
  return status == CL_DEVICE_NOT_AVAILABLE || (status == CL_SUCCESS && is_available == 0);
}

bool device_watch::is_lost(const root_device& device) noexcept {
  const bool is_lost = is_not_there(device);
  if (!is_lost)
    is_suspected.store(false, std::memory_order_relaxed);
  return is_lost;
}

void watch(root_device& device) {
  root_device lost = device;
  lost.cl = functions_of_lost_device(device.cl);
  lost.kept = nullptr; // what is kept is for the living
  device.watch = std::make_shared<device_watch>();
  device.lost_stand_in = std::make_shared<const root_device>(std::move(lost));
}

void prepare_for_thread_ends() noexcept {
  Dl_info here;
  if (dladdr(reinterpret_cast<void*>(&prepare_for_thread_ends), &here) != 0)
    dlopen(here.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

bool thread_locals_have_ended() noexcept {
  if (!have_ended)
    marker.is_registered = true; // the first touch registers the destructor
  return have_ended;
}

} // namespace qv
