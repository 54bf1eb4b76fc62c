// The scheduler that works on one operation at a time.
#pragma once

#include "base/thread_annotations.h"
#include "scheduler/memory_table.h"
#include "scheduler/scheduler.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace oryn::tarva::library {

class library_device;
class lowering;

// Works on exactly one logical operation at a time: the thread of a caller holds the lock for the whole of submit(), and
// workers never take it. So the order of operations is the order of the calls, on all devices together, and nothing below
// ever works on two operations at once.
//
// A memory object starts on the host, moves to a device when a kernel needs it there, and never moves back. Work on host
// memory runs on the first device of the list.
class ultra_naive_scheduler final : public scheduler {
public:
  using device_list = std::vector<std::shared_ptr<library_device>>;

  // Knows no device; the list is read at every submit.
  explicit ultra_naive_scheduler(std::function<const device_list&()> devices)
      : devices_(std::move(devices)) {}

  // Returns when every command of the operation has ended.
  void submit(const std::shared_ptr<logical_ir::logical_operation>& operation) override TARVA_EXCLUDES(lock_);
  void forget(const std::shared_ptr<library_memory>& memory) noexcept override TARVA_EXCLUDES(lock_);
  // The work has ended before submit() returned.
  void prepare_wait(const std::shared_ptr<logical_ir::logical_operation>&) override {}

private:
  static void run(logical_ir::logical_operation& operation, const lowering& lowered);

  mutex lock_; // comes after the bridge's lock, and before those of notifiers and dispatchers
  const std::function<const device_list&()> devices_;
  memory_table memory_states_ TARVA_GUARDED_BY(lock_);
  std::uint64_t last_sync_id_ TARVA_GUARDED_BY(lock_) = 0;
};

} // namespace oryn::tarva::library
