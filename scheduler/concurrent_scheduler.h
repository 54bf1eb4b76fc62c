// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The scheduler that lets independent operations go on side by side.
#pragma once

#include "base/thread_annotations.h"
#include "scheduler/scheduler.h"
#include "scheduler/submission.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace oryn::tarva::library {

// Operations of different threads wait for each other only if they share a memory object. Each object has a queue of its own:
// an operation joins the queues of all its objects as it is accepted, begins when it is the first in each, and leaves them when
// its work has ended. So operations that share an object run in the order in which they were accepted. Where they run, what
// moves and what a failure leaves is the same as under the other scheduler, for each operation by itself.
//
// No deadlock is possible. Two operations that share several objects stand in all those queues in the same order, because an
// operation with several objects joins all queues in one go, under `acceptance_`. So of all that wait, the one accepted first
// waits only for operations that run, and these wait for nobody: a worker holds up neither callers nor other workers, and
// devices are not locked. The two sides of a move between devices are handed to both workers at once; while one waits for the
// other, its worker goes on with other operations.
//
// On each device operations begin in the order of acceptance, since its worker takes them over in that order, and the
// device runs one subgraph at a time. Work on host memory runs on the caller's thread, beside all devices.
class concurrent_scheduler final : public scheduler {
public:
  // The list is read at every submit.
  explicit concurrent_scheduler(const device_list& devices) : devices_(devices) {}

  // Returns when every command of the operation has ended.
  void submit(const std::shared_ptr<logical_ir::logical_operation>& operation) override;
  void forget(const std::shared_ptr<library_memory>& memory) noexcept override;
  // The work has ended before submit() returned.
  void prepare_wait(const std::shared_ptr<logical_ir::logical_operation>&) override {}

private:
  class turn;

  const device_list& devices_;
  mutex acceptance_; // for the joining of several queues; taken alone and for a moment
  std::atomic<std::uint64_t> last_accepted_ = 0;
  scheduler_state state_; // the entry of an object is used in its turn only
};

} // namespace oryn::tarva::library
