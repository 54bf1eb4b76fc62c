// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The scheduler that works on one operation at a time.
#pragma once

#include "base/fair_mutex.h"
#include "scheduler/scheduler.h"
#include "scheduler/submission.h"

#include <memory>
#include <vector>

namespace oryn::tarva::library {

// Works on exactly one logical operation at a time: each has the turn from its lowering until all of its work has ended. So the
// order of operations is the order of the calls, on all devices together, and nothing below ever works on
// two operations at once.
//
// Threads that come meanwhile wait in a queue. Whoever leaves it starts the operation of the one that has waited longest, and
// that one is woken when its operation has ended. To wake it first, so that it could start the operation itself, would cost
// a switch of threads for each operation.
//
// A memory object starts on the host, moves to a device when a kernel needs it there, and never moves back. Work on host
// memory runs on the first device of the list.
class ultra_naive_scheduler final : public scheduler {
public:
  // The list is read at every submit.
  explicit ultra_naive_scheduler(const device_list& devices) : devices_(devices) {}

  // Returns when every command of the operation has ended.
  void submit(const std::shared_ptr<logical_ir::logical_operation>& operation) override;
  void forget(const std::shared_ptr<library_memory>& memory) noexcept override;
  // The work has ended before submit() returned.
  void prepare_wait(const std::shared_ptr<logical_ir::logical_operation>&) override {}

private:
  class turn;

  const device_list& devices_;
  fair_mutex
      turns_; // taken with no other lock held, and before those of the table, of kernels and of dispatchers
  scheduler_state state_; // used in a turn only
};

} // namespace oryn::tarva::library
