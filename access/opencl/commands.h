// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The work that a queue takes: reading, writing, copying and filling buffers, and launching kernels. And the event,
// which tells what became of it.
#pragma once

#include "access/common/info_query.h"
#include "access/common/opencl_constants.h"
#include "access/opencl/buffer.h"
#include "access/opencl/kernel.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace oryn::skerv::opencl {

// What the commands have in common: the record of the OpenCL function, which the queue completes. A command is made on the stack of
// the worker thread of a device, given to basic_command_queue::enqueue, and forgotten. It names OpenCL objects, and memory of the
// host, without holding them: they must outlive that.
template <version V, qv::operation Op>
struct command {
  qv::record<Op> record{};
};

// Moves bytes between a buffer and host memory, which must stay valid until the event completes unless
// `blocking` is true.
template <version V, qv::operation Op>
struct transfer_buffer : command<V, Op> {
  using host_pointer = std::conditional_t<Op == qv::operation::enqueue_read_buffer, void*, const void*>;

  transfer_buffer(buffer_reference<V> buffer, bool blocking, std::size_t offset, std::size_t size,
                  host_pointer pointer) noexcept {
    this->record.buffer = buffer.handle;
    this->record.offset = offset;
    this->record.size = size;
    this->record.ptr = const_cast<void*>(pointer); // both directions share one record
    this->record.blocking = blocking ? 1 : 0;
  }
};

// The two directions share all but the command and whether the host memory may be written.
template <version V>
using read_buffer = transfer_buffer<V, qv::operation::enqueue_read_buffer>;
template <version V>
using write_buffer = transfer_buffer<V, qv::operation::enqueue_write_buffer>;

// Copies bytes between two buffers, or within one.
template <version V>
struct copy_buffer : command<V, qv::operation::enqueue_copy_buffer> {
  copy_buffer(buffer_reference<V> source, buffer_reference<V> destination, std::size_t source_offset,
              std::size_t destination_offset, std::size_t size) noexcept {
    this->record.src_buffer = source.handle;
    this->record.dst_buffer = destination.handle;
    this->record.src_offset = source_offset;
    this->record.dst_offset = destination_offset;
    this->record.size = size;
  }
};

// Writes `count` copies of a pattern, from the byte `offset` on. OpenCL has taken its own copy of the pattern by the
// time the command is enqueued.
template <version V>
requires(version_traits<V>::has_fill_buffer) struct fill_buffer_bytes
    : command<V, qv::operation::enqueue_fill_buffer> {
  // std::logic_error if so many bytes cannot be counted.
  fill_buffer_bytes(buffer_reference<V> buffer, std::span<const std::uint8_t> pattern, std::size_t offset,
                    std::size_t count) {
    this->record.buffer = buffer.handle;
    this->record.pattern = pattern.data();
    this->record.pattern_size = pattern.size();
    this->record.offset = offset;
    if (__builtin_mul_overflow(pattern.size(), count, &this->record.size))
      throw std::logic_error("Cannot fill a buffer with more bytes than can be counted.");
  }
};

// Launches a kernel with the arguments that it has when it is enqueued. Of the sizes the first `work_dim` count. The local size is
// never null here: where all of it is 0, the capability library lets the device choose.
template <version V>
struct nd_range_kernel : command<V, qv::operation::enqueue_nd_range_kernel> {
  using sizes = std::array<std::size_t, 3>;

  // The versions with and without an offset are told apart by their constructors.
  nd_range_kernel(const kernel<V>& kernel, std::uint32_t work_dim, const sizes& global_size,
                  const sizes& local_size) noexcept requires(!version_traits<V>::has_global_offset) {
    this->record.kernel = kernel.get_handle();
    this->record.work_dim = work_dim;
    this->record.global_work_size = global_size.data();
    this->record.local_work_size = local_size.data();
  }

  nd_range_kernel(const kernel<V>& kernel, std::uint32_t work_dim, const sizes& global_offset,
                  const sizes& global_size, const sizes& local_size) noexcept
      requires(version_traits<V>::has_global_offset) {
    this->record.kernel = kernel.get_handle();
    this->record.work_dim = work_dim;
    this->record.global_work_offset = global_offset.data();
    this->record.global_work_size = global_size.data();
    this->record.local_work_size = local_size.data();
  }
};

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

  // Throws what the command failed with, if it has. One that has not ended yet has not failed: positive values are stages.
  void check_execution_status() const {
    const auto status = common::get_scalar_info<std::int32_t>(
        this->template query<qv::operation::get_event_info>(common::cl::event_command_execution_status));
    if (status < 0)
      common::throw_status(status);
  }

  // In nanoseconds of the device's clock. Only for a command that has ended, in a queue with profiling.
  std::uint64_t get_profiling_start() const { return get_profiling(common::cl::profiling_command_start); }
  std::uint64_t get_profiling_end() const { return get_profiling(common::cl::profiling_command_end); }

private:
  std::uint64_t get_profiling(std::uint32_t parameter) const {
    return common::get_scalar_info<std::uint64_t>(
        this->template query<qv::operation::get_event_profiling_info>(parameter));
  }
};

} // namespace oryn::skerv::opencl
