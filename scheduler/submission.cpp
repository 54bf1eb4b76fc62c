#include "scheduler/submission.h"

#include "ir/logical_operation.h"
#include "scheduler/dispatch_operations.h"

#include <stdexcept>

namespace oryn::tarva::library {

namespace {

// An operation that needs no device ends here.
void end_without_work(logical_ir::logical_operation& operation, const std::exception_ptr& refusal) {
  operation.set_physical_operation_count(1);
  operation.set_submitted();
  if (refusal)
    operation.set_error(refusal);
  else
    operation.physical_operation_complete();
}

} // namespace

const std::shared_ptr<library_device>& get_host_device(const device_list& devices) {
  if (devices.empty())
    throw std::logic_error("The scheduler expected at least one device to exist.");
  return devices.front();
}

const std::shared_ptr<logical_ir::logical_operation>&
require_operation(const std::shared_ptr<logical_ir::logical_operation>& operation) {
  if (!operation)
    throw std::logic_error("Logical operation not recognized by the scheduler.");
  return operation;
}

// The starting thread counts as one command that has not ended, so that nobody who waits for the end of all commands goes away
// while it is at work. Counting it also makes what a wait needs, which can fail here and not later.
submission::submission(const std::shared_ptr<logical_ir::logical_operation>& operation)
    : operation_(operation) {
  operation->add_device_commands(1);
}

// Once the work has been handed over nothing of this object is touched any more, unless something goes wrong: then the count of
// commands comes last, which finish() waits for after an error.
void submission::start(const std::shared_ptr<library_device>& host_device, scheduler_state& state,
                       host_work place, logical_ir::logical_operation::turn_holder* holder) noexcept {
  logical_ir::logical_operation& operation = *operation_;
  try {
    lowered_.emplace(operation_, host_device, state.memory_states, state.last_sync_id);
    lowered_->lower();
    run(place, holder);
  } catch (...) {
    failure_ = std::current_exception();
    operation.refuse(failure_); // subgraphs that were handed over may be running
  }
  operation.device_commands_ended(1);
}

// The count and the submission come before any command can end.
void submission::run(host_work place, logical_ir::logical_operation::turn_holder* holder) {
  logical_ir::logical_operation& operation = *operation_;
  const physical_graph& graph = lowered_->get_graph();
  if (graph.nodes().empty())
    return end_without_work(operation, lowered_->get_refusal());
  operation.set_physical_operation_count(graph.nodes().size());
  operation.set_submitted();
  if (holder != nullptr)
    operation.set_turn_holder(*holder);
  if (place == host_work::on_starting_thread && lowered_->is_host_work())
    run_host_work(graph);
  else
    dispatch_operations(graph, commands_);
}

// Without an error nobody else touches the operation any more. After one, commands that still run may use the blocks, so they are
// waited for before anything is settled.
void submission::finish() {
  operation_->wait_until_complete();
  if (!operation_->get_error())
    return;
  operation_->wait_until_commands_ended();
  lowered_->settle_after_failure();
  if (failure_) {
    lowered_->withdraw_allocation();
    std::rethrow_exception(failure_);
  }
}

} // namespace oryn::tarva::library
