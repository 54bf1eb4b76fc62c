#pragma once

#include "base/completion_state.h"
#include "ir/physical_operation.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <string>

namespace oryn::tarva::library::device_ir {

// Which stage of a dispatcher takes a command. A dispatcher takes the OpenCL commands of its own version alone.
enum class command_kind : std::uint32_t {
  host_function_call,
  synchronization_release,
  synchronization_acquire,
  opencl, // behind it, one for each version
};

// The unit of execution: one step that a work dispatcher carries out for one physical operation, to which it
// reports its end. Driven by the dispatcher's thread alone.
class device_command {
public:
  virtual ~device_command();
  device_command(const device_command&) = delete;
  device_command& operator=(const device_command&) = delete;

  virtual std::string to_string() const = 0;

  command_kind get_kind() const { return kind_; }
  const std::shared_ptr<physical_ir::physical_operation>& get_physical_operation() const {
    return operation_;
  }
  // The error with which another command of the same request has failed, if one has.
  std::exception_ptr get_request_error() const { return operation_->get_logical_operation()->get_error(); }

  void set_submitted() { state_.set_submitted(); }
  void set_complete();
  void set_error(const std::exception_ptr& error);
  // Ends a command that will never run: marks it as submitted if nobody has, and fails it.
  void abandon(const std::exception_ptr& error) noexcept;
  bool has_ended() const { return state_.is_complete(); }

  void enable_profiling() { state_.enable_profiling(); }
  bool is_profiling_enabled() const { return state_.is_profiling_enabled(); }
  void set_elapsed_time(std::uint64_t nanoseconds);

protected:
  device_command(command_kind kind, std::shared_ptr<physical_ir::physical_operation> operation);

private:
  void report_end();

  const command_kind kind_;
  const std::shared_ptr<physical_ir::physical_operation> operation_;
  completion_state state_; // reports what was left undone before the level above does
};

} // namespace oryn::tarva::library::device_ir
