#pragma once

#include "base/notifier.h"
#include "opencl/acquire_set.h"
#include "opencl/opencl_stage.h"
#include "ir/dag.h"
#include "objects/device_work_dispatcher.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

namespace oryn::tarva::library::device_ir::opencl {

// Runs all device commands of one device on a thread of its own. Each graph becomes a list in execution
// order; the lists advance in turn, a group of runs each, so that one that waits for another device holds
// back no other.
template <version V>
class opencl_device_work_dispatcher final : public device_work_dispatcher {
public:
  opencl_device_work_dispatcher(const skerv::opencl::context<V>& context,
                                const skerv::opencl::device<V>& device);
  ~opencl_device_work_dispatcher() override;

  std::unique_ptr<prepared_work> prepare_work(const dag<std::shared_ptr<device_command>>& graph) override;
  void submit_work(std::unique_ptr<prepared_work> work) override;
  void signal_acquire(const std::shared_ptr<library_device>& release_device,
                      const std::shared_ptr<library_device>& acquire_device, std::uint64_t sync_id) override;
  void start() override;
  void wait_until_idle() override;
  void shutdown() override;

private:
  using command_graph = dag<std::shared_ptr<device_command>>;
  using lists = std::list<work_list<V>>;

  struct prepared_list final : prepared_work {
    lists only; // a list of one, which can be passed on without memory
  };

  template <class Taking>
  void take_in(Taking taking);
  void worker_main() noexcept;
  void run_until_shutdown();
  bool has_work();
  bool can_advance(const work_list<V>& waiting) const;
  void take_over_pending_work();
  void pass(work_list<V>& current);
  void take_acquire(work_list<V>& current);
  void abandon_remaining_work() noexcept;
  void wake_callers() const;

  std::mutex lock_; // guards `is_busy_`, the lists that are pending and the signals only
  bool is_busy_ = false;
  std::condition_variable became_idle_;
  std::atomic<bool> shutdown_requested_ = false;
  notifier work_pipe_;
  std::thread worker_;
  lists pending_lists_;
  acquire_set acquires_;

  // The worker's own.
  lists work_lists_;
  opencl_stage<V> opencl_stage_;
};

} // namespace oryn::tarva::library::device_ir::opencl
