// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// OpenCL commands without their version: what the worker of a device, and whoever makes commands, need to know of them.
#pragma once

#include "ir/device_command.h"
#include "ir/range_operations.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace oryn::tarva::library::device_ir::opencl {

// A device command that becomes one OpenCL command on a queue of its device. It was made for the version of that device,
// knows its queues, and keeps its event, so that nobody who drives it needs to know the version.
class opencl_device_command : public device_command {
public:
  // Checks, enqueues, and marks the command as submitted. False if there is nothing to ask of OpenCL, as things stand when the
  // turn of the command has come. If it throws, nothing has been enqueued.
  virtual bool enqueue() = 0;
  // One of these two follows when the queue has been finished. Both release the event. The first throws the error with which
  // OpenCL ended the command, if it did; else it keeps the time that the device has measured, if it has.
  virtual void take_result() = 0;
  virtual void release_event() = 0;
  // For a command of which nobody knows whether it has ended: nothing that it reads or writes is given back.
  virtual void leave_memory_to_device() noexcept {}

protected:
  explicit opencl_device_command(std::shared_ptr<physical_ir::physical_operation> physical_operation)
      : device_command(command_stage::opencl, std::move(physical_operation)) {}
};

// The queues of one device on which its worker enqueues, one with profiling and one without, and the commands that they
// take. Used by the threads that start operations to make commands, and by the worker alone for all else.
class opencl_queues {
public:
  using command_pointer = std::shared_ptr<device_command>;
  using operation_pointer = std::shared_ptr<physical_ir::physical_operation>;

  opencl_queues() = default;
  virtual ~opencl_queues() = default;
  opencl_queues(const opencl_queues&) = delete;
  opencl_queues& operator=(const opencl_queues&) = delete;

  // Returns when all that was enqueued on one of the two has ended.
  virtual void finish(bool profiling) = 0;

  virtual command_pointer make_copy(const operation_pointer& operation, device_to_host_copy copy) = 0;
  virtual command_pointer make_copy(const operation_pointer& operation, host_to_device_copy copy) = 0;
  virtual command_pointer make_copy(const operation_pointer& operation, device_copy copy) = 0;
  // Null in a version that has no such command.
  virtual command_pointer make_fill(const operation_pointer& operation, device_fill fill) = 0;
};

// The commands, in order, that a physical operation becomes on the device of these queues: one for most, and a sequence
// through a block on the host where the device's version has no command for it. Nothing is allocated, freed or enqueued
// before the commands run. On the thread that starts the operation.
std::vector<std::shared_ptr<device_command>>
generate_device_command_sequence(const std::shared_ptr<physical_ir::physical_operation>& operation,
                                 opencl_queues& queues);

} // namespace oryn::tarva::library::device_ir::opencl
