// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "scheduler/concurrent_scheduler.h"

#include "ir/logical_operation.h"
#include "memory/library_memory.h"

#include <algorithm>
#include <vector>

namespace oryn::tarva::library {

// The turn of one operation at all of its memory objects, from its acceptance to the end of its work. An object that it names
// twice is waited for once. Their order among themselves does not matter, as all queues are joined before any is waited in.
class concurrent_scheduler::turn {
public:
  turn(concurrent_scheduler& scheduler, logical_ir::logical_operation& operation)
      : objects_(operation.memory_objects()) {
    std::sort(objects_.begin(), objects_.end());
    objects_.erase(std::unique(objects_.begin(), objects_.end()), objects_.end());
    places_ = std::vector<fair_mutex::place>(objects_.size());
    if (objects_.size() > 1) {
      const lock_guard guard(scheduler.acceptance_);
      join(scheduler, operation);
    } else {
      join(scheduler, operation);
    }
    for (fair_mutex::place& place : places_)
      place.wait_for_turn();
  }
  turn(const turn&) = delete;
  turn& operator=(const turn&) = delete;
  ~turn() {
    for (fair_mutex::place& place : places_)
      place.leave();
  }

private:
  void join(concurrent_scheduler& scheduler, logical_ir::logical_operation& operation) noexcept {
    operation.acceptance_number = ++scheduler.last_accepted_;
    for (std::size_t i = 0; i < objects_.size(); ++i)
      places_[i].join(objects_[i]->get_scheduler_entry().turns);
  }

  std::vector<std::shared_ptr<library_memory>> objects_;
  std::vector<fair_mutex::place> places_; // in the queues of these objects
};

void concurrent_scheduler::submit(const std::shared_ptr<logical_ir::logical_operation>& operation) {
  submission own(devices_, operation);
  const turn at_all_objects(*this, *operation);
  own.start(state_, submission::host_work::on_starting_thread, nullptr);
  own.finish();
}

void concurrent_scheduler::forget(const std::shared_ptr<library_memory>& memory) noexcept {
  const fair_mutex::guard guard(memory->get_scheduler_entry().turns);
  free_block(state_.memory_states.remove(memory));
}

} // namespace oryn::tarva::library
