// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What is handed out as a command queue and as an event.
//
// Work that OpenCL refuses must not look done, and must not end whoever asked for it: it is handed out as an event that
// has failed. So events are objects of this library, which wrap OpenCL's if there is one. A queue knows the events that
// nobody has yet waited for, and gives them its failure when OpenCL cannot finish it.
//
// Any thread may use them, as any thread may use OpenCL's. Nothing here throws.
#pragma once

#include "base/thread_annotations.h"
#include "capability/opencl_functions.h"
#include "capability/root_device.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace qv {

class queue_object;

// An event: OpenCL's own, a failure in its place, or both. The commands make one for each piece of work that has a place for
// an event; it is counted here, so that OpenCL cannot refuse a reference, and ends with its last reference: the holders' and,
// until its queue is finished, the queue's.
class event_object {
public:
  // The status that a command gives for no event.
  static constexpr cl_int invalid = CL_INVALID_EVENT;

  constexpr event_object() noexcept = default;
  event_object(const event_object&) = delete;
  event_object& operator=(const event_object&) = delete;

  // An event that is there without memory being taken for it. It has failed with CL_OUT_OF_HOST_MEMORY, and is never freed.
  static event_object* out_of_memory() noexcept;

  // CL_SUCCESS, or the negative status that takes the place of what OpenCL says. Whoever sees the failure sees what came before
  // it.
  std::atomic<cl_int> failure = CL_SUCCESS;
  // OpenCL's event, null if the work did not reach OpenCL. Set before the event is handed out, and constant from then on, as is the
  // queue.
  cl_event event = nullptr;
  queue_object* queue = nullptr;

  void retain() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
  // Ends the object with its last reference; the status is OpenCL's for its own event.
  cl_int release(const opencl_functions& cl) noexcept;
  std::uint32_t references() const noexcept { return references_.load(std::memory_order_relaxed); }

private:
  friend class queue_object;

  explicit constexpr event_object(std::uint32_t references, cl_int failure) noexcept
      : failure(failure), references_(references) {}

  std::atomic<std::uint32_t> references_{1};
  event_object* next_ =
      nullptr; // among the outstanding events of the queue, and guarded by its lock while it is there
};

// A command queue: OpenCL's, and the events of the work that it was given and that nobody has waited for. Whoever releases it
// says by that that nobody uses it any more.
//
// `lock_` guards the outstanding events; it is never held while OpenCL is called.
class queue_object {
public:
  static constexpr cl_int invalid = CL_INVALID_COMMAND_QUEUE;

  explicit queue_object(cl_command_queue queue) noexcept : queue(queue) {}
  queue_object(const queue_object&) = delete;
  queue_object& operator=(const queue_object&) = delete;

  const cl_command_queue queue;

  // Work that OpenCL has taken, with its event or without one.
  void add_outstanding(event_object& event) noexcept TARVA_EXCLUDES(lock_);
  void add_outstanding_without_event() noexcept { has_work_without_event_ = true; }

  // Waits for all work. Succeeds also if OpenCL cannot finish the queue: then the events tell, and all that can be waited
  // for has ended; `is_finished` is false. Only work that has no event leaves nobody else to tell.
  cl_int finish(const root_device& device, bool& is_finished) noexcept TARVA_EXCLUDES(lock_);

  // Ends the object. The status is OpenCL's.
  cl_int release(const opencl_functions& cl) noexcept TARVA_EXCLUDES(lock_);

private:
  // All of them, linked by `next_`; the queue's references go to the caller.
  event_object* take_outstanding() noexcept TARVA_EXCLUDES(lock_);

  oryn::mutex lock_;
  // In the order in which they were enqueued, so that appending one costs the same however many there are.
  event_object* first_ TARVA_GUARDED_BY(lock_) = nullptr;
  event_object* last_ TARVA_GUARDED_BY(lock_) = nullptr;
  std::atomic<bool> has_work_without_event_ = false;
};

} // namespace qv
