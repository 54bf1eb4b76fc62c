#pragma once

#include "device_ir/opencl/opencl_device_command.h"
#include "ir/nd_range.h"
#include "objects/kernel_arguments.h"
#include "objects/library_kernel.h"

namespace oryn::tarva::library::device_ir::opencl {

// A kernel launch. The arguments are set on a fresh kernel of this command alone.
template <version V>
class nd_range_kernel final : public opencl_device_command<V> {
public:
  nd_range_kernel(std::shared_ptr<physical_ir::physical_operation> operation,
                  std::shared_ptr<library_kernel> kernel, kernel_argument_capture arguments,
                  const nd_range& range)
      : opencl_device_command<V>(std::move(operation)), kernel_(std::move(kernel)),
        arguments_(std::move(arguments)), range_(range) {}
  std::string to_string() const override;
  skerv::opencl::event<V> enqueue(dispatch_queue<V>& queue, std::uint32_t wait_count,
                                  void* const* wait_list) override;

private:
  std::shared_ptr<library_kernel> kernel_;
  kernel_argument_capture arguments_;
  nd_range range_;
};

} // namespace oryn::tarva::library::device_ir::opencl
