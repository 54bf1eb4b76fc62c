// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "scheduler/ultra_naive_scheduler.h"

#include "ir/logical_operation.h"

namespace oryn::tarva::library {

// One call of submit(). If the work succeeds, the worker passes the turn on; otherwise the caller's thread does.
class ultra_naive_scheduler::turn final : public fair_mutex::place {
public:
  turn(ultra_naive_scheduler& scheduler, const std::shared_ptr<logical_ir::logical_operation>& operation)
      : work(scheduler.devices_, operation), scheduler_(scheduler) {
    if (join(scheduler_.turns_))
      start();
  }
  ~turn() override { leave(); }

  void take_turn() noexcept override {
    const auto held = work.operation; // its caller may return, and this end, as soon as it is complete
    start();
  }

  submission work;

private:
  void start() noexcept { work.start(scheduler_.state_, submission::host_work::on_first_device, this); }

  ultra_naive_scheduler& scheduler_;
};

void ultra_naive_scheduler::submit(const std::shared_ptr<logical_ir::logical_operation>& operation) {
  turn(*this, operation).work.finish();
}

void ultra_naive_scheduler::forget(const std::shared_ptr<library_memory>& memory) noexcept {
  const fair_mutex::guard guard(turns_);
  free_block(state_.memory_states.remove(memory));
}

} // namespace oryn::tarva::library
