#include "ir/physical_operation.h"

namespace oryn::tarva::library::physical_ir {

namespace {

constexpr completion_texts texts = {
    .profiling_after_submission =
        "Attempting to enable profiling on a physical operation that has already been submitted.",
    .already_submitted =
        "Attempting to set a physical operation to submitted state, but it was already submitted.",
    .complete_before_submission =
        "Attempting to set a physical operation to be complete, but it was never submitted.",
    .error_before_submission =
        "Attempting to set a physical operation to an error state, but it was never submitted.",
    .already_complete = "Attempting to set a physical operation to be complete, but it was already complete.",
    .count_after_submission = "Setting a device command count on a physical operation, but the physical "
                              "operation was already submitted.",
    .count_already_set =
        "Setting a device command count on a physical operation, but the device command count "
        "was already set.",
    .part_before_submission =
        "Attempting to set a device command as completed on a physical operation that was "
        "never submitted.",
    .part_at_zero = "Notifying a physical operation that a device command has completed, but the count of "
                    "outstanding device commands is zero.",
    .part_without_count = "Notifying a physical operation that a device command has completed, but the count "
                          "of outstanding device commands was never set.",
    .destroyed_incomplete = "Destroying a physical operation that was not completed.",
    .destroyed_open = "Destroying a physical operation that did not close its notification pipe.",
    .destroyed_with_exception = "Caught an exception while destroying a physical operation.",
};

} // namespace

physical_operation::physical_operation(std::shared_ptr<logical_ir::logical_operation> logical_operation,
                                       std::shared_ptr<library_device> device)
    : logical_operation_(std::move(logical_operation)), device_(std::move(device)), state_(texts) {}

physical_operation::~physical_operation() = default;

void physical_operation::device_command_complete() {
  if (state_.part_complete() != completion_state::part_outcome::pending)
    logical_operation_->physical_operation_complete();
}

void physical_operation::set_error(const std::exception_ptr& error) {
  if (state_.set_error(error))
    logical_operation_->set_error(error);
}

void physical_operation::add_elapsed_time(std::uint64_t nanoseconds) {
  state_.add_elapsed_time(nanoseconds);
  logical_operation_->add_elapsed_time(nanoseconds);
}

} // namespace oryn::tarva::library::physical_ir
