// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Objects made while a device was tried.
//
// That a device says that it is there does not mean that it works. So each is tried before it is offered, and what that has
// made is kept for the first who asks for the like, so that finding out costs nothing in the end.
#pragma once

#include "base/thread_annotations.h"
#include "capability/root_device.h"

#include <array>
#include <string>

namespace qv {

using context_notify = void(CL_CALLBACK*)(const char* message, const void* private_info, std::size_t size,
                                          void* user_data);

// A context of one device, two queues in it, one of which is for profiling, and the program of the device's built-in
// kernels.
//
// The make_ functions are called by one thread, while the machine is looked at; the take_ functions by the commands, from any
// thread. Each object can be taken once and is the taker's from then on; the destructor releases what nobody has taken. The
// queues and the program belong to the context and go to whoever has that.
//
// `lock_` guards what can be taken and who is told of errors. It is never held while OpenCL is called, since OpenCL may call
// back from within.
class kept_objects {
public:
  explicit kept_objects(const root_device& device);
  ~kept_objects();
  kept_objects(const kept_objects&) = delete;
  kept_objects& operator=(const kept_objects&) = delete;

  // A status. The context comes first; without it the others fail.
  cl_int make_context() TARVA_EXCLUDES(lock_);
  cl_int make_queues() TARVA_EXCLUDES(lock_);
  cl_int make_builtin_program(const std::string& names) TARVA_EXCLUDES(lock_);

  // Null if there is none, or none any more. Errors of the context are told to `notify`, which may be null.
  cl_context take_context(context_notify notify, void* user_data) TARVA_EXCLUDES(lock_);
  cl_command_queue take_queue(cl_context context, cl_command_queue_properties bits) TARVA_EXCLUDES(lock_);
  cl_program take_builtin_program(cl_context context, const char* names) TARVA_EXCLUDES(lock_);

private:
  static void CL_CALLBACK hand_on_error(const char* message, const void* private_info, std::size_t size,
                                        void* objects);

  cl_context context() TARVA_EXCLUDES(lock_);
  cl_command_queue make_queue(cl_context context, cl_command_queue_properties bits, cl_int& status) const;
  template <class Object>
  Object take(Object& object, cl_context context, bool is_wanted) TARVA_REQUIRES(lock_);

  // Copies, since a root device may still be moved when it is tried.
  const opencl_functions cl_;
  const cl_device_id device_;
  const quirks known_;

  oryn::mutex lock_;
  cl_context
      context_ TARVA_GUARDED_BY(lock_) = nullptr; // stays when it was taken, to tell its queues from others
  bool is_context_taken_ TARVA_GUARDED_BY(lock_) = false;
  std::array<cl_command_queue, 2> queues_ TARVA_GUARDED_BY(lock_){};
  cl_program program_ TARVA_GUARDED_BY(lock_) = nullptr;
  std::string program_names_ TARVA_GUARDED_BY(lock_);
  context_notify notify_ TARVA_GUARDED_BY(lock_) = nullptr;
  void* user_data_ TARVA_GUARDED_BY(lock_) = nullptr;
};

} // namespace qv
