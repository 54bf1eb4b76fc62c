// What tells of an enqueued command.
#pragma once

#include "access/opencl/opencl_handle.h"

#include <cstdint>
#include <utility>

namespace oryn::skerv::opencl {

struct event_kind {
  static constexpr qv::operation release = qv::operation::release_event;
  static constexpr qv::operation retain = qv::operation::retain_event;
  static constexpr const char* destructor_fault = "Exception caught in event::~event().";
};

// Reports on one enqueued command. Only the worker thread of the device deals with events: it gets one from the
// queue, asks it once the command has ended, and gives it up.
template <version V>
class event : public opencl_handle<V, event_kind> {
public:
  // Takes over the reference that the enqueue command returned.
  event(common::call_handle call_handle, void* handle) noexcept
      : opencl_handle<V, event_kind>(std::move(call_handle), handle) {}

  // Throws what the command failed with, if it has. One that has not ended yet has not failed.
  void check_execution_status() const;

  // In nanoseconds of the device's clock. Only for a command that has ended, in a queue with profiling.
  std::uint64_t get_profiling_start() const;
  std::uint64_t get_profiling_end() const;

private:
  std::uint64_t get_profiling(std::uint32_t parameter) const;
};

} // namespace oryn::skerv::opencl
