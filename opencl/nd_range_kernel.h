#pragma once

#include "opencl/opencl_device_command.h"
#include "ir/physical_operations.h"

namespace oryn::tarva::library::device_ir::opencl {

// A kernel launch. The arguments are set on a fresh kernel of this command alone.
template <version V>
class nd_range_kernel final : public opencl_device_command<V> {
public:
  // `step` is what `operation` points to.
  nd_range_kernel(std::shared_ptr<physical_ir::physical_operation> operation, const physical_ir::kernel& step)
      : opencl_device_command<V>(std::move(operation)), step_(step) {}
  std::string to_string() const override;
  skerv::opencl::event<V> enqueue(dispatch_queue<V>& queue, std::uint32_t wait_count,
                                  void* const* wait_list) override;

private:
  const physical_ir::kernel& step_;
};

} // namespace oryn::tarva::library::device_ir::opencl
