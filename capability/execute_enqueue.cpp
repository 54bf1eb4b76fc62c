// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Work: transfers, copies, fills and launches, the wait for all of it, and the questions what has become of it.
//
// Each is checked for what some implementation would follow blindly, handed to OpenCL, and told of by an event, whatever
// becomes of it.
#include "base/thread_annotations.h"
#include "capability/executor.h"
#include "capability/kernels.h"
#include "capability/opencl_queries.h"
#include "capability/queues.h"

#include <algorithm>
#include <vector>

namespace qv {
namespace {

// Static without a destructor: calls go on to the end of the process.
constinit oryn::mutex work_lock;

// The events that work waits for, as OpenCL's own. Work that waits for what has failed fails itself; OpenCL, which may not
// know of the failure, is not asked.
struct wait_list {
  template <class Record>
  explicit wait_list(const Record& record) : count(record.num_events_in_wait_list) {
    auto* const* const given = reinterpret_cast<event_object* const*>(record.event_wait_list);
    if (lacks_entries(given, count) || (count == 0 && given != nullptr)) {
      status = CL_INVALID_EVENT_WAIT_LIST;
      return;
    }
    try {
      for (std::uint32_t i = 0; i < count; ++i) {
        if (given[i]->failure != CL_SUCCESS)
          status = CL_EXEC_STATUS_ERROR_FOR_EVENTS_IN_WAIT_LIST;
        events.push_back(given[i]->event);
      }
    } catch (const std::bad_alloc&) {
      status = CL_OUT_OF_HOST_MEMORY;
    }
  }

  const cl_event* data() const { return count == 0 ? nullptr : events.data(); }

