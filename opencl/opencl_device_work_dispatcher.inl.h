// The bodies of opencl_device_work_dispatcher.h, compiled once for each version.
#pragma once

#include "base/end_of_process.h"
#include "base/logging.h"
#include "ir/host_function_call.h"
#include "ir/synchronization.h"
#include "opencl/opencl_device.h"
#include "opencl/opencl_device_work_dispatcher.h"
#include "opencl/opencl_stage.inl.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace oryn::tarva::library::device_ir::opencl {

namespace detail {

template <version V>
synchronization_acquire& head_acquire(const work_list<V>& list) {
  return expect<synchronization_acquire>(
      *list.head().command, "Impossible situation.  Expected an acquire command, but did not get one.");
}

} // namespace detail

template <version V>
opencl_device_work_dispatcher<V>::opencl_device_work_dispatcher(const skerv::opencl::context<V>& context,
                                                                const skerv::opencl::device<V>& device)
    : opencl_stage_(context, device) {}

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
  } catch (...) {
    // Closed by a shutdown that came in between.
  }
}

template <version V>
std::unique_ptr<prepared_work> opencl_device_work_dispatcher<V>::prepare_work(const command_graph& graph) {
  auto prepared = std::make_unique<prepared_list>();
  work_list<V>& list = prepared->only.emplace_back();
  list.items.reserve(graph.nodes().size());
  try {
    for (auto& command : graph.topological_sort())
      list.items.emplace_back(std::move(command));
  } catch (const std::logic_error&) {
    list.fault = std::current_exception();
  }
  const auto acquires = std::count_if(list.items.begin(), list.items.end(), [](const work_item<V>& item) {
    return item.command->get_kind() == command_kind::synchronization_acquire;
  });
  if (acquires != 0) {
    const std::lock_guard guard(lock_);
    acquires_.expect(static_cast<std::size_t>(acquires));
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
  take_in([&] { acquires_.add({release_device, acquire_device, sync_id}); });
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
  became_idle_.notify_all();
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
    acquires_.clear();
  }
  std::exception_ptr reason;
  try {
    reason = std::make_exception_ptr(
        std::logic_error("The work dispatcher was shut down before the command could be run."));
  } catch (...) {
    reason = std::current_exception();
  }
  for (work_list<V>& each : work_lists_)
    for (; !each.is_empty(); ++each.next)
      each.head().command->abandon(reason);
  work_lists_.clear();
}

template <version V>
bool opencl_device_work_dispatcher<V>::has_work() {
  if (shutdown_requested_)
    return true;
  const std::lock_guard guard(lock_);
  bool is_waiting = false;
  for (const work_list<V>& one : work_lists_) {
    if (can_advance(one))
      return true;
    is_waiting = is_waiting || one.starts_with(command_kind::synchronization_acquire);
  }
  const bool is_called = !pending_lists_.empty() || acquires_.has_new();
  is_busy_ = is_called || is_waiting;
  if (!is_busy_)
    became_idle_.notify_all();
  return is_called;
}

// A worker that has told the end of a request may still hold it for a moment.
template <version V>
void opencl_device_work_dispatcher<V>::wait_until_idle() {
  std::unique_lock guard(lock_);
  became_idle_.wait(guard, [this] { return !is_busy_ || shutdown_requested_; });
}

template <version V>
bool opencl_device_work_dispatcher<V>::can_advance(const work_list<V>& waiting) const {
  if (waiting.starts_with(command_kind::synchronization_acquire))
    return acquires_.contains(acquire_set::key_of(detail::head_acquire(waiting)));
  return waiting.starts_with(opencl_kind<V>) || waiting.starts_with(command_kind::synchronization_release) ||
         waiting.starts_with(command_kind::host_function_call);
}

template <version V>
void opencl_device_work_dispatcher<V>::worker_main() noexcept {
  mark_worker_thread();
  try {
    run_until_shutdown();
    if (!work_lists_.empty())
      log_warning("About to shutdown work dispatcher thread, but work remains.");
  } catch (const std::exception& error) {
    log_critical(
        "[device dispatcher] worker thread encountered an exception.  Aborting program. Exception: {}",
        error.what());
    fail_process([this] { wake_callers(); });
  } catch (...) {
    log_critical("[device dispatcher] worker thread encountered an unknown exception.  Aborting program.");
    fail_process([this] { wake_callers(); });
  }
}

// They find their requests as unfinished as before.
template <version V>
void opencl_device_work_dispatcher<V>::wake_callers() const {
  for (const work_list<V>& each : work_lists_)
    if (!each.items.empty())
      each.items.front().command->get_physical_operation()->get_logical_operation()->wake_waiters();
}

template <version V>
void opencl_device_work_dispatcher<V>::run_until_shutdown() {
  const std::function<bool()> predicate = [this] { return has_work(); };
  while (!shutdown_requested_) {
    take_over_pending_work();
    for (work_list<V>& each : work_lists_)
      pass(each);
    work_lists_.remove_if([](const work_list<V>& one) { return one.is_empty(); });
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
  acquires_.take_over();
}

template <version V>
void opencl_device_work_dispatcher<V>::pass(work_list<V>& current) {
  opencl_stage_.run(current);
  for (; current.starts_with(command_kind::host_function_call); ++current.next)
    expect<host_function_call>(*current.head().command,
                               "Impossible situation.  Expected a host command, but did not get one.")
        .run();
  for (; current.starts_with(command_kind::synchronization_release); ++current.next)
    expect<synchronization_release>(*current.head().command,
                                    "Impossible situation.  Expected a release command, but did not get one.")
        .run();
  if (current.starts_with(command_kind::synchronization_acquire))
    take_acquire(current);
}

template <version V>
void opencl_device_work_dispatcher<V>::take_acquire(work_list<V>& current) {
  auto& acquire = detail::head_acquire(current);
  const acquire_set::key key = acquire_set::key_of(acquire);
  {
    const std::lock_guard guard(lock_);
    if (!acquires_.contains(key))
      return;
    acquires_.remove(key);
  }
  acquire.set_submitted();
  acquire.set_complete();
  ++current.next;
}

} // namespace oryn::tarva::library::device_ir::opencl

namespace oryn::tarva::library {

template <version V>
std::unique_ptr<device_work_dispatcher> make_work_dispatcher(const skerv::opencl::context<V>& context,
                                                             const skerv::opencl::device<V>& device) {
  return std::make_unique<device_ir::opencl::opencl_device_work_dispatcher<V>>(context, device);
}

} // namespace oryn::tarva::library
