// The bodies of opencl_stage.h, compiled once for each version.
#pragma once

#include "opencl/opencl_stage.h"

#include <new>
#include <stdexcept>

namespace oryn::tarva::library::device_ir::opencl {

// The commands of a list belong to one request. A run ends where the queue changes, since two queues know no
// order between them.
template <version V>
void opencl_stage<V>::run(work_list<V>& list) {
  if (!list.starts_with(opencl_kind<V>))
    return;
  const bool profiling = list.head().command->is_profiling_enabled();
  std::size_t end_of_run = list.next;
  bool any_enqueued = false;
  for (; end_of_run < list.items.size(); ++end_of_run) {
    work_item<V>& item = list.items[end_of_run];
    if (item.command->get_kind() != opencl_kind<V> || item.command->is_profiling_enabled() != profiling)
      break;
    enqueue(item, profiling ? profiling_queue_ : queue_);
    any_enqueued = any_enqueued || item.running.has_value();
  }
  const std::exception_ptr unfinished = any_enqueued ? finish(*list.head().command) : nullptr;
  for (; list.next < end_of_run; ++list.next)
    end(list.head(), unfinished);
}

// No event: the request has failed before, and the command has ended with its error instead of running. The
// first failure of a request out of here could not be known beforehand and ends the process. Lack of our own memory is
// none of these: it comes before anything is enqueued, so the command can fail by itself.
template <version V>
void opencl_stage<V>::enqueue(work_item<V>& item, dispatch_queue<V>& queue) {
  if (const auto earlier = item.command->get_request_error()) {
    item.command->abandon(earlier);
    return;
  }
  auto& command = expect<opencl_device_command<V>>(
      *item.command, "Impossible situation.  Expected an OpenCL command, but did not get one.");
  if (command.has_nothing_to_do()) {
    item.has_nothing_to_do = true;
    command.set_submitted();
    return;
  }
  try {
    item.running.emplace(command.enqueue(queue, 0, nullptr));
  } catch (const std::bad_alloc&) {
    command.abandon(std::current_exception());
  } catch (...) {
    const auto earlier = command.get_request_error();
    if (!earlier)
      throw;
    command.abandon(earlier);
  }
}

// A failure after the request has failed elsewhere is returned: then nobody knows how the commands of the run ended.
template <version V>
std::exception_ptr opencl_stage<V>::finish(const device_command& first) {
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
void opencl_stage<V>::end(work_item<V>& item, const std::exception_ptr& unfinished) {
  device_command& command = *item.command;
  if (item.has_nothing_to_do) {
    command.set_complete();
    return;
  }
  if (!item.running) {
    if (!command.has_ended())
      throw std::logic_error("Impossible situation.  An event is not in the command map.");
    return;
  }
  if (unfinished) {
    item.running.reset();
    command.abandon(unfinished);
    return;
  }
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

} // namespace oryn::tarva::library::device_ir::opencl
