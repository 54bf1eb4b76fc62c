#pragma once

#include "access/opencl/buffer.h"
#include "access/opencl/command.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace oryn::skerv::opencl {

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

template <version V>
using read_buffer = transfer_buffer<V, qv::operation::enqueue_read_buffer>;
template <version V>
using write_buffer = transfer_buffer<V, qv::operation::enqueue_write_buffer>;

template <version V, qv::operation Op>
void transfer_buffer<V, Op>::enqueue(const common::call_handle& call_handle, void* queue,
                                     std::uint32_t wait_count, void* const* wait_list,
                                     void** event_out) const {
  qv::record<Op> record{};
  record.buffer = buffer_;
  record.offset = offset_;
  record.size = size_;
  record.ptr = const_cast<void*>(pointer_); // both directions share one record
  record.blocking = blocking_ ? 1 : 0;
  enqueue_record<V, Op>(record, call_handle, queue, wait_count, wait_list, event_out);
}

extern template class transfer_buffer<version::v1_0, qv::operation::enqueue_read_buffer>;
extern template class transfer_buffer<version::v1_1, qv::operation::enqueue_read_buffer>;
extern template class transfer_buffer<version::v1_2, qv::operation::enqueue_read_buffer>;
extern template class transfer_buffer<version::v2_0, qv::operation::enqueue_read_buffer>;
extern template class transfer_buffer<version::v2_1, qv::operation::enqueue_read_buffer>;
extern template class transfer_buffer<version::v2_2, qv::operation::enqueue_read_buffer>;
extern template class transfer_buffer<version::v1_0, qv::operation::enqueue_write_buffer>;
extern template class transfer_buffer<version::v1_1, qv::operation::enqueue_write_buffer>;
extern template class transfer_buffer<version::v1_2, qv::operation::enqueue_write_buffer>;
extern template class transfer_buffer<version::v2_0, qv::operation::enqueue_write_buffer>;
extern template class transfer_buffer<version::v2_1, qv::operation::enqueue_write_buffer>;
extern template class transfer_buffer<version::v2_2, qv::operation::enqueue_write_buffer>;

} // namespace oryn::skerv::opencl
