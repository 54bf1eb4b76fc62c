#include "ir/device_command.h"

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

device_command::device_command(command_kind kind, std::shared_ptr<physical_ir::physical_operation> operation)
    : kind_(kind), operation_(std::move(operation)), state_(texts) {}

device_command::~device_command() = default;

void device_command::set_complete() {
  state_.set_complete();
  operation_->device_command_complete();
  report_end();
}

void device_command::set_error(const std::exception_ptr& error) {
  if (!state_.set_error(error))
    return;
  operation_->set_error(error);
  report_end();
}

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
  state_.add_elapsed_time(nanoseconds);
  operation_->add_elapsed_time(nanoseconds);
}

// Last of all, so that whoever waits for the request's commands finds every report made.
void device_command::report_end() {
  operation_->get_logical_operation()->device_commands_ended(1);
}

} // namespace oryn::tarva::library::device_ir
