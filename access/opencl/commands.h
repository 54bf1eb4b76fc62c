// The work that a queue takes: reading, writing, copying and filling buffers, and launching kernels. And the event,
// which tells what became of it.
#pragma once

#include "access/opencl/buffer.h"
#include "access/opencl/kernel.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

namespace oryn::skerv::opencl {

// What the commands have in common. A command is made on the stack of the worker thread of a device, given to
// basic_command_queue::enqueue, and forgotten. It names OpenCL objects without holding them: they must outlive its
// `enqueue`.
template <version V>
class command {
public:
  virtual ~command() = default;

  // `event_out` receives a reference to the command's event. If this throws, nothing has been enqueued.
  virtual void enqueue(const common::call_handle& call_handle, void* queue, std::uint32_t wait_count,
                       void* const* wait_list, void** event_out) const = 0;

protected:
  command() = default;
  command(const command&) = default;
  command& operator=(const command&) = default;
};

// Moves bytes between a buffer and host memory, which must stay valid until the event completes unless
// `blocking` is true.
template <version V, qv::operation Op>
class transfer_buffer final : public command<V> {
public:
  using host_pointer = std::conditional_t<Op == qv::operation::enqueue_read_buffer, void*, const void*>;

  transfer_buffer(buffer_reference<V> buffer, bool blocking, std::size_t offset, std::size_t size,
                  host_pointer pointer) noexcept
      : buffer_(buffer.get_handle()), pointer_(pointer), offset_(offset), size_(size), blocking_(blocking) {}

  void enqueue(const common::call_handle& call_handle, void* queue, std::uint32_t wait_count,
               void* const* wait_list, void** event_out) const override;

private:
  void* buffer_;
  host_pointer pointer_;
  std::size_t offset_;
  std::size_t size_;
  bool blocking_;
};

// The two directions share all but the command and whether the host memory may be written.
template <version V>
using read_buffer = transfer_buffer<V, qv::operation::enqueue_read_buffer>;
template <version V>
using write_buffer = transfer_buffer<V, qv::operation::enqueue_write_buffer>;

// Copies bytes between two buffers, or within one.
template <version V>
class copy_buffer final : public command<V> {
public:
  copy_buffer(buffer_reference<V> source, buffer_reference<V> destination, std::size_t source_offset,
              std::size_t destination_offset, std::size_t size) noexcept
      : source_(source.get_handle()), destination_(destination.get_handle()), source_offset_(source_offset),
        destination_offset_(destination_offset), size_(size) {}

  void enqueue(const common::call_handle& call_handle, void* queue, std::uint32_t wait_count,
               void* const* wait_list, void** event_out) const override;

private:
  void* source_;
  void* destination_;
  std::size_t source_offset_;
  std::size_t destination_offset_;
  std::size_t size_;
};

// Writes `count` copies of a pattern, from the byte `offset` on. OpenCL has taken its own copy of the pattern by the
// time `enqueue` returns.
template <version V>
requires(version_traits<V>::has_fill_buffer) class fill_buffer_bytes final : public command<V> {
public:
  // std::logic_error if so many bytes cannot be counted.
  fill_buffer_bytes(buffer_reference<V> buffer, std::vector<std::uint8_t> pattern, std::size_t offset,
                    std::size_t count)
      : buffer_(buffer.get_handle()), pattern_(std::move(pattern)), offset_(offset), count_(count) {
    if (!pattern_.empty() && count > std::numeric_limits<std::size_t>::max() / pattern_.size())
      throw std::logic_error("Cannot fill a buffer with more bytes than can be counted.");
  }

  void enqueue(const common::call_handle& call_handle, void* queue, std::uint32_t wait_count,
               void* const* wait_list, void** event_out) const override;

private:
  void* buffer_;
  std::vector<std::uint8_t> pattern_;
  std::size_t offset_;
  std::size_t count_;
};

// Launches a kernel with the arguments that it has at the time of `enqueue`. Of the sizes the first
// `work_dim` count.
template <version V>
class nd_range_kernel final : public command<V> {
public:
  using sizes = std::array<std::size_t, 3>;

  // The versions with and without an offset are told apart by their constructors.
  nd_range_kernel(const kernel<V>& kernel, std::uint32_t work_dim, const sizes& global_size,
                  const sizes& local_size) noexcept requires(!version_traits<V>::has_global_offset)
      : nd_range_kernel(work_dim, kernel.get_handle(), {}, global_size, local_size) {}

  nd_range_kernel(const kernel<V>& kernel, std::uint32_t work_dim, const sizes& global_offset,
                  const sizes& global_size, const sizes& local_size) noexcept
      requires(version_traits<V>::has_global_offset)
      : nd_range_kernel(work_dim, kernel.get_handle(), global_offset, global_size, local_size) {}

  void enqueue(const common::call_handle& call_handle, void* queue, std::uint32_t wait_count,
               void* const* wait_list, void** event_out) const override;

private:
  nd_range_kernel(std::uint32_t work_dim, void* kernel, const sizes& global_offset, const sizes& global_size,
                  const sizes& local_size) noexcept
      : kernel_(kernel), global_offset_(global_offset), global_size_(global_size), local_size_(local_size),
        work_dim_(work_dim) {}

  // OpenCL is given the addresses of these, and copies them within `enqueue`.
  void* kernel_;
  sizes global_offset_;
  sizes global_size_;
  sizes local_size_;
  std::uint32_t work_dim_;
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

  // Throws what the command failed with, if it has. One that has not ended yet has not failed.
  void check_execution_status() const;

  // In nanoseconds of the device's clock. Only for a command that has ended, in a queue with profiling.
  std::uint64_t get_profiling_start() const;
  std::uint64_t get_profiling_end() const;

private:
  std::uint64_t get_profiling(std::uint32_t parameter) const;
};

} // namespace oryn::skerv::opencl
