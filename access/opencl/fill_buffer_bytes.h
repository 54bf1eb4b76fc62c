#pragma once

#include "access/opencl/buffer.h"
#include "access/opencl/command.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

namespace oryn::skerv::opencl {

// Writes `count` copies of a pattern, from the byte `offset` on.
template <version V>
requires(version_traits<V>::has_fill_buffer) class fill_buffer_bytes final : public command<V> {
public:
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

template <version V>
requires(version_traits<V>::has_fill_buffer) void fill_buffer_bytes<V>::enqueue(
    const common::call_handle& call_handle, void* queue, std::uint32_t wait_count, void* const* wait_list,
    void** event_out) const {
  qv::enqueue_fill_buffer_record record{};
  record.buffer = buffer_;
  record.pattern = pattern_.data();
  record.pattern_size = pattern_.size();
  record.offset = offset_;
  record.size = pattern_.size() * count_;
  enqueue_record<V, qv::operation::enqueue_fill_buffer>(record, call_handle, queue, wait_count, wait_list,
                                                        event_out);
}

extern template class fill_buffer_bytes<version::v1_2>;
extern template class fill_buffer_bytes<version::v2_0>;
extern template class fill_buffer_bytes<version::v2_1>;
extern template class fill_buffer_bytes<version::v2_2>;

} // namespace oryn::skerv::opencl
