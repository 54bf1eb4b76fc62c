// The bodies of opencl_device_work_dispatcher.h, compiled once for each version.
#pragma once

#include "base/logging.h"
#include "base/masked_signals.h"
#include "base/process_fault.h"
#include "device_ir/host_function_call.h"
#include "device_ir/opencl/opencl_device_work_dispatcher.h"
#include "device_ir/synchronization.h"
#include "objects/opencl/opencl_device.h"

#include <algorithm>
#include <iterator>
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
template <class Taking>
void opencl_device_work_dispatcher<V>::take_in(Taking taking) {
  {
    const std::lock_guard guard(lock_);
    if (shutdown_requested_)
      throw std::logic_error("Cannot submit work to a dispatcher that has been shutdown.");
    taking();
    is_busy_ = true;
  }
  try {
    work_pipe_.notify();
  } catch (const std::logic_error&) {
    // Closed by a shutdown that came in between.
  }
}

template <version V>
std::unique_ptr<prepared_work> opencl_device_work_dispatcher<V>::prepare_work(const command_graph& graph) {
  auto prepared = std::make_unique<prepared_list>();
  work_list& list = prepared->only.emplace_back();
  list.items.reserve(graph.nodes().size());
  try {
    for (auto& command : graph.topological_sort())
      list.items.emplace_back(std::move(command));
  } catch (const std::logic_error&) {
    list.fault = std::current_exception();
  }
  const auto acquires = std::count_if(list.items.begin(), list.items.end(),
                                      [](const work_item& item) { return item.acquire != nullptr; });
  if (acquires != 0) {
    const std::lock_guard guard(lock_);
    const std::size_t awaited = awaited_signals_ + static_cast<std::size_t>(acquires);
    signals_.reserve(awaited);
    awaited_signals_ = awaited;
  }
  return prepared;
}

template <version V>
void opencl_device_work_dispatcher<V>::submit_work(std::unique_ptr<prepared_work> work) {
  auto& prepared = dynamic_cast<prepared_list&>(*work);
  take_in([&] { pending_lists_.splice(pending_lists_.end(), prepared.only); });
}

template <version V>
void opencl_device_work_dispatcher<V>::signal_acquire(const std::shared_ptr<library_device>& release_device,
                                                      const std::shared_ptr<library_device>& acquire_device,
                                                      std::uint64_t sync_id) {
  const acquire_key key(release_device, acquire_device, sync_id);
  take_in([&] {
    if (find_signal(key) == signals_.end())
      signals_.push_back({key});
  });
}

template <version V>
typename std::vector<typename opencl_device_work_dispatcher<V>::signal>::iterator
opencl_device_work_dispatcher<V>::find_signal(const acquire_key& key) {
  return std::find_if(signals_.begin(), signals_.end(), [&](const signal& one) { return one.key == key; });
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
  {
    const std::lock_guard guard(lock_);
    work_lists_.splice(work_lists_.end(), pending_lists_);
    signals_.clear();
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
  work_lists_.clear();
}

template <version V>
bool opencl_device_work_dispatcher<V>::has_work() {
  if (shutdown_requested_)
    return true;
  const std::lock_guard guard(lock_);
  for (const auto& list : work_lists_)
    if (can_advance(list))
      return true;
  is_busy_ = !pending_lists_.empty() || std::any_of(signals_.begin(), signals_.end(),
                                                    [](const signal& one) { return !one.is_taken_over; });
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
bool opencl_device_work_dispatcher<V>::can_advance(const work_list& list) {
  if (list.is_empty())
    return false;
  const work_item& head = list.head();
  if (head.acquire == nullptr)
    return head.opencl != nullptr || head.release != nullptr || head.host != nullptr;
  const auto found = find_signal(key_of(*head.acquire));
  return found != signals_.end() && found->is_taken_over;
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
  while (!pending_lists_.empty()) {
    work_lists_.splice(work_lists_.end(), pending_lists_, std::prev(pending_lists_.end()));
    if (work_lists_.back().fault)
      std::rethrow_exception(work_lists_.back().fault);
  }
  for (signal& each : signals_)
    each.is_taken_over = true;
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
  for (; end < list.items.size() && list.items[end].opencl != nullptr &&
         list.items[end].command->is_profiling_enabled() == profiling;
       ++end) {
    enqueue(list.items[end], profiling ? profiling_queue_ : queue_);
    any_enqueued = any_enqueued || list.items[end].running.has_value();
  }
  const std::exception_ptr unfinished = any_enqueued ? finish(*list.head().command) : nullptr;
  for (; list.next < end; ++list.next) {
    work_item& item = list.head();
    if (item.running && unfinished) {
      item.running.reset();
      item.command->abandon(unfinished);
    } else if (item.running) {
      end_command(item);
    }
  }
}

// No event: the request has failed before, and the command has ended with its error instead of running. The
// first failure of a request out of here could not be known beforehand and ends the process.
template <version V>
void opencl_device_work_dispatcher<V>::enqueue(work_item& item, dispatch_queue<V>& queue) {
  if (const auto earlier = item.command->get_request_error()) {
    item.command->abandon(earlier);
    return;
  }
  try {
    item.running.emplace(item.opencl->enqueue(queue, 0, nullptr));
  } catch (...) {
    const auto earlier = item.command->get_request_error();
    if (!earlier)
      throw;
    item.command->abandon(earlier);
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
void opencl_device_work_dispatcher<V>::end_command(work_item& item) {
  device_command& command = *item.command;
  try {
    item.running->check_execution_status();
  } catch (...) {
    item.running.reset();
    command.set_error(std::current_exception());
    return;
  }
  if (command.is_profiling_enabled())
    command.set_elapsed_time(item.running->get_profiling_end() - item.running->get_profiling_start());
  item.running.reset();
  command.set_complete();
}

template <version V>
void opencl_device_work_dispatcher<V>::take_acquire(work_list& list) {
  synchronization_acquire& acquire = *list.head().acquire;
  {
    const std::lock_guard guard(lock_);
    const auto found = find_signal(key_of(acquire));
    if (found == signals_.end() || !found->is_taken_over)
      return;
    signals_.erase(found);
    --awaited_signals_;
  }
  acquire.set_submitted();
  acquire.set_complete();
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
