#include "capability/kept_objects.h"

#include "capability/opencl_call.h"
#include "capability/thread_end.h"

#include <atomic>
#include <utility>

namespace qv {
namespace {

// Who gets callbacks without user data; the implementations that call so have one device.
std::atomic<kept_objects*> without_user_data{nullptr};

constexpr std::array<cl_command_queue_properties, 2> queue_kinds{0, CL_QUEUE_PROFILING_ENABLE};

} // namespace

kept_objects::kept_objects(const opencl_functions& cl, cl_device_id device, const quirks& known)
    : cl_(cl), device_(device), known_(known) {
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

cl_int kept_objects::make_context() {
  cl_int status = CL_SUCCESS;
  context_ = make_or_refuse(status, cl_.create_context, nullptr, cl_uint{1}, &device_, &hand_on,
                            static_cast<void*>(this));
  return status;
}

cl_int kept_objects::make_queues() {
  cl_int status = CL_SUCCESS;
  for (std::size_t i = 0; i < queues_.size() && status == CL_SUCCESS; ++i)
    queues_[i] = make_queue(queue_kinds[i], status);
  return status;
}

cl_command_queue kept_objects::make_queue(cl_command_queue_properties bits, cl_int& status) const {
  const std::array<cl_queue_properties, 3> list{CL_QUEUE_PROPERTIES, bits, 0};
  if (cl_.create_command_queue_with_properties != nullptr)
    return make_or_refuse(status, cl_.create_command_queue_with_properties, context_, device_, list.data());
  return make_or_refuse(status, cl_.create_command_queue, context_, device_, bits);
}

cl_int kept_objects::make_builtin_program(const std::string& names) {
  cl_int status = CL_SUCCESS;
  names_ = names;
  program_ = make_or_refuse(status, cl_.create_program_with_builtin_kernels, context_, cl_uint{1}, &device_,
                            names_.c_str());
  return status;
}

template <typename Object>
Object kept_objects::take(Object& object, bool is_meant) {
  return is_meant ? std::exchange(object, nullptr) : nullptr;
}

cl_context kept_objects::take_context(context_notify notify, void* user_data) {
  const std::lock_guard guard(lock_);
  if (std::exchange(is_context_taken_, true))
    return nullptr;
  notify_ = notify;
  user_data_ = user_data;
  return context_;
}

cl_command_queue kept_objects::take_queue(cl_context context, cl_command_queue_properties bits) {
  const std::lock_guard guard(lock_);
  for (std::size_t i = 0; i < queues_.size(); ++i)
    if (queue_kinds[i] == bits)
      return take(queues_[i], is_context_taken_ && context == context_);
  return nullptr;
}

cl_program kept_objects::take_builtin_program(cl_context context, const char* names) {
  const std::lock_guard guard(lock_);
  return take(program_, is_context_taken_ && context == context_ && names == names_);
}

// Whoever has the context has its errors.
void CL_CALLBACK kept_objects::hand_on(const char* message, const void* private_info, std::size_t size,
                                       void* objects) {
  auto* const self = objects == nullptr ? without_user_data.load() : static_cast<kept_objects*>(objects);
  if (self == nullptr)
    return;
  std::unique_lock guard(self->lock_);
  const context_notify notify = self->notify_;
  void* const user_data = self->user_data_;
  guard.unlock();
  if (notify != nullptr)
    notify(message, private_info, size, user_data);
}

} // namespace qv
