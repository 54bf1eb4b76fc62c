#pragma once

#include "access/opencl/command.h"
#include "access/opencl/kernel.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace oryn::skerv::opencl {

// Launches a kernel with the arguments that it has at the time of `enqueue`. Of the sizes the first
// `work_dim` count.
template <version V>
class nd_range_kernel final : public command<V> {
public:
  using sizes = std::array<std::size_t, 3>;

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

  void* kernel_;
  sizes global_offset_;
  sizes global_size_;
  sizes local_size_;
  std::uint32_t work_dim_;
};

template <version V>
void nd_range_kernel<V>::enqueue(const common::call_handle& call_handle, void* queue,
                                 std::uint32_t wait_count, void* const* wait_list, void** event_out) const {
  qv::enqueue_nd_range_kernel_record record{};
  record.kernel = kernel_;
  record.work_dim = work_dim_;
  record.global_work_offset = version_traits<V>::has_global_offset ? global_offset_.data() : nullptr;
  record.global_work_size = global_size_.data();
  record.local_work_size = local_size_.data();
  enqueue_record<V, qv::operation::enqueue_nd_range_kernel>(record, call_handle, queue, wait_count, wait_list,
                                                            event_out);
}

extern template class nd_range_kernel<version::v1_0>;
extern template class nd_range_kernel<version::v1_1>;
extern template class nd_range_kernel<version::v1_2>;
extern template class nd_range_kernel<version::v2_0>;
extern template class nd_range_kernel<version::v2_1>;
extern template class nd_range_kernel<version::v2_2>;

} // namespace oryn::skerv::opencl
