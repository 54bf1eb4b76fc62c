#include "access/opencl/commands.h"

#include "access/common/info_query.h"
#include "access/common/opencl_constants.h"

namespace oryn::skerv::opencl {
namespace {

// Sends `record`, whose own fields the command has set. Its copy of the event's handle counts only if this returns.
template <version V, qv::operation Op>
void enqueue_record(qv::record<Op>& record, const common::call_handle& call_handle, void* queue,
                    std::uint32_t wait_count, void* const* wait_list, void** event_out) {
  record.command_queue = queue;
  record.num_events_in_wait_list = wait_count;
  record.event_wait_list = wait_list;
  record.event = event_out;
  call<V, Op>(call_handle, record);
}

} // namespace

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

// The constructor has seen to it that the product does not wrap around.
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

// The local size is never null here. Where all of it is 0, the capability library lets the device choose.
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

// Positive values are stages of a command that goes well; a negative one is the status that it failed with.
template <version V>
void event<V>::check_execution_status() const {
  const auto status = common::get_scalar_info<std::int32_t>(
      this->template query<qv::operation::get_event_info>(common::cl::event_command_execution_status));
  if (status < 0)
    common::check_status(status);
}

template <version V>
std::uint64_t event<V>::get_profiling_start() const {
  return get_profiling(common::cl::profiling_command_start);
}

template <version V>
std::uint64_t event<V>::get_profiling_end() const {
  return get_profiling(common::cl::profiling_command_end);
}

template <version V>
std::uint64_t event<V>::get_profiling(std::uint32_t parameter) const {
  return common::get_scalar_info<std::uint64_t>(
      this->template query<qv::operation::get_event_profiling_info>(parameter));
}

#define INSTANTIATE(v)                                                                                       \
  template class transfer_buffer<version::v, qv::operation::enqueue_read_buffer>;                            \
  template class transfer_buffer<version::v, qv::operation::enqueue_write_buffer>;                           \
  template class copy_buffer<version::v>;                                                                    \
  template class nd_range_kernel<version::v>;                                                                \
  template class event<version::v>;
ORYN_FOR_EACH_VERSION(INSTANTIATE)
#undef INSTANTIATE

#define INSTANTIATE(v) template class fill_buffer_bytes<version::v>;
ORYN_FOR_EACH_VERSION_FROM_1_2(INSTANTIATE)
#undef INSTANTIATE

} // namespace oryn::skerv::opencl
