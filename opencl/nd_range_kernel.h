// The device command of each OpenCL version that launches a kernel.
#pragma once

#include "opencl/buffer_commands.h"
#include "opencl/opencl_kernel.h"

#include <memory>
#include <string>

namespace oryn::tarva::library::device_ir::opencl {

// The arguments are set on an OpenCL kernel of this command alone, so that launches of one kernel never share any.
template <version V>
class nd_range_kernel final : public opencl_version_command<V> {
public:
  // `launch` is what `operation` points to; it keeps the kernel, and the blocks of its arguments stay where they are until
  // the logical operation has ended.
  nd_range_kernel(std::shared_ptr<physical_ir::physical_operation> operation,
                  opencl_version_queues<V>& queues, const physical_ir::kernel& launch,
                  const opencl_version_kernel<V>& kernel)
      : opencl_version_command<V>(std::move(operation), queues), launch_(launch), kernel_(kernel) {}
  std::string to_string() const override {
    return this->class_text("nd_range_kernel") + library::to_string(launch_.get_range()) + "}";
  }
  void enqueue() override;

private:
  void set_arguments(skerv::opencl::kernel<V>& kernel) const;

  const physical_ir::kernel& launch_;
  const opencl_version_kernel<V>& kernel_;
};

} // namespace oryn::tarva::library::device_ir::opencl
