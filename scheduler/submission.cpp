// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

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

// The starting thread counts as one command that has not ended, so that nobody who waits for the end of all commands goes away
// while it is at work.
submission::submission(const device_list& devices,
                       const std::shared_ptr<logical_ir::logical_operation>& operation)
    : operation(operation), devices_(devices) {
  if (devices.empty())
    throw std::logic_error("The scheduler expected at least one device to exist.");
  if (!operation)
    throw std::logic_error("Logical operation not recognized by the scheduler.");
  operation->add_device_commands(1);
}

// The count and the submission come before any command can end. Once the work has been handed over nothing of this object is
// touched any more, unless something goes wrong: then the count of commands comes last, which finish() waits for after an error.
void submission::start(scheduler_state& state, host_work place, fair_mutex::place* turn) noexcept {
  logical_ir::logical_operation& started = *operation;
  try {
    lowered_.emplace(operation, devices_.front(), state.memory_states, state.last_sync_id);
    const physical_graph& graph = lowered_->lower();
    if (graph.nodes().empty()) {
      end_without_work(started, lowered_->get_refusal());
    } else {
      started.set_physical_operation_count(graph.nodes().size());
      started.set_submitted();
      started.turn = turn;
      if (place == host_work::on_starting_thread && lowered_->is_host_work())
        run_host_work(graph);
      else
        dispatch_operations(graph, commands_);
    }
  } catch (...) {
    failure_ = std::current_exception();
    started.refuse(failure_); // subgraphs that were handed over may be running
  }
  started.device_commands_ended(1);
}

// Without an error nobody else touches the operation any more. After one, commands that still run may use the blocks, so they are
// waited for before anything is settled.
void submission::finish() {
  operation->wait_until_complete();
  if (!operation->get_error())
    return;
  operation->wait_until_commands_ended();
  lowered_->settle_after_failure();
  if (failure_) {
    lowered_->withdraw_allocation();
    std::rethrow_exception(failure_);
  }
}

} // namespace oryn::tarva::library
