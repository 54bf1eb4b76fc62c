#pragma once

#include <memory>
#include <utility>

namespace oryn::tarva::library {

namespace logical_ir {
class logical_operation;
}

// The user's hold on one logical operation; all state of completion lives in the operation.
class library_future {
public:
  explicit library_future(std::shared_ptr<logical_ir::logical_operation> operation)
      : operation_(std::move(operation)) {}
  virtual ~library_future() = default;

  std::shared_ptr<logical_ir::logical_operation> get_operation() const { return operation_; }

private:
  std::shared_ptr<logical_ir::logical_operation> operation_;
};

} // namespace oryn::tarva::library
