// What is handed out as a command queue and as an event.
//
// Work that OpenCL refuses must not look done, and must not end whoever asked for it: it is handed out as an event that
// has failed. So events are objects of this library, which wrap OpenCL's if there is one. A queue knows the events that
// nobody has yet waited for, and settles them when OpenCL cannot finish it.
#pragma once

#include "capability/opencl_functions.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace qv {

class queue_object;

class event_object {
public:
  constexpr event_object() noexcept = default;
  event_object(const event_object&) = delete;
  event_object& operator=(const event_object&) = delete;

  // An event that is there without memory being taken for it. It has failed with CL_OUT_OF_HOST_MEMORY.
  static event_object* for_want_of_memory() noexcept;

  // CL_SUCCESS, or the negative status that takes the place of what OpenCL says.
  cl_int failure() const noexcept { return failure_.load(std::memory_order_acquire); }
  void fail(cl_int status) noexcept { failure_.store(status, std::memory_order_release); }

  // Null if the work did not reach OpenCL.
  cl_event event() const noexcept { return event_; }
  cl_event* place_of_event() noexcept { return &event_; }
  queue_object* queue() const noexcept { return queue_; }

  void retain() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
  // Ends the object with its last reference; the status is OpenCL's for its own event.
  cl_int release(const opencl_functions& cl) noexcept;
  std::uint32_t references() const noexcept { return references_.load(std::memory_order_relaxed); }

private:
  friend class queue_object;

  explicit constexpr event_object(std::uint32_t references, cl_int failure) noexcept
      : references_(references), failure_(failure) {}

  std::atomic<std::uint32_t> references_{1};
  std::atomic<cl_int> failure_{CL_SUCCESS};
  cl_event event_ = nullptr;
  queue_object* queue_ = nullptr;
  event_object* next_ = nullptr; // among the outstanding events of the queue
};

class queue_object {
public:
  explicit queue_object(cl_command_queue queue) noexcept : queue_(queue) {}
  queue_object(const queue_object&) = delete;
  queue_object& operator=(const queue_object&) = delete;

  cl_command_queue queue() const noexcept { return queue_; }

  // Work that OpenCL has taken, with its event or without one.
  void note_enqueued(event_object& event) noexcept;
  void note_enqueued_without_event() noexcept { has_work_without_event_ = true; }

  // Waits for all work. Succeeds also if OpenCL cannot finish the queue: then the events tell, and all that can be waited
  // for has ended; `is_finished` is false. Only work that has no event leaves nobody else to tell.
  cl_int finish(const opencl_functions& cl, bool& is_finished) noexcept;

  // Ends the object.
  cl_int release(const opencl_functions& cl) noexcept;

private:
  event_object* take_outstanding() noexcept;

  const cl_command_queue queue_;
  std::mutex lock_;
  event_object* first_ = nullptr; // outstanding, in the order of their enqueueing
  event_object* last_ = nullptr;
  std::atomic<bool> has_work_without_event_ = false;
};

} // namespace qv
