// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "opencl/opencl_stage.h"

#include <new>

namespace oryn::tarva::library::device_ir::opencl {

namespace {

// Reports the end of a command whose run has been finished. The event is released before the report, so that whoever is
// woken by it finds no OpenCL event of the command left.
void end(opencl_device_command& command, const std::exception_ptr& unfinished) {
  if (command.is_complete()) // with an error, before OpenCL had it
    return;
  if (unfinished) {
    command.release_event();
    command.leave_memory_to_device();
    command.abandon(unfinished);
    return;
  }
  try {
    command.take_result();
  } catch (...) {
    command.set_error(std::current_exception());
    return;
  }
  command.set_complete();
}

} // namespace

// A run ends where the queue changes, since two queues know no order between them.
void opencl_stage::run(work_list& list) {
  if (!list.starts_with(command_stage::opencl))
    return;
  const auto opencl_command = [&list](std::size_t index) -> opencl_device_command& {
    return static_cast<opencl_device_command&>(*list.commands[index]);
  };
  const device_command& first = opencl_command(list.next);
  std::size_t end_of_run = list.next;
  bool any_enqueued = false;
  for (; end_of_run < list.commands.size(); ++end_of_run) {
    const device_command& command = *list.commands[end_of_run];
    if (command.stage != command_stage::opencl ||
        command.is_profiling_enabled() != first.is_profiling_enabled())
      break;
    any_enqueued = enqueue(opencl_command(end_of_run)) || any_enqueued;
  }
  const std::exception_ptr unfinished = any_enqueued ? finish(first) : nullptr;
  for (; list.next < end_of_run; ++list.next)
    end(opencl_command(list.next), unfinished);
}

// True if OpenCL has the command. Once the logical operation has failed, a command that is not enqueued yet ends with
// that error instead of running. Want of memory of our own comes before anything is enqueued, so that the command can fail
// by itself.
bool opencl_stage::enqueue(opencl_device_command& command) {
  if (const auto earlier = command.get_operation_error()) {
    command.abandon(earlier);
    return false;
  }
  try {
    return command.enqueue();
  } catch (const std::bad_alloc&) {
    command.abandon(std::current_exception());
  } catch (...) {
    const auto earlier = command.get_operation_error();
    if (!earlier)
      throw;
    command.abandon(earlier);
  }
  return false;
}

// Finishes both queues. A failure after the logical operation has failed elsewhere is returned: then nobody knows how the
// commands of the run ended.
std::exception_ptr opencl_stage::finish(const device_command& first) {
  std::exception_ptr failure;
  for (const bool profiling : {true, false}) {
    try {
      queues_->finish(profiling);
    } catch (...) {
      if (!first.get_operation_error())
        throw;
      failure = std::current_exception();
    }
  }
  return failure;
}

} // namespace oryn::tarva::library::device_ir::opencl
