#include "capability/executor.h"

#include <algorithm>

namespace qv {
namespace {

template <typename Record>
cl_command_queue queue_of(const Record& record) {
  return static_cast<cl_command_queue>(record.command_queue);
}

template <typename Record>
const cl_event* wait_list_of(const Record& record) {
  return reinterpret_cast<const cl_event*>(record.event_wait_list);
}

template <typename Record>
cl_event* event_of(const Record& record) {
  return reinterpret_cast<cl_event*>(record.event);
}

template <typename Record>
bool refuse_missing_events(Record& record) {
  if (!lacks_entries(wait_list_of(record), record.num_events_in_wait_list))
    return false;
  record.status = CL_INVALID_EVENT_WAIT_LIST;
  return true;
}

// Some implementations follow blindly a range whose end cannot be counted.
template <typename Record>
bool refuse_endless_range(Record& record, std::size_t offset) {
  if (offset + record.size >= offset)
    return false;
  record.status = CL_INVALID_VALUE;
  return true;
}

template <typename Function>
void transfer(Function* function, enqueue_transfer_buffer_record& record) {
  if (refuse_missing_events(record) || refuse_endless_range(record, record.offset))
    return;
  record.status = call_or_refuse(function, queue_of(record), static_cast<cl_mem>(record.buffer),
                                 record.blocking, record.offset, record.size, record.ptr,
                                 record.num_events_in_wait_list, wait_list_of(record), event_of(record));
}

// Sizes of zero end the process on some devices.
cl_uint count_zeros(const std::size_t* sizes, cl_uint dimensions) {
  return static_cast<cl_uint>(std::count(sizes, sizes + dimensions, std::size_t{0}));
}

// The most work-items that one group of the kernel may have, or 1.
std::uint64_t largest_group(const root_device& device, const enqueue_nd_range_kernel_record& record) {
  if (device.quirks.chooses_groups_of_one)
    return 1;
  std::size_t size = 0;
  const cl_int status =
      call_or_refuse(device.cl.get_kernel_work_group_info, static_cast<cl_kernel>(record.kernel), device.id,
                     cl_kernel_work_group_info{CL_KERNEL_WORK_GROUP_SIZE}, sizeof size,
                     static_cast<void*>(&size), static_cast<std::size_t*>(nullptr));
  return status == CL_SUCCESS ? std::max<std::size_t>(size, 1) : 1;
}

// True if the implementation would end the process, or count too few groups and leave work undone. Without a
// local size the device chooses, and what is certain is that no group is larger than the largest.
bool has_too_many_groups(const root_device& device, const enqueue_nd_range_kernel_record& record,
                         const std::size_t* local_size) {
  constexpr std::uint64_t limit = std::uint64_t{1} << 32;
  if (device.quirks.groups == group_limit::none)
    return false;
  std::uint64_t all = 1;
  std::uint64_t most = 0;
  for (cl_uint i = 0; i < record.work_dim; ++i) {
    const std::uint64_t items = record.global_work_size[i];
    const std::uint64_t size = local_size == nullptr ? 1 : local_size[i];
    const std::uint64_t groups = items / size + (items % size != 0 ? 1 : 0);
    most = std::max(most, groups);
    if (__builtin_mul_overflow(all, groups, &all))
      all = ~std::uint64_t{0};
  }
  const std::uint64_t counted = device.quirks.groups == group_limit::under_2_32_in_all ? all : most;
  if (counted < limit || local_size != nullptr)
    return counted >= limit;
  return counted / largest_group(device, record) >= limit;
}

} // namespace

void enqueue_read_buffer(const root_device& device, enqueue_transfer_buffer_record& record) {
  transfer(device.cl.enqueue_read_buffer, record);
}

void enqueue_write_buffer(const root_device& device, enqueue_transfer_buffer_record& record) {
  transfer(device.cl.enqueue_write_buffer, record);
}

void enqueue_copy_buffer(const root_device& device, enqueue_copy_buffer_record& record) {
  if (refuse_missing_events(record) || refuse_endless_range(record, record.src_offset) ||
      refuse_endless_range(record, record.dst_offset))
    return;
  record.status =
      call_or_refuse(device.cl.enqueue_copy_buffer, queue_of(record), static_cast<cl_mem>(record.src_buffer),
                     static_cast<cl_mem>(record.dst_buffer), record.src_offset, record.dst_offset,
                     record.size, record.num_events_in_wait_list, wait_list_of(record), event_of(record));
}

void enqueue_fill_buffer(const root_device& device, enqueue_fill_buffer_record& record) {
  if (refuse_missing_events(record) || refuse_endless_range(record, record.offset))
    return;
  record.status =
      call_or_refuse(device.cl.enqueue_fill_buffer, queue_of(record), static_cast<cl_mem>(record.buffer),
                     record.pattern, record.pattern_size, record.offset, record.size,
                     record.num_events_in_wait_list, wait_list_of(record), event_of(record));
}

void enqueue_nd_range_kernel(const root_device& device, enqueue_nd_range_kernel_record& record) {
  if (refuse_missing_events(record))
    return;
  if (record.kernel == nullptr) {
    record.status = CL_INVALID_KERNEL;
    return;
  }
  const cl_uint dimensions = record.work_dim;
  if (dimensions < 1 || dimensions > 3) {
    record.status = CL_INVALID_WORK_DIMENSION;
    return;
  }
  if (record.global_work_size == nullptr) {
    record.status = CL_INVALID_GLOBAL_WORK_SIZE;
    return;
  }
  // All zeros leave the choice to the device.
  const std::size_t* local_size = record.local_work_size;
  if (local_size != nullptr) {
    const cl_uint zeros = count_zeros(local_size, dimensions);
    if (zeros == dimensions) {
      local_size = nullptr;
    } else if (zeros != 0) {
      record.status = CL_INVALID_WORK_GROUP_SIZE;
      return;
    }
  }
  if (has_too_many_groups(device, record, local_size)) {
    record.status = CL_INVALID_GLOBAL_WORK_SIZE;
    return;
  }
  record.status = call_or_refuse(device.cl.enqueue_nd_range_kernel, queue_of(record),
                                 static_cast<cl_kernel>(record.kernel), dimensions, record.global_work_offset,
                                 record.global_work_size, local_size, record.num_events_in_wait_list,
                                 wait_list_of(record), event_of(record));
}

} // namespace qv
