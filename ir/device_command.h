// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The third of the three levels of operations: what a device's worker carries out, one after the other.
#pragma once

#include "base/completion_state.h"
#include "ir/physical_operation.h"

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>

namespace oryn::tarva::library::device_ir {

// Which stage of a dispatcher carries out a command.
enum class command_stage : std::uint8_t {
  host_function_call,
  synchronization_release,
  synchronization_acquire,
  opencl,
};

// The unit of execution: what a work dispatcher carries out for one physical operation, to which it reports its end.
// Made on the thread that starts the operation; once it is handed over, the dispatcher's thread alone drives it: submitted, then
// complete or failed. No lock of its own.
class device_command : private completion_state {
public:
  virtual ~device_command() = default;
  device_command(const device_command&) = delete;
  device_command& operator=(const device_command&) = delete;

  virtual std::string to_string() const = 0;

  const command_stage stage;
  const std::shared_ptr<physical_ir::physical_operation> physical_operation;
  // The device on which the command runs; an error if there is none.
  library_device& get_device() const;
  // The error with which another command of the same logical operation has failed, if one has.
  std::exception_ptr get_operation_error() const;

  // The transitions, for whoever runs the command. The last two report to the physical operation, and then count the command as
  // ended for those who wait for all commands. A second error is dropped.
  using completion_state::set_submitted;
  void set_complete();
  void set_error(const std::exception_ptr& error);
  // Ends a command that will never run: marks it as submitted if nobody has, and fails it.
  void abandon(const std::exception_ptr& error) noexcept;
  using completion_state::is_complete;

  // A command that is measured runs on a queue of its own kind. Before the command is submitted.
  using completion_state::enable_profiling;
  using completion_state::is_profiling_enabled;
  // Before the end is reported; the times of all commands add up in the operations above.
  void set_elapsed_time(std::uint64_t nanoseconds);

protected:
  device_command(command_stage stage, std::shared_ptr<physical_ir::physical_operation> physical_operation);
};

// Work on the host: allocation, freeing, host copies and fills. It runs in its turn among the commands of its device, so that it
// sees what OpenCL commands before it have done.
class host_function_call final : public device_command,
                                 public std::enable_shared_from_this<host_function_call> {
public:
  using function = std::function<void(const std::shared_ptr<device_command>&)>;

  host_function_call(std::shared_ptr<physical_ir::physical_operation> physical_operation, function work)
      : device_command(command_stage::host_function_call, std::move(physical_operation)),
        function_(std::move(work)) {}
  static std::shared_ptr<host_function_call>
  create(std::shared_ptr<physical_ir::physical_operation> physical_operation, function work) {
    return std::make_shared<host_function_call>(std::move(physical_operation), std::move(work));
  }

  std::string to_string() const override { return "host_function_call: { }"; }

  // A failure of the function fails this command and is not thrown.
  void run();

private:
  function function_;
};

// One side of a hand-over. No edge of a graph runs between devices, so this is all that orders the work of two devices.
class synchronization_command : public device_command, public hand_over {
public:
  std::string to_string() const override { return head_ + fields_text(); }

protected:
  synchronization_command(command_stage stage, const char* head,
                          std::shared_ptr<physical_ir::physical_operation> physical_operation,
                          hand_over between)
      : device_command(stage, std::move(physical_operation)), hand_over(std::move(between)), head_(head) {}

private:
  const char* head_; // the text form up to the fields
};

// Holds back what follows it in its graph until the release has signalled; the dispatcher completes it.
class synchronization_acquire final : public synchronization_command {
public:
  synchronization_acquire(std::shared_ptr<physical_ir::physical_operation> physical_operation,
                          hand_over between)
      : synchronization_command(command_stage::synchronization_acquire, "synchronization_acquire: {",
                                std::move(physical_operation), std::move(between)) {}
};

// The side that tells: what stands before it in its graph has ended when it signals.
class synchronization_release final : public synchronization_command {
public:
  synchronization_release(std::shared_ptr<physical_ir::physical_operation> physical_operation,
                          hand_over between)
      : synchronization_command(command_stage::synchronization_release, "synchronization_release: {",
                                std::move(physical_operation), std::move(between)) {}

  // Signals the acquiring dispatcher without waiting for it. A failure fails this command and is not thrown.
  void run();
};

} // namespace oryn::tarva::library::device_ir
