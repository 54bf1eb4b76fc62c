// Objects made while trying a device.
#pragma once

#include "capability/opencl_functions.h"
#include "capability/quirks.h"

#include <array>
#include <mutex>
#include <string>

namespace qv {

using context_notify = void(CL_CALLBACK*)(const char* message, const void* private_info, std::size_t size,
                                          void* user_data);

// A context of one device, two queues in it, one of which is for profiling, and the program of the device's built-in kernels. They are kept
// for the first who asks for the like, so that finding out costs nothing; what nobody has taken is released.
class kept_objects {
public:
  kept_objects(const opencl_functions& cl, cl_device_id device, const quirks& known);
  ~kept_objects();
  kept_objects(const kept_objects&) = delete;
  kept_objects& operator=(const kept_objects&) = delete;

  // A status. The context comes first.
  cl_int make_context();
  cl_int make_queues();
  cl_int make_builtin_program(const std::string& names);

  // Null if there is none, or none any more. From then on the object is the caller's. Errors of the context are told by
  // `notify`, which may be null.
  cl_context take_context(context_notify notify, void* user_data);
  cl_command_queue take_queue(cl_context context, cl_command_queue_properties bits);
  cl_program take_builtin_program(cl_context context, const char* names);

private:
  static void CL_CALLBACK hand_on(const char* message, const void* private_info, std::size_t size,
                                  void* objects);

  cl_command_queue make_queue(cl_command_queue_properties bits, cl_int& status) const;
  template <typename Object>
  Object take(Object& object, bool is_meant);

  const opencl_functions cl_;
  const cl_device_id device_;
  const quirks known_;
  std::string names_;

  std::mutex lock_;
  cl_context context_ = nullptr;
  bool is_context_taken_ = false;
  std::array<cl_command_queue, 2> queues_{};
  cl_program program_ = nullptr;
  context_notify notify_ = nullptr;
  void* user_data_ = nullptr;
};

} // namespace qv
