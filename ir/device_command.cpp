// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "ir/device_command.h"

#include "objects/library_device.h"

#include <chrono>
#include <stdexcept>

namespace oryn::tarva::library::device_ir {

namespace {

// A command has no parts: the words of the counts are never used.
constexpr completion_texts texts = {
    .profiling_after_submission =
        "Attempting to enable profiling on a device command that has already been submitted.",
    .already_submitted =
        "Attempting to set a device command to submitted state, but it was already submitted.",
    .complete_before_submission =
        "Attempting to set a device command to be complete, but it was never submitted.",
    .error_before_submission =
        "Attempting to set a device command to an error state, but it was never submitted.",
    .already_complete = "Attempting to set a device command to be complete, but it was already complete.",
    .count_after_submission = "",
    .count_already_set = "",
    .part_before_submission = "",
    .part_at_zero = "",
    .part_without_count = "",
    .destroyed_incomplete = "Destroying a device command that was not completed.",
    .destroyed_open = "Destroying a device command that did not close its notification pipe.",
    .destroyed_with_exception = "Caught an exception while destroying a device command.",
};

} // namespace

device_command::device_command(command_stage stage,
                               std::shared_ptr<physical_ir::physical_operation> physical_operation)
    : completion_state(texts), stage(stage), physical_operation(std::move(physical_operation)) {}

library_device& device_command::get_device() const {
  const auto& device = physical_operation->device;
  if (!device)
    throw std::logic_error("No device associated with a device command that requires a device. This is an "
                           "error.");
  return *device;
}

std::exception_ptr device_command::get_operation_error() const {
  return physical_operation->logical_operation->get_error();
}

// The state goes first: a completion out of order throws, and then nothing above has been told. The count comes last, so that whoever
// waits for the operation's commands to end finds every report made.
void device_command::set_complete() {
  completion_state::set_complete();
  physical_operation->device_command_complete();
  physical_operation->logical_operation->device_commands_ended(1);
}

void device_command::set_error(const std::exception_ptr& error) {
  if (!completion_state::set_error(error))
    return;
  physical_operation->set_error(error);
  physical_operation->logical_operation->device_commands_ended(1);
}

// Either step may find that it has been done. What counts is that the command has ended and has been counted as ended.
void device_command::abandon(const std::exception_ptr& error) noexcept {
  try {
    set_submitted();
  } catch (...) {
    // It had been handed to execution already; its end is what counts.
  }
  try {
    set_error(error);
  } catch (...) {
    // It has ended already.
  }
}

void device_command::set_elapsed_time(std::uint64_t nanoseconds) {
  completion_state::add_elapsed_time(nanoseconds);
  physical_operation->add_elapsed_time(nanoseconds);
}

// The clock is only read for a command that is measured.
void host_function_call::run() {
  using clock = std::chrono::steady_clock;
  set_submitted();
  try {
    if (is_profiling_enabled()) {
      const auto start = clock::now();
      function_(shared_from_this());
      const std::chrono::nanoseconds elapsed = clock::now() - start;
      set_elapsed_time(static_cast<std::uint64_t>(elapsed.count()));
    } else {
      function_(shared_from_this());
    }
    set_complete();
  } catch (...) {
    set_error(std::current_exception());
  }
}

void synchronization_release::run() {
  try {
    set_submitted();
    get_acquire_device()->signal_acquire(get_release_device(), get_acquire_device(), get_sync_id());
    set_complete();
  } catch (...) {
    set_error(std::current_exception());
  }
}

} // namespace oryn::tarva::library::device_ir
