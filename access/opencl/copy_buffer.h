#pragma once

#include "access/opencl/buffer.h"
#include "access/opencl/command.h"

#include <cstddef>
#include <cstdint>

namespace oryn::skerv::opencl {

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

template <version V>
void copy_buffer<V>::enqueue(const common::call_handle& call_handle, void* queue, std::uint32_t wait_count,
                             void* const* wait_list, void** event_out) const {
  qv::enqueue_copy_buffer_record record{};
  record.src_buffer = source_;
  record.dst_buffer = destination_;
  record.src_offset = source_offset_;
  record.dst_offset = destination_offset_;
  record.size = size_;
  enqueue_record<V, qv::operation::enqueue_copy_buffer>(record, call_handle, queue, wait_count, wait_list,
                                                        event_out);
}

extern template class copy_buffer<version::v1_0>;
extern template class copy_buffer<version::v1_1>;
extern template class copy_buffer<version::v1_2>;
extern template class copy_buffer<version::v2_0>;
extern template class copy_buffer<version::v2_1>;
extern template class copy_buffer<version::v2_2>;

} // namespace oryn::skerv::opencl
