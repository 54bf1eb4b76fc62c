// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "capability/queues.h"

#include "capability/opencl_queries.h"

#include <limits>
#include <utility>

namespace qv {
namespace {

// Whether OpenCL says how the work of the event has ended.
bool has_ended(const opencl_functions& cl, cl_event event) {
  cl_int status = CL_QUEUED;
  return ask_value(status, CL_EVENT_COMMAND_EXECUTION_STATUS, cl.get_event_info, event) == CL_SUCCESS &&
         status <= CL_COMPLETE;
}

// Where lost work counts as done, a finish tells nothing unless the device is there after it.
cl_int finish_on(const root_device& device, cl_command_queue queue) {
  const cl_int status = call_or_refuse(device.cl.finish, queue);
  return status == CL_SUCCESS && device.quirks.completes_lost_work && is_not_there(device)
             ? CL_DEVICE_NOT_AVAILABLE
             : status;
}

// For an event of a queue that could not be finished. Work that has ended keeps its own status, where that is to be believed;
// any other has that of the queue. After this it writes nothing any more, as far as anybody can tell, since it was waited
// for by itself.
void wait_or_fail(const root_device& device, event_object& event, cl_int status) {
  const cl_event waited_for = event.event;
  static_cast<void>(call_or_refuse(device.cl.wait_for_events, cl_uint{1}, &waited_for));
  if (device.quirks.completes_lost_work || !has_ended(device.cl, waited_for))
    event.failure = as_failure(status);
}

} // namespace

event_object* event_object::out_of_memory() noexcept {
  // With so many references that it never ends, however often it is released.
  static constinit event_object event(std::numeric_limits<std::uint32_t>::max() / 2, CL_OUT_OF_HOST_MEMORY);
  return &event;
}

cl_int event_object::release(const opencl_functions& cl) noexcept {
  if (references_.fetch_sub(1, std::memory_order_acq_rel) != 1)
    return CL_SUCCESS;
  const cl_int status = event == nullptr ? CL_SUCCESS : call_or_refuse(cl.release_event, event);
  delete this;
  return status;
}

void queue_object::add_outstanding(event_object& event) noexcept {
  event.retain(); // for the queue
  event.queue = this;
  const oryn::lock_guard guard(lock_);
  (first_ == nullptr ? first_ : last_->next_) = &event;
  last_ = &event;
}

event_object* queue_object::take_outstanding() noexcept {
  const oryn::lock_guard guard(lock_);
  last_ = nullptr;
  return std::exchange(first_, nullptr);
}

// The events that are outstanding now are this finish's to wait for. Those of another thread's finish are that one's, and
// OpenCL's finish does not return before both have ended.
cl_int queue_object::finish(const root_device& device, bool& is_finished) noexcept {
  // Before the finish: what another thread enqueues meanwhile is for the next one.
  const bool nobody_else_tells = has_work_without_event_.exchange(false);
  event_object* const outstanding = take_outstanding();
  const cl_int status = finish_on(device, queue);
  is_finished = status == CL_SUCCESS;
  for (event_object* each = outstanding; each != nullptr;) {
    event_object* const next = std::exchange(each->next_, nullptr);
    if (status != CL_SUCCESS)
      wait_or_fail(device, *each, status);
    each->release(device.cl);
    each = next;
  }
  return nobody_else_tells ? status : CL_SUCCESS;
}

// Events that nobody has waited for live on with their holders, and tell what OpenCL tells of them.
cl_int queue_object::release(const opencl_functions& cl) noexcept {
  for (event_object* each = take_outstanding(); each != nullptr;)
    std::exchange(each, each->next_)->release(cl);
  const cl_int status = call_or_refuse(cl.release_command_queue, queue);
  delete this;
  return status;
}

} // namespace qv
