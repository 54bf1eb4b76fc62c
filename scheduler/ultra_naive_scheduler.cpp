#include "scheduler/ultra_naive_scheduler.h"

#include "ir/logical_operation.h"
#include "scheduler/dispatch_operations.h"
#include "scheduler/lowering.h"

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

void ultra_naive_scheduler::submit(const std::shared_ptr<logical_ir::logical_operation>& operation) {
  const lock_guard guard(lock_);
  const device_list& devices = devices_();
  if (devices.empty())
    throw std::logic_error("The scheduler expected at least one device to exist.");
  lowering lowered(operation, devices.front(), memory_states_, last_sync_id_);
  try {
    if (operation)
      operation->accept(lowered);
    else
      lowered.visit_unknown();
    run(*operation, lowered);
  } catch (...) {
    lowered.settle_after_failure();
    lowered.withdraw_allocation();
    throw;
  }
  if (operation->get_error())
    lowered.settle_after_failure();
}

void ultra_naive_scheduler::forget(const std::shared_ptr<library_memory>& memory) noexcept {
  const lock_guard guard(lock_);
  free_block(memory_states_.remove(memory));
}

void ultra_naive_scheduler::run(logical_ir::logical_operation& operation, const lowering& lowered) {
  if (lowered.get_graph().nodes().empty()) {
    end_without_work(operation, lowered.get_refusal());
    return;
  }
  operation.set_physical_operation_count(lowered.get_graph().nodes().size());
  operation.set_submitted();
  std::vector<command_graph> commands; // freed here, unless the worker still holds them for a moment
  try {
    commands = dispatch_operations(lowered.get_graph());
  } catch (...) {
    // Subgraphs that were handed over may be running.
    operation.set_error(std::current_exception());
    operation.wait_until_commands_ended();
    throw;
  }
  operation.wait_until_complete();
  if (operation.get_error())
    operation.wait_until_commands_ended();
}

} // namespace oryn::tarva::library
