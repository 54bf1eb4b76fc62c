#pragma once

#include "access/common/call_handle.h"
#include "access/opencl/call.h"
#include "access/opencl/version.h"

#include <cstdint>

namespace oryn::skerv::opencl {

// One piece of work for a queue. A command names OpenCL objects without holding them: they must outlive its
// `enqueue`.
template <version V>
class command {
public:
  virtual ~command() = default;

  // `event_out` receives a reference to the command's event, unless this throws.
  virtual void enqueue(const common::call_handle& call_handle, void* queue, std::uint32_t wait_count,
                       void* const* wait_list, void** event_out) const = 0;

protected:
  command() = default;
  command(const command&) = default;
  command& operator=(const command&) = default;
};

// Sends `record`, whose own fields the command has set.
template <version V, qv::operation Op>
void enqueue_record(qv::record<Op>& record, const common::call_handle& call_handle, void* queue,
                    std::uint32_t wait_count, void* const* wait_list, void** event_out) {
  record.command_queue = queue;
  record.num_events_in_wait_list = wait_count;
  record.event_wait_list = wait_list;
  record.event = event_out;
  call<V, Op>(call_handle, record);
}

} // namespace oryn::skerv::opencl
