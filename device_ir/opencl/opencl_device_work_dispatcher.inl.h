// The bodies of opencl_device_work_dispatcher.h, compiled once for each version.
#pragma once

#include "base/logging.h"
#include "base/masked_signals.h"
#include "base/process_fault.h"
#include "device_ir/host_function_call.h"
#include "device_ir/opencl/opencl_device_work_dispatcher.h"
#include "device_ir/synchronization.h"
#include "objects/opencl/opencl_device.h"

#include <stdexcept>

namespace oryn::tarva::library::device_ir::opencl {

template <version V>
opencl_device_work_dispatcher<V>::work_item::work_item(std::shared_ptr<device_command> made)
    : command(std::move(made)), opencl(dynamic_cast<opencl_device_command<V>*>(command.get())),
      host(opencl != nullptr ? nullptr : dynamic_cast<host_function_call*>(command.get())),
      release(opencl != nullptr || host != nullptr ? nullptr
                                                   : dynamic_cast<synchronization_release*>(command.get())),
      acquire(opencl != nullptr || host != nullptr || release != nullptr
                  ? nullptr
                  : dynamic_cast<synchronization_acquire*>(command.get())) {}

template <version V>
opencl_device_work_dispatcher<V>::opencl_device_work_dispatcher(const skerv::opencl::context<V>& context,
                                                                const skerv::opencl::device<V>& device)
    : queue_(context, device, false, false), profiling_queue_(context, device, false, true) {}

// For a dispatcher that nobody has shut down, since a start or a stop of the library was cut short.
template <version V>
opencl_device_work_dispatcher<V>::~opencl_device_work_dispatcher() {
  if (shutdown_requested_)
    return;
  try {
    shutdown();
  } catch (...) {
    log_error("Caught an exception while destroying a work dispatcher.");
  }
}

// What is taken in before the shutdown is ended by it, so a refusal means that nothing was taken.
template <version V>
template <class Container, class Item>
void opencl_device_work_dispatcher<V>::take_in(Container& pending, Item&& item) {
  {
    const std::lock_guard guard(lock_);
    if (shutdown_requested_)
      throw std::logic_error("Cannot submit work to a dispatcher that has been shutdown.");
    pending.push_back(std::forward<Item>(item));
    is_busy_ = true;
  }
  try {
    work_pipe_.notify();
  } catch (const std::logic_error&) {
    // Closed by a shutdown that came in between.
  }
}

template <version V>
void opencl_device_work_dispatcher<V>::make_room(std::size_t graphs, std::size_t commands) {
  const std::lock_guard guard(lock_);
  pending_graphs_.reserve(pending_graphs_.size() + graphs);
  pending_acquires_.reserve(pending_acquires_.size() + commands);
}

template <version V>
void opencl_device_work_dispatcher<V>::submit_work(command_graph&& graph) {
  take_in(pending_graphs_, std::move(graph));
}

template <version V>
void opencl_device_work_dispatcher<V>::signal_acquire(const std::shared_ptr<library_device>& release_device,
                                                      const std::shared_ptr<library_device>& acquire_device,
                                                      std::uint64_t sync_id) {
  take_in(pending_acquires_, acquire_key(release_device, acquire_device, sync_id));
}

// The worker lives in a foreign process: the host's signals are the host's threads' to handle.
template <version V>
void opencl_device_work_dispatcher<V>::start() {
  const masked_signals masked;
  worker_ = std::thread([this] { worker_main(); });
}

template <version V>
void opencl_device_work_dispatcher<V>::shutdown() {
  {
    const std::lock_guard guard(lock_);
    if (shutdown_requested_.exchange(true))
      throw std::logic_error("Attempting to shutdown a work dispatcher that was already shutdown.");
  }
  work_pipe_.close();
  // A worker that ends the process runs the exit handlers itself: it cannot join itself, must not wait for another
  // worker that may have failed too, and must wake no caller.
  if (process_has_failed()) {
    if (worker_.joinable())
      worker_.detach();
    return;
  }
  if (worker_.joinable())
    worker_.join();
  abandon_remaining_work();
}

template <version V>
void opencl_device_work_dispatcher<V>::abandon_remaining_work() noexcept {
  std::vector<command_graph> graphs;
  {
    const std::lock_guard guard(lock_);
    graphs.swap(pending_graphs_);
    pending_acquires_.clear();
  }
  std::exception_ptr reason;
  try {
    reason = std::make_exception_ptr(
        std::logic_error("The work dispatcher was shut down before the command could be run."));
  } catch (...) {
    reason = std::current_exception();
  }
  for (auto& list : work_lists_)
    for (; !list.is_empty(); ++list.next)
      list.head().command->abandon(reason);
  for (const auto& graph : graphs)
    for (const auto& command : graph.nodes())
      command->abandon(reason);
  work_lists_.clear();
  acquire_set_.clear();
}

template <version V>
bool opencl_device_work_dispatcher<V>::has_work() {
  if (shutdown_requested_)
    return true;
  for (const auto& list : work_lists_)
    if (can_advance(list))
      return true;
  const std::lock_guard guard(lock_);
  is_busy_ = !pending_graphs_.empty() || !pending_acquires_.empty();
  if (!is_busy_)
    became_idle_.notify_all();
  return is_busy_;
}

// A worker that has told the end of a request may still hold it for a moment.
template <version V>
void opencl_device_work_dispatcher<V>::wait_until_idle() {
  std::unique_lock guard(lock_);
  became_idle_.wait(guard, [this] { return !is_busy_ || shutdown_requested_; });
}

template <version V>
bool opencl_device_work_dispatcher<V>::can_advance(const work_list& list) const {
  if (list.is_empty())
    return false;
  const work_item& head = list.head();
  if (head.acquire == nullptr)
    return head.opencl != nullptr || head.release != nullptr || head.host != nullptr;
  return acquire_set_.count(key_of(*head.acquire)) != 0;
}

template <version V>
typename opencl_device_work_dispatcher<V>::acquire_key
opencl_device_work_dispatcher<V>::key_of(const synchronization_acquire& acquire) {
  return {acquire.get_release_device(), acquire.get_acquire_device(), acquire.get_sync_id()};
}

template <version V>
void opencl_device_work_dispatcher<V>::worker_main() noexcept {
  try {
    run_until_shutdown();
    if (!work_lists_.empty())
      log_warning("About to shutdown work dispatcher thread, but work remains.");
  } catch (const std::exception& error) {
    log_critical(
        "[device dispatcher] worker thread encountered an exception.  Aborting program. Exception: {}",
        error.what());
    fail_process();
  } catch (...) {
    log_critical("[device dispatcher] worker thread encountered an unknown exception.  Aborting program.");
    fail_process();
  }
}

template <version V>
void opencl_device_work_dispatcher<V>::run_until_shutdown() {
  const std::function<bool()> predicate = [this] { return has_work(); };
  while (!shutdown_requested_) {
    take_over_pending_work();
    for (auto& list : work_lists_)
      pass(list);
    work_lists_.remove_if([](const work_list& list) { return list.is_empty(); });
    work_pipe_.wait(predicate);
  }
}

template <version V>
void opencl_device_work_dispatcher<V>::take_over_pending_work() {
  const std::lock_guard guard(lock_);
  while (!pending_graphs_.empty()) {
    const command_graph graph = std::move(pending_graphs_.back());
    pending_graphs_.pop_back();
    work_list list;
    list.items.reserve(graph.nodes().size());
    for (auto& command : graph.topological_sort())
      list.items.emplace_back(std::move(command));
    work_lists_.push_back(std::move(list));
  }
  for (auto& key : pending_acquires_)
    acquire_set_.insert(std::move(key));
  pending_acquires_.clear();
}

template <version V>
void opencl_device_work_dispatcher<V>::pass(work_list& list) {
  run_opencl_commands(list);
  for (; !list.is_empty() && list.head().host != nullptr; ++list.next)
    list.head().host->run();
  for (; !list.is_empty() && list.head().release != nullptr; ++list.next)
    list.head().release->run();
  if (!list.is_empty() && list.head().acquire != nullptr)
    take_acquire(list);
}

// The commands of a list belong to one request. A run ends where the queue changes, since two queues know no
// order between them.
template <version V>
void opencl_device_work_dispatcher<V>::run_opencl_commands(work_list& list) {
  if (list.is_empty() || list.head().opencl == nullptr)
    return;
  const bool profiling = list.head().command->is_profiling_enabled();
  std::size_t end = list.next;
  bool any_enqueued = false;
  run_events_.clear();
  for (; end < list.items.size() && list.items[end].opencl != nullptr &&
         list.items[end].command->is_profiling_enabled() == profiling;
       ++end) {
    run_events_.push_back(enqueue(list.items[end], profiling ? profiling_queue_ : queue_));
    any_enqueued = any_enqueued || run_events_.back().has_value();
  }
  const std::exception_ptr unfinished = any_enqueued ? finish(*list.head().command) : nullptr;
  for (std::size_t i = 0; list.next < end; ++i, ++list.next)
    if (run_events_[i] && unfinished)
      list.head().command->abandon(unfinished);
    else if (run_events_[i])
      end_command(*list.head().command, run_events_[i]);
  run_events_.clear();
}

// No event: the request has failed before, and the command has ended with its error instead of running. The
// first failure of a request out of here could not be known beforehand and ends the process.
template <version V>
std::optional<skerv::opencl::event<V>> opencl_device_work_dispatcher<V>::enqueue(const work_item& item,
                                                                                 dispatch_queue<V>& queue) {
  if (const auto earlier = item.command->get_request_error()) {
    item.command->abandon(earlier);
    return std::nullopt;
  }
  try {
    return item.opencl->enqueue(queue, 0, nullptr);
  } catch (...) {
    const auto earlier = item.command->get_request_error();
    if (!earlier)
      throw;
    item.command->abandon(earlier);
    return std::nullopt;
  }
}

// A failure after the request has failed elsewhere is returned: then nobody knows how the commands of the run ended.
template <version V>
std::exception_ptr opencl_device_work_dispatcher<V>::finish(const device_command& first) {
  std::exception_ptr failure;
  for (dispatch_queue<V>* queue : {&profiling_queue_, &queue_}) {
    try {
      queue->finish();
    } catch (...) {
      if (!first.get_request_error())
        throw;
      failure = std::current_exception();
    }
  }
  return failure;
}

// The event goes before the report: whoever is woken by it finds no OpenCL event of the command left.
template <version V>
void opencl_device_work_dispatcher<V>::end_command(device_command& command, std::optional<event>& ended) {
  try {
    ended->check_execution_status();
  } catch (...) {
    ended.reset();
    command.set_error(std::current_exception());
    return;
  }
  if (command.is_profiling_enabled())
    command.set_elapsed_time(ended->get_profiling_end() - ended->get_profiling_start());
  ended.reset();
  command.set_complete();
}

template <version V>
void opencl_device_work_dispatcher<V>::take_acquire(work_list& list) {
  synchronization_acquire& acquire = *list.head().acquire;
  const auto found = acquire_set_.find(key_of(acquire));
  if (found == acquire_set_.end())
    return;
  acquire.set_submitted();
  acquire.set_complete();
  acquire_set_.erase(found);
  ++list.next;
}

} // namespace oryn::tarva::library::device_ir::opencl

namespace oryn::tarva::library {

template <version V>
std::unique_ptr<device_work_dispatcher> make_work_dispatcher(const skerv::opencl::context<V>& context,
                                                             const skerv::opencl::device<V>& device) {
  return std::make_unique<device_ir::opencl::opencl_device_work_dispatcher<V>>(context, device);
}

} // namespace oryn::tarva::library