  const cl_uint count;
  cl_int status = CL_SUCCESS;
  std::vector<cl_event> events;
};

// For implementations that take and do one thing at a time, on all their devices together. Kernels run while their queue is
// finished, if not while they are enqueued.
template <class Work>
cl_int alone_if_needed(const root_device& device, Work work) {
  if (!device.quirks.work_is_not_thread_safe)
    return work();
  const oryn::lock_guard guard(work_lock);
  return work();
}

// Work with nobody to tell of its failure later is told of at once; and should its queue not be finished, the finish tells.
template <class Record, class Enqueue>
void submit_without_event(queue_object& queue, Record& record, Enqueue enqueue) {
  const wait_list waits(record);
  record.status = waits.status != CL_SUCCESS ? waits.status : enqueue(queue.queue, waits, nullptr);
  if (record.status == CL_SUCCESS)
    queue.add_outstanding_without_event();
}

// What all work has in common. `enqueue` is given the queue, the wait list and the place for the event, and returns the
// status. What is refused, by whomever, becomes an event that has failed, and the command a success: whoever enqueues has no
// way to undo what came before, and waits for the event anyway. The device may be the reason, so it is suspected.
template <class Record, class Enqueue>
void submit(const root_device& device, Record& record, Enqueue enqueue_to) {
  const auto enqueue = [&](cl_command_queue to, const wait_list& waits, cl_event* event) {
    return alone_if_needed(device, [&] { return enqueue_to(to, waits, event); });
  };
  auto* const queue = static_cast<queue_object*>(record.command_queue);
  if (record.event == nullptr) {
    if (queue == nullptr)
      record.status = CL_INVALID_COMMAND_QUEUE;
    else
      submit_without_event(*queue, record, enqueue);
    return;
  }
  record.status = CL_SUCCESS; // from here on the event tells
  auto* const event = new (std::nothrow) event_object;
  *record.event = event == nullptr ? event_object::out_of_memory() : event;
  if (event == nullptr)
    return;
  cl_int status = CL_INVALID_COMMAND_QUEUE;
  if (queue != nullptr) {
    const wait_list waits(record);
    status = waits.status != CL_SUCCESS ? waits.status : enqueue(queue->queue, waits, &event->event);
  }
  if (status == CL_SUCCESS) {
    queue->add_outstanding(*event);
    return;
  }
  event->failure = as_failure(status);
  if (device.watch != nullptr)
    device.watch->suspect();
}

// Some implementations follow blindly a range whose end cannot be counted. One that merely ends behind the buffer's is refused
// by all.
bool is_endless(std::size_t offset, std::size_t size) {
  return offset + size < offset;
}

// Reads and writes, which differ in the function alone.
template <class Function>
void transfer(const root_device& device, Function* function, enqueue_transfer_buffer_record& record) {
  submit(device, record, [&](cl_command_queue queue, const wait_list& waits, cl_event* event) -> cl_int {
    if (is_endless(record.offset, record.size))
      return CL_INVALID_VALUE;
    return call_or_refuse(function, queue, static_cast<cl_mem>(record.buffer), record.blocking, record.offset,
                          record.size, record.ptr, waits.count, waits.data(), event);
  });
}

// A local size of zero, in any dimension, ends the process on some devices.
cl_uint count_zeros(const std::size_t* sizes, cl_uint dimensions) {
  return static_cast<cl_uint>(std::count(sizes, sizes + dimensions, std::size_t{0}));
}

// The most work-items of a group that the device would choose. One that does not tell is taken to choose the least.
std::uint64_t largest_group(const root_device& device, cl_kernel kernel) {
  if (device.quirks.chooses_groups_of_one)
    return 1;
  std::size_t size = 0;
  const cl_int status =
      ask_value(size, CL_KERNEL_WORK_GROUP_SIZE, device.cl.get_kernel_work_group_info, kernel, device.id);
  return status == CL_SUCCESS ? std::max<std::size_t>(size, 1) : 1;
}

// True if the implementation would end the process, or count too few work-items or groups and leave work undone. Without
// a local size the device chooses, and what is certain is that no group is larger than the largest.
bool cannot_be_counted(const root_device& device, cl_kernel kernel,
                       const enqueue_nd_range_kernel_record& record, const std::size_t* local_size) {
  constexpr std::uint64_t limit = std::uint64_t{1} << 32;
  const std::size_t* const global_size = record.global_work_size;
  if (device.quirks.counts_items_in_32_bits && std::any_of(global_size, global_size + record.work_dim,
                                                           [](std::size_t items) { return items >= limit; }))
    return true;
  if (!device.quirks.counts_groups_in_32_bits)
    return false;
  std::uint64_t all = 1;
  for (cl_uint i = 0; i < record.work_dim; ++i) {
    const std::uint64_t items = global_size[i];
    const std::uint64_t size = local_size == nullptr ? 1 : local_size[i];
    if (__builtin_mul_overflow(all, items / size + (items % size != 0 ? 1 : 0), &all))
      all = ~std::uint64_t{0};
  }
  return all >= limit && (local_size != nullptr || all / largest_group(device, kernel) >= limit);
}

// What no implementation is to see. All zeros leave the choice of the local size to the device, by a null pointer.
cl_int check_sizes(const root_device& device, cl_kernel kernel, const enqueue_nd_range_kernel_record& record,
                   const std::size_t*& local_size) {
  const cl_uint dimensions = record.work_dim;
  if (dimensions < 1 || dimensions > 3)
    return CL_INVALID_WORK_DIMENSION;
  if (record.global_work_size == nullptr)
    return CL_INVALID_GLOBAL_WORK_SIZE;
  if (local_size != nullptr) {
    const cl_uint zeros = count_zeros(local_size, dimensions);
    if (zeros == dimensions)
      local_size = nullptr;
    else if (zeros != 0)
      return CL_INVALID_WORK_GROUP_SIZE;
  }
  return cannot_be_counted(device, kernel, record, local_size) ? CL_INVALID_GLOBAL_WORK_SIZE : CL_SUCCESS;
}

} // namespace

void enqueue_read_buffer(const root_device& device, enqueue_transfer_buffer_record& record) {
  transfer(device, device.cl.enqueue_read_buffer, record);
}

void enqueue_write_buffer(const root_device& device, enqueue_transfer_buffer_record& record) {
  transfer(device, device.cl.enqueue_write_buffer, record);
}

void enqueue_copy_buffer(const root_device& device, enqueue_copy_buffer_record& record) {
  submit(device, record, [&](cl_command_queue queue, const wait_list& waits, cl_event* event) -> cl_int {
    if (is_endless(record.src_offset, record.size) || is_endless(record.dst_offset, record.size))
      return CL_INVALID_VALUE;
    return call_or_refuse(device.cl.enqueue_copy_buffer, queue, static_cast<cl_mem>(record.src_buffer),
                          static_cast<cl_mem>(record.dst_buffer), record.src_offset, record.dst_offset,
                          record.size, waits.count, waits.data(), event);
  });
}

void enqueue_fill_buffer(const root_device& device, enqueue_fill_buffer_record& record) {
  submit(device, record, [&](cl_command_queue queue, const wait_list& waits, cl_event* event) -> cl_int {
    if (is_endless(record.offset, record.size))
      return CL_INVALID_VALUE;
    return call_or_refuse(device.cl.enqueue_fill_buffer, queue, static_cast<cl_mem>(record.buffer),
                          record.pattern, record.pattern_size, record.offset, record.size, waits.count,
                          waits.data(), event);
  });
}

void enqueue_nd_range_kernel(const root_device& device, enqueue_nd_range_kernel_record& record) {
  submit(device, record, [&](cl_command_queue queue, const wait_list& waits, cl_event* event) -> cl_int {
    const auto* const kernel = static_cast<const kernel_object*>(record.kernel);
    if (kernel == nullptr)
      return CL_INVALID_KERNEL;
    if (const cl_int status = kernel->launch_status(); status != CL_SUCCESS)
      return status;
    const std::size_t* local_size = record.local_work_size;
    if (const cl_int status = check_sizes(device, kernel->kernel, record, local_size); status != CL_SUCCESS)
      return status;
    return call_or_refuse(device.cl.enqueue_nd_range_kernel, queue, kernel->kernel, record.work_dim,
                          record.global_work_offset, record.global_work_size, local_size, waits.count,
                          waits.data(), event);
  });
}

// A queue that cannot be finished has told its events so, and that is enough; the device may be lost.
void finish(const root_device& device, object_record& record) {
  auto* const queue = find_object<queue_object>(record.object, record);
  if (queue == nullptr)
    return;
  bool is_finished = true;
  record.status = alone_if_needed(device, [&] { return queue->finish(device, is_finished); });
  if (!is_finished && device.watch != nullptr)
    device.watch->suspect();
}

// A failure that took the place of OpenCL's status goes before it. An event without OpenCL's has nothing else to tell, and
// neither event nor queue are told by OpenCL's handles, which the caller does not know.
void get_event_info(const root_device& device, get_object_info_record& record) {
  const auto* const event = find_object<event_object>(record.object, record);
  if (event == nullptr)
    return;
  const cl_int failure = event->failure;
  if (record.param_name == CL_EVENT_COMMAND_EXECUTION_STATUS && failure != CL_SUCCESS) {
    answer(record, &failure, sizeof failure);
  } else if (record.param_name == CL_EVENT_REFERENCE_COUNT) {
    const cl_uint references = event->references();
    answer(record, &references, sizeof references);
  } else if (record.param_name == CL_EVENT_COMMAND_QUEUE && event->queue != nullptr) {
    answer(record, &event->queue, sizeof(void*));
  } else if (event->event == nullptr) {
    record.status = CL_INVALID_EVENT;
  } else {
    ask(record, device.cl.get_event_info, event->event);
  }
}

// Work that did not run took no time.
void get_event_profiling_info(const root_device& device, get_object_info_record& record) {
  const auto* const event = find_object<event_object>(record.object, record);
  if (event == nullptr)
    return;
  if (event->failure != CL_SUCCESS || event->event == nullptr)
    record.status = CL_PROFILING_INFO_NOT_AVAILABLE;
  else
    ask(record, device.cl.get_event_profiling_info, event->event);
}

} // namespace qv
