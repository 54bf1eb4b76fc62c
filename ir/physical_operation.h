#pragma once

#include "base/completion_state.h"
#include "ir/logical_operation.h"
#include "ir/physical_operation_visitor.h"
#include "objects/library_device.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <string>

namespace oryn::tarva::library::physical_ir {

// One step with a decided place. Counts its device commands down and passes completion, errors and times on
// to its logical operation.
class physical_operation {
public:
  using visitor = operation_visitor;

  virtual ~physical_operation();
  physical_operation(const physical_operation&) = delete;
  physical_operation& operator=(const physical_operation&) = delete;

  virtual std::string to_string() const = 0;
  virtual void accept(visitor& visitor) const { visitor.visit_unknown(); }

  // The device on whose dispatcher this step runs. Never changes.
  const std::shared_ptr<library_device>& get_device() const { return device_; }
  const std::shared_ptr<logical_ir::logical_operation>& get_logical_operation() const {
    return logical_operation_;
  }
  bool has_succeeded() const { return state_.has_succeeded(); }

  void set_device_command_count(std::uint64_t count) { state_.set_part_count(count); }
  void set_submitted() { state_.set_submitted(); }
  void device_command_complete();
  void set_error(const std::exception_ptr& error);
  void add_elapsed_time(std::uint64_t nanoseconds);
  void enable_profiling() { state_.enable_profiling(); }

protected:
  physical_operation(std::shared_ptr<logical_ir::logical_operation> logical_operation,
                     std::shared_ptr<library_device> device);

private:
  const std::shared_ptr<logical_ir::logical_operation> logical_operation_;
  const std::shared_ptr<library_device> device_;
  completion_state state_; // reports what was left undone before the level above does
};

} // namespace oryn::tarva::library::physical_ir
