#pragma once

#include "access/opencl/command.h"
#include "access/opencl/event.h"
#include "access/opencl/opencl_handle.h"

#include <cstdint>
#include <utility>

namespace oryn::skerv::opencl {

// What all queues can do.
template <version V, typename Kind>
class basic_command_queue : public opencl_handle<V, Kind> {
public:
  // Waits until all that was enqueued has ended.
  void finish() const;

  event<V> enqueue(const command<V>& command, std::uint32_t wait_count, void* const* wait_list) const;

protected:
  // Takes over the reference that the create command returned.
  basic_command_queue(common::call_handle call_handle, void* handle) noexcept
      : opencl_handle<V, Kind>(std::move(call_handle), handle) {}
};

template <version V, typename Kind>
void basic_command_queue<V, Kind>::finish() const {
  qv::object_record record{};
  record.object = this->get_handle();
  call<V, qv::operation::finish>(this->get_call_handle(), record);
}

template <version V, typename Kind>
event<V> basic_command_queue<V, Kind>::enqueue(const command<V>& command, std::uint32_t wait_count,
                                               void* const* wait_list) const {
  void* handle = nullptr;
  command.enqueue(this->get_call_handle(), this->get_handle(), wait_count, wait_list, &handle);
  return {this->get_call_handle(), handle};
}

extern template class basic_command_queue<version::v1_0, command_queue_kind>;
extern template class basic_command_queue<version::v1_1, command_queue_kind>;
extern template class basic_command_queue<version::v1_2, command_queue_kind>;
extern template class basic_command_queue<version::v2_0, host_command_queue_kind>;
extern template class basic_command_queue<version::v2_1, host_command_queue_kind>;
extern template class basic_command_queue<version::v2_2, host_command_queue_kind>;
extern template class basic_command_queue<version::v2_0, device_command_queue_kind>;
extern template class basic_command_queue<version::v2_1, device_command_queue_kind>;
extern template class basic_command_queue<version::v2_2, device_command_queue_kind>;

} // namespace oryn::skerv::opencl
