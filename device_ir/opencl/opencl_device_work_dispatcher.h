#pragma once

#include "access/opencl/context.h"
#include "base/notifier.h"
#include "device_ir/opencl/opencl_device_command.h"
#include "ir/dag.h"
#include "objects/device_work_dispatcher.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <thread>
#include <tuple>
#include <vector>

namespace oryn::tarva::library::device_ir {

class host_function_call;
class synchronization_acquire;
class synchronization_release;

namespace opencl {

// Runs all device commands of one device on a thread of its own. Each graph becomes a list in execution
// order; the lists advance in turn, a group of runs each, so that one that waits for another device holds
// back no other.
template <version V>
class opencl_device_work_dispatcher final : public device_work_dispatcher {
public:
  opencl_device_work_dispatcher(const skerv::opencl::context<V>& context,
                                const skerv::opencl::device<V>& device);
  ~opencl_device_work_dispatcher() override;

  void make_room(std::size_t graphs, std::size_t commands) override;
  void submit_work(dag<std::shared_ptr<device_command>>&& graph) override;
  void signal_acquire(const std::shared_ptr<library_device>& release_device,
                      const std::shared_ptr<library_device>& acquire_device, std::uint64_t sync_id) override;
  void start() override;
  void wait_until_idle() override;
  void shutdown() override;

private:
  using command_graph = dag<std::shared_ptr<device_command>>;
  using acquire_key =
      std::tuple<std::shared_ptr<library_device>, std::shared_ptr<library_device>, std::uint64_t>;
  static acquire_key key_of(const synchronization_acquire& acquire);
  using event = skerv::opencl::event<V>;

  // A command with its class, found once: one of the four pointers is set.
  struct work_item {
    explicit work_item(std::shared_ptr<device_command> made);

    std::shared_ptr<device_command> command;
    opencl_device_command<V>* opencl;
    host_function_call* host;
    synchronization_release* release;
    synchronization_acquire* acquire;
  };

  // The commands of one graph; those before `next` have ended.
  struct work_list {
    std::vector<work_item> items;
    std::size_t next = 0;

    bool is_empty() const { return next == items.size(); }
    const work_item& head() const { return items[next]; }
  };

  template <class Container, class Item>
  void take_in(Container& pending, Item&& item);
  void worker_main() noexcept;
  void run_until_shutdown();
  bool has_work();
  bool can_advance(const work_list& list) const;
  void take_over_pending_work();
  void pass(work_list& list);
  void run_opencl_commands(work_list& list);
  std::optional<event> enqueue(const work_item& item, dispatch_queue<V>& queue);
  std::exception_ptr finish(const device_command& first);
  void end_command(device_command& command, std::optional<event>& ended);
  void take_acquire(work_list& list);
  void abandon_remaining_work() noexcept;

  std::mutex lock_; // guards the two pending containers and `is_busy_` only
  bool is_busy_ = false;
  std::condition_variable became_idle_;
  std::atomic<bool> shutdown_requested_ = false;
  notifier work_pipe_;
  std::thread worker_;
  std::vector<command_graph> pending_graphs_;
  std::vector<acquire_key> pending_acquires_;

  // The worker's own.
  std::list<work_list> work_lists_;
  std::vector<std::optional<event>> run_events_;
  std::set<acquire_key> acquire_set_;
  dispatch_queue<V> queue_;
  dispatch_queue<V> profiling_queue_;
};

} // namespace opencl
} // namespace oryn::tarva::library::device_ir
