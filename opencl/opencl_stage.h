#pragma once

#include "access/opencl/context.h"
#include "opencl/opencl_device_command.h"
#include "opencl/work_list.h"

#include <exception>

namespace oryn::tarva::library::device_ir::opencl {

// Runs the OpenCL commands of one device, on a queue with profiling and one without.
template <version V>
class opencl_stage {
public:
  opencl_stage(const skerv::opencl::context<V>& context, const skerv::opencl::device<V>& device)
      : queue_(context, device, false, false), profiling_queue_(context, device, false, true) {}

  // Enqueues the OpenCL commands of this version that the list starts with, and waits for their end.
  void run(work_list<V>& list);

private:
  void enqueue(work_item<V>& item, dispatch_queue<V>& queue);
  std::exception_ptr finish(const device_command& first);
  void end(work_item<V>& item, const std::exception_ptr& unfinished);

  dispatch_queue<V> queue_;
  dispatch_queue<V> profiling_queue_;
};

} // namespace oryn::tarva::library::device_ir::opencl
