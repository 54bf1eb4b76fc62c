// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// One logical operation on its way through a scheduler.
#pragma once

#include "ir/logical_operation.h"
#include "scheduler/lowering.h"

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <vector>

namespace oryn::tarva::library {

class library_device;
using device_list = std::vector<std::shared_ptr<library_device>>;

// What the operations of a scheduler share.
struct scheduler_state {
  memory_table memory_states;
  std::atomic<std::uint64_t> last_sync_id = 0;
};

// Lowers one operation, runs it and, if it fails, puts right what it has left: all that schedulers have in common. Which
// operations may go on side by side is for them to say.
//
// It belongs to the caller's thread, which makes it and finishes it. Another thread may start it instead, in between.
class submission {
public:
  // Where work on host memory runs that belongs to no launch.
  enum class host_work { on_first_device, on_starting_thread };

  // Work on host memory that belongs to no device names the first one. Refuses a list of none, and null for the operation.
  submission(const device_list& devices, const std::shared_ptr<logical_ir::logical_operation>& operation);
  submission(const submission&) = delete;
  submission& operator=(const submission&) = delete;

  const std::shared_ptr<logical_ir::logical_operation>& operation; // the caller's

  // Lowers the operation and hands its work over. What goes wrong is left for finish() to tell. Whoever calls it on another
  // thread holds a share of the operation, as the submission may be gone as soon as the operation is complete.
  // If there is work, `turn` is given up as soon as all of it has succeeded; without work, and after a failure, the caller
  // has it still. Null if nobody holds a turn.
  void start(scheduler_state& state, host_work place, fair_mutex::place* turn) noexcept;
  // Returns when the operation has been started and all of its work has ended. Throws what start() could not do.
  void finish();

private:
  const device_list& devices_;
  std::optional<lowering> lowered_;
  std::vector<command_graph> commands_; // freed here, unless the worker still holds them for a moment
  std::exception_ptr failure_;          // of start()
};

} // namespace oryn::tarva::library
