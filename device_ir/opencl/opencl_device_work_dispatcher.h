#pragma once

#include "access/opencl/context.h"
#include "base/notifier.h"
#include "device_ir/opencl/opencl_device_command.h"
#include "ir/dag.h"
#include "objects/device_work_dispatcher.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
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

  std::unique_ptr<prepared_work> prepare_work(const dag<std::shared_ptr<device_command>>& graph) override;
  void submit_work(std::unique_ptr<prepared_work> work) override;
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

  // A command with its class, found once: one of the four pointers is set. An OpenCL command that has been enqueued
  // has an event.
  struct work_item {
    explicit work_item(std::shared_ptr<device_command> made);

    std::shared_ptr<device_command> command;
    opencl_device_command<V>* opencl;
    host_function_call* host;
    synchronization_release* release;
    synchronization_acquire* acquire;
    std::optional<event> running{};
  };

  // The commands of one graph; those before `next` have ended.
  struct work_list {
    std::vector<work_item> items;
    std::size_t next = 0;
    std::exception_ptr fault{}; // why the graph has no order: ends the worker

    bool is_empty() const { return next == items.size(); }
    work_item& head() { return items[next]; }
    const work_item& head() const { return items[next]; }
  };

  struct prepared_list final : prepared_work {
    std::list<work_list> only; // a list of one, which can be passed on without memory
  };

  // Taken over by the worker at the beginning of a sweep, like a list.
  struct signal {
    acquire_key key;
    bool is_taken_over = false;
  };

  template <class Taking>
  void take_in(Taking taking);
  void worker_main() noexcept;
  void run_until_shutdown();
  bool has_work();
  bool can_advance(const work_list& list);
  void take_over_pending_work();
  void pass(work_list& list);
  void run_opencl_commands(work_list& list);
  void enqueue(work_item& item, dispatch_queue<V>& queue);
  typename std::vector<signal>::iterator find_signal(const acquire_key& key);
  std::exception_ptr finish(const device_command& first);
  void end_command(work_item& item);
  void take_acquire(work_list& list);
  void abandon_remaining_work() noexcept;

  std::mutex lock_; // guards `is_busy_`, the lists that are pending and the signals only
  bool is_busy_ = false;
  std::condition_variable became_idle_;
  std::atomic<bool> shutdown_requested_ = false;
  notifier work_pipe_;
  std::thread worker_;
  std::list<work_list> pending_lists_;
  std::vector<signal> signals_; // has room for all that the lists wait for
  std::size_t awaited_signals_ = 0;

  // The worker's own.
  std::list<work_list> work_lists_;
  dispatch_queue<V> queue_;
  dispatch_queue<V> profiling_queue_;
};

} // namespace opencl
} // namespace oryn::tarva::library::device_ir
