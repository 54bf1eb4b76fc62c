#pragma once

#include <memory>

namespace oryn::tarva::library {

class library_memory;

namespace logical_ir {
class logical_operation;
}

// Decides where and how a logical operation runs.
class scheduler : public std::enable_shared_from_this<scheduler> {
public:
  scheduler() = default;
  virtual ~scheduler() = default;
  scheduler(const scheduler&) = delete;
  scheduler& operator=(const scheduler&) = delete;

  // Runs the operation. Throws what is wrong with the request; a failure of the work itself stays in the
  // operation.
  virtual void submit(const std::shared_ptr<logical_ir::logical_operation>& operation) = 0;
  // Gives up the object's content at once, where an operation that would free it could not be run.
  virtual void forget(const std::shared_ptr<library_memory>& memory) noexcept = 0;
  // Called before a thread begins to wait for the operation.
  virtual void prepare_wait(const std::shared_ptr<logical_ir::logical_operation>& operation) = 0;
};

} // namespace oryn::tarva::library
