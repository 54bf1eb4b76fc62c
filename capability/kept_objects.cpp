// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "capability/kept_objects.h"

#include <atomic>
#include <utility>

namespace qv {
namespace {

// Who gets callbacks without user data; the implementations that call so have one device.
std::atomic<kept_objects*> without_user_data{nullptr};

// Those that the library above asks for first.
constexpr std::array<cl_command_queue_properties, 2> queue_kinds{0, CL_QUEUE_PROFILING_ENABLE};

} // namespace

kept_objects::kept_objects(const root_device& device)
    : cl_(device.cl), device_(device.id), known_(device.quirks) {
  if (known_.loses_user_data_of_contexts)
    without_user_data = this;
  if (!known_.uses_ended_thread_locals)
    return;
  prepare_for_thread_ends();
  static_cast<void>(thread_locals_have_ended()); // so that the end of this thread is noticed
}

kept_objects::~kept_objects() {
  kept_objects* self = this;
  without_user_data.compare_exchange_strong(self, nullptr);
  // At the end of the process the implementation may be half gone; then it keeps what it has.
  if (known_.uses_ended_thread_locals && thread_locals_have_ended())
    return;
  if (program_ != nullptr)
    static_cast<void>(call_or_refuse(cl_.release_program, program_));
  for (cl_command_queue queue : queues_)
    if (queue != nullptr)
      static_cast<void>(call_or_refuse(cl_.release_command_queue, queue));
  if (context_ != nullptr && !is_context_taken_)
    static_cast<void>(call_or_refuse(cl_.release_context, context_));
}

cl_context kept_objects::context() {
  const oryn::lock_guard guard(lock_);
  return context_;
}

cl_int kept_objects::make_context() {
  cl_int status = CL_SUCCESS;
  cl_context const made = make_or_refuse(status, cl_.create_context, nullptr, cl_uint{1}, &device_,
                                         &hand_on_error, static_cast<void*>(this));
  const oryn::lock_guard guard(lock_);
  context_ = made;
  return status;
}

cl_int kept_objects::make_queues() {
  cl_context const parent = context();
  cl_int status = CL_SUCCESS;
  for (std::size_t i = 0; i < queue_kinds.size() && status == CL_SUCCESS; ++i) {
    cl_command_queue const made = make_queue(parent, queue_kinds[i], status);
    const oryn::lock_guard guard(lock_);
    queues_[i] = made;
  }
  return status;
}

// By the newer function where the platform has it, as a device of 2.0 and later is asked by the commands.
cl_command_queue kept_objects::make_queue(cl_context context, cl_command_queue_properties bits,
                                          cl_int& status) const {
  const std::array<cl_queue_properties, 3> list{CL_QUEUE_PROPERTIES, bits, 0};
  if (cl_.create_command_queue_with_properties != nullptr)
    return make_or_refuse(status, cl_.create_command_queue_with_properties, context, device_, list.data());
  return make_or_refuse(status, cl_.create_command_queue, context, device_, bits);
}

cl_int kept_objects::make_builtin_program(const std::string& names) {
  cl_int status = CL_SUCCESS;
  std::string copy = names; // whatever throws comes before what would have to be released
  cl_program const made = make_or_refuse(status, cl_.create_program_with_builtin_kernels, context(),
                                         cl_uint{1}, &device_, names.c_str());
  const oryn::lock_guard guard(lock_);
  program_ = made;
  program_names_ = std::move(copy);
  return status;
}

template <class Object>
Object kept_objects::take(Object& object, cl_context context, bool is_wanted) {
  return is_wanted && is_context_taken_ && context == context_ ? std::exchange(object, nullptr) : nullptr;
}

cl_context kept_objects::take_context(context_notify notify, void* user_data) {
  const oryn::lock_guard guard(lock_);
  if (std::exchange(is_context_taken_, true))
    return nullptr;
  notify_ = notify;
  user_data_ = user_data;
  return context_;
}

cl_command_queue kept_objects::take_queue(cl_context context, cl_command_queue_properties bits) {
  const oryn::lock_guard guard(lock_);
  for (std::size_t i = 0; i < queues_.size(); ++i)
    if (queue_kinds[i] == bits)
      return take(queues_[i], context, true);
  return nullptr;
}

cl_program kept_objects::take_builtin_program(cl_context context, const char* names) {
  const oryn::lock_guard guard(lock_);
  return take(program_, context, names == program_names_);
}

// The callback that the context was made with. Whoever has the context has its errors.
void CL_CALLBACK kept_objects::hand_on_error(const char* message, const void* private_info, std::size_t size,
                                             void* objects) {
  auto* const self = objects == nullptr ? without_user_data.load() : static_cast<kept_objects*>(objects);
  if (self == nullptr)
    return;
  oryn::unique_lock guard(self->lock_);
  const context_notify notify = self->notify_;
  void* const user_data = self->user_data_;
  guard.unlock(); // the callee may take what is kept here
  if (notify != nullptr)
    notify(message, private_info, size, user_data);
}

} // namespace qv
