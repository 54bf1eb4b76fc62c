// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// How a worker runs the OpenCL commands of its device.
#pragma once

#include "opencl/opencl_device_command.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <vector>

namespace oryn::tarva::library::device_ir::opencl {

// The commands of one graph in the order of execution; those before `next` have ended. They belong to one logical
// operation. Used by one thread at a time: that which starts the operation until it is handed over, then the worker.
struct work_list {
  std::vector<std::shared_ptr<device_command>> commands;
  std::size_t next = 0;
  std::uint64_t acceptance_number = 0; // of the operation
  std::exception_ptr fault{};          // why the graph has no order: ends the worker

  bool is_empty() const { return next == commands.size(); }
  device_command& head() const { return *commands[next]; }
  bool starts_with(command_stage stage) const { return !is_empty() && commands[next]->stage == stage; }
  // The head as the class that stands for its stage.
  template <class Command>
  Command& head_as() const {
    return static_cast<Command&>(head());
  }
};

// Runs the OpenCL commands of one device on its queues. The worker's alone, so it has no lock.
//
// Commands that follow each other are enqueued as one run and finished together, which costs one wait instead of one for each.
class opencl_stage {
public:
  explicit opencl_stage(std::unique_ptr<opencl_queues> queues) : queues_(std::move(queues)) {}

  // Enqueues the OpenCL commands that the list starts with, and returns when they have ended. It throws if OpenCL refuses to
  // enqueue or to finish and the operation had not failed before: then nobody knows how its commands ended, and the worker
  // cannot go on.
  void run(work_list& list);

private:
  bool enqueue(opencl_device_command& command);
  std::exception_ptr finish(const device_command& first);

  const std::unique_ptr<opencl_queues> queues_;
};

} // namespace oryn::tarva::library::device_ir::opencl
