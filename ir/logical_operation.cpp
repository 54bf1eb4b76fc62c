#include "ir/logical_operation.h"

#include "base/end_of_process.h"
#include "objects/library_future.h"

namespace oryn::tarva::library::logical_ir {

namespace {

constexpr completion_texts texts = {
    .profiling_after_submission =
        "Attempting to enable profiling on a logical operation that has already been submitted.",
    .already_submitted =
        "Attempting to set a logical operation to submitted state, but it was already submitted.",
    .complete_before_submission =
        "Attempting to set a logical operation to be complete, but it was never submitted.",
    .error_before_submission =
        "Attempting to set a logical operation to an error state, but it was never submitted.",
    .already_complete = "Attempting to set a logical operation to be complete, but it was already complete.",
    .count_after_submission = "Setting a physical operation count on a logical operation, but the logical "
                              "operation was already submitted.",
    .count_already_set = "Setting a physical operation count on a logical operation, but the physical "
                         "operation count was already set.",
    .part_before_submission =
        "Attempting to set a physical operation as completed on a logical operation that "
        "was never submitted.",
    .part_at_zero = "Notifying a logical operation that a physical operation has completed, but the count of "
                    "outstanding physical operations is zero.",
    .part_without_count = "Notifying a logical operation that a physical operation has completed, but the "
                          "count of outstanding physical operations was never set.",
    .destroyed_incomplete = "Destroying a logical operation that was not completed.",
    .destroyed_open = "Destroying a logical operation that did not close its notification pipe.",
    .destroyed_with_exception = "Caught an exception while destroying a logical operation.",
};

} // namespace

logical_operation::logical_operation() : state_(texts) {}

logical_operation::~logical_operation() = default;

std::shared_ptr<library_future> logical_operation::get_future() {
  return std::make_shared<library_future>(shared_from_this());
}

void logical_operation::add_device_commands(std::uint64_t count) {
  static_cast<void>(state_.get_pipe());
  running_commands_ += count;
}

// A notifier wakes for any reason, so the condition is asked again each time. Whoever comes too late to be woken by a
// worker that has failed must not fall asleep, either.
void logical_operation::wait_until_complete() const {
  while (!is_complete()) {
    state_.get_pipe().wait([this] { return is_complete() || process_has_failed(); });
    if (process_has_failed() && !is_complete())
      end_process_after_exit_handlers();
  }
}

void logical_operation::wake_waiters() const noexcept {
  try {
    state_.get_pipe().notify();
  } catch (...) {
    // It is closed, so all are awake.
  }
}

// Every command reports its own error before its end, so whoever takes the last one sees the error. Without one
// nobody waits for the commands.
void logical_operation::device_commands_ended(std::uint64_t count) {
  if (running_commands_.fetch_sub(count) == count && state_.has_failed())
    commands_ended_.notify_all();
}

void logical_operation::wait_until_commands_ended() {
  while (true) {
    const event_count::ticket seen = commands_ended_.get_ticket();
    if (running_commands_ == 0)
      return;
    commands_ended_.wait(seen);
  }
}

} // namespace oryn::tarva::library::logical_ir
