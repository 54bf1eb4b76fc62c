// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "opencl/opencl_device_work_dispatcher.h"

#include "base/end_of_process.h"
#include "base/logging.h"
#include "ir/device_command.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <stdexcept>

namespace oryn::tarva::library {

// A list of one, which is handed over without needing memory.
struct prepared_work {
  explicit prepared_work(device_ir::opencl::opencl_device_work_dispatcher& dispatcher) noexcept
      : dispatcher(dispatcher) {}
  prepared_work(const prepared_work&) = delete;
  prepared_work& operator=(const prepared_work&) = delete;
  ~prepared_work() {
    if (acquires != 0 && !only.empty())
      dispatcher.forgo_acquires(acquires);
  }

  device_ir::opencl::opencl_device_work_dispatcher& dispatcher;
  std::list<device_ir::opencl::work_list> only;
  std::size_t acquires = 0; // for whose signals there is room
};

} // namespace oryn::tarva::library

namespace oryn::tarva::library::device_ir::opencl {

acquire_set::key acquire_set::key_of(const synchronization_acquire& acquire) {
  return {acquire.get_release_device(), acquire.get_acquire_device(), acquire.get_sync_id()};
}

// A signal comes on the worker of another device, which must not run out of memory for it.
void acquire_set::reserve_for(std::size_t acquires) {
  signals_.reserve(expected_ + acquires);
  expected_ += acquires;
}

void acquire_set::add(const key& signal) {
  if (find(signal) == signals_.end())
    signals_.push_back({signal});
}

bool acquire_set::has_new() const {
  return std::any_of(signals_.begin(), signals_.end(), [](const entry& one) { return !one.is_taken_over; });
}

void acquire_set::take_over() {
  for (entry& one : signals_)
    one.is_taken_over = true;
}

bool acquire_set::contains(const key& signal) const {
  const auto found = find(signal);
  return found != signals_.end() && found->is_taken_over;
}

void acquire_set::remove(const key& signal) {
  if (!contains(signal))
    throw std::logic_error("Impossible.  Could not remove a tuple from the acquire set that is not present.");
  signals_.erase(find(signal));
  --expected_;
}

std::vector<acquire_set::entry>::const_iterator acquire_set::find(const key& signal) const {
  return std::find_if(signals_.begin(), signals_.end(),
                      [&](const entry& one) { return one.signal == signal; });
}

opencl_device_work_dispatcher::opencl_device_work_dispatcher(std::unique_ptr<opencl_queues> queues)
    : opencl_stage_(std::move(queues)) {}

// For a dispatcher that nobody has shut down, since a start or a stop of the library was cut short.
opencl_device_work_dispatcher::~opencl_device_work_dispatcher() {
  if (shutdown_requested_)
    return;
  try {
    shutdown();
  } catch (...) {
    log_error("Caught an exception while destroying a work dispatcher.");
  }
}

// Refuses once the shutdown has begun, and then has handed nothing over. What came before, the shutdown ends.
template <class Handover>
void opencl_device_work_dispatcher::hand_over(Handover handover) {
  {
    const lock_guard guard(lock_);
    if (shutdown_requested_)
      throw std::logic_error("Cannot submit work to a dispatcher that has been shutdown.");
    handover();
    is_busy_ = true;
  }
  try {
    work_pipe_.notify();
  } catch (...) {
    // Closed by a shutdown that came in between.
  }
}

std::shared_ptr<prepared_work>
opencl_device_work_dispatcher::prepare_work(const dag<std::shared_ptr<device_command>>& graph) {
  auto prepared = std::make_shared<prepared_work>(*this);
  work_list& list = prepared->only.emplace_back();
  try {
    list.commands = graph.topological_sort();
    if (!list.commands.empty())
      list.acceptance_number =
          list.commands.front()->physical_operation->logical_operation->acceptance_number;
  } catch (const std::logic_error&) {
    list.fault = std::current_exception();
  }
  const auto acquires = std::count_if(list.commands.begin(), list.commands.end(), [](const auto& command) {
    return command->stage == command_stage::synchronization_acquire;
  });
  if (acquires != 0) {
    const lock_guard guard(lock_);
    acquires_.reserve_for(static_cast<std::size_t>(acquires));
    prepared->acquires = static_cast<std::size_t>(acquires);
  }
  return prepared;
}

void opencl_device_work_dispatcher::forgo_acquires(std::size_t acquires) noexcept {
  const lock_guard guard(lock_);
  acquires_.forgo(acquires);
}

void opencl_device_work_dispatcher::submit_work(const std::shared_ptr<prepared_work>& work) {
  hand_over([&]() TARVA_REQUIRES(lock_) { pending_lists_.splice(pending_lists_.end(), work->only); });
}

void opencl_device_work_dispatcher::signal_acquire(const std::shared_ptr<library_device>& release_device,
                                                   const std::shared_ptr<library_device>& acquire_device,
                                                   std::uint64_t sync_id) {
  hand_over([&]() TARVA_REQUIRES(lock_) { acquires_.add({release_device, acquire_device, sync_id}); });
}

// The worker lives in a foreign process: the host's signals are the host's threads' to handle.
void opencl_device_work_dispatcher::start(const std::string& thread_name) {
  const masked_signals masked;
  worker_ = native_thread(thread_name, [this] { worker_main(); });
}

// Whoever waits for the worker to become idle is woken first: it will do nothing more.
void opencl_device_work_dispatcher::shutdown() {
  {
    const lock_guard guard(lock_);
    if (shutdown_requested_.exchange(true))
      throw std::logic_error("Attempting to shutdown a work dispatcher that was already shutdown.");
  }
  became_idle_.notify_all();
  work_pipe_.close();
  // A worker that ends the process runs the exit handlers itself: it cannot join itself, must not wait for another
  // worker that may have failed too, and must wake no caller.
  if (process_has_failed) {
    if (worker_.joinable())
      worker_.detach();
    return;
  }
  if (worker_.joinable())
    worker_.join();
  abandon_remaining_work();
}

// The worker has ended, so its lists belong to this thread. Somebody may be waiting for each of their commands.
void opencl_device_work_dispatcher::abandon_remaining_work() noexcept {
  {
    const lock_guard guard(lock_);
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
  for (work_list& list : work_lists_)
    for (; !list.is_empty(); ++list.next)
      list.head().abandon(reason);
  work_lists_.clear();
}

// The worker asks this before it sleeps. It is idle when it holds no list at all; one that waits for another device is
// work, although there is nothing to do for it now.
bool opencl_device_work_dispatcher::has_work() {
  if (shutdown_requested_)
    return true;
  const lock_guard guard(lock_);
  bool is_waiting = false;
  for (const work_list& list : work_lists_) {
    if (can_advance(list))
      return true;
    is_waiting = is_waiting || list.starts_with(command_stage::synchronization_acquire);
  }
  const bool is_called = !pending_lists_.empty() || acquires_.has_new();
  is_busy_ = is_called || is_waiting;
  if (!is_busy_)
    became_idle_.notify_all();
  return is_called;
}

// A worker that has reported the end of an operation may still hold its commands for a moment.
void opencl_device_work_dispatcher::wait_until_idle() {
  unique_lock guard(lock_);
  while (is_busy_ && !shutdown_requested_)
    became_idle_.wait(guard.native());
}

// A list goes on at once, unless it stands before an acquire whose signal has not come.
bool opencl_device_work_dispatcher::can_advance(const work_list& list) const {
  if (list.starts_with(command_stage::synchronization_acquire))
    return acquires_.contains(acquire_set::key_of(list.head_as<synchronization_acquire>()));
  return !list.is_empty();
}

// A failure that no command can report arrives here. It ends the process, as nobody knows what the device has done.
void opencl_device_work_dispatcher::worker_main() noexcept {
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

// Their operations are still unfinished; they then see that the process has failed.
void opencl_device_work_dispatcher::wake_callers() const {
  for (const work_list& list : work_lists_)
    if (!list.commands.empty())
      list.commands.front()->physical_operation->logical_operation->wake_waiters();
}

// One round of the loop is a sweep. What is handed over meanwhile waits for the next one.
void opencl_device_work_dispatcher::run_until_shutdown() {
  const std::function<bool()> predicate = [this] { return has_work(); };
  while (!shutdown_requested_) {
    take_over_pending_work();
    for (work_list& list : work_lists_)
      advance(list);
    work_lists_.remove_if([](const work_list& list) { return list.is_empty(); });
    work_pipe_.wait(predicate);
  }
}

// Operations in the order in which they were accepted; of one operation, or where there is no such order, the newest list
// first.
void opencl_device_work_dispatcher::take_over_pending_work() {
  const lock_guard guard(lock_);
  pending_lists_.reverse();
  pending_lists_.sort([](const work_list& left, const work_list& right) {
    return left.acceptance_number < right.acceptance_number;
  });
  while (!pending_lists_.empty()) {
    work_lists_.splice(work_lists_.end(), pending_lists_, pending_lists_.begin());
    if (work_lists_.back().fault)
      std::rethrow_exception(work_lists_.back().fault);
  }
  acquires_.take_over();
}

// The order of the stages is fixed. A command whose stage has passed when its turn comes waits for the next sweep.
void opencl_device_work_dispatcher::advance(work_list& list) {
  opencl_stage_.run(list);
  for (; list.starts_with(command_stage::host_function_call); ++list.next)
    list.head_as<host_function_call>().run();
  for (; list.starts_with(command_stage::synchronization_release); ++list.next)
    list.head_as<synchronization_release>().run();
  if (list.starts_with(command_stage::synchronization_acquire))
    advance_past_acquire(list);
}

// The dispatcher completes an acquire itself, as nothing has to run for it.
void opencl_device_work_dispatcher::advance_past_acquire(work_list& list) {
  auto& acquire = list.head_as<synchronization_acquire>();
  const acquire_set::key key = acquire_set::key_of(acquire);
  {
    const lock_guard guard(lock_);
    if (!acquires_.contains(key))
      return;
    acquires_.remove(key);
  }
  acquire.set_submitted();
  acquire.set_complete();
  ++list.next;
}

} // namespace oryn::tarva::library::device_ir::opencl
