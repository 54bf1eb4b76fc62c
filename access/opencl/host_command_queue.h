#pragma once

#include "access/opencl/command_queue.h"

#include <array>
#include <cstdint>

namespace oryn::skerv::opencl {

// `properties` is a list of words that ends in 0.
template <version V>
requires(version_traits<V>::has_device_queue) void* create_queue_with_properties(
    const context<V>& context, const device<V>& device, const std::uint64_t* properties) {
  qv::create_command_queue_with_properties_record record{};
  record.device = device.get_handle();
  record.context = context.get_handle();
  record.properties = properties;
  call<V, qv::operation::create_command_queue_with_properties>(context.get_call_handle(), record);
  return record.result;
}

// A queue to which the host enqueues.
template <version V>
requires(version_traits<V>::has_device_queue) class host_command_queue
    : public basic_command_queue<V, host_command_queue_kind> {
public:
  host_command_queue(const context<V>& context, const device<V>& device, bool out_of_order, bool profiling)
      : basic_command_queue<V, host_command_queue_kind>(
            context.get_call_handle(),
            create(context, device, queue_property_bits(out_of_order, profiling))) {}

private:
  static void* create(const context<V>& context, const device<V>& device, std::uint64_t bits) {
    const std::array<std::uint64_t, 3> properties{common::cl::queue_properties, bits, 0};
    return create_queue_with_properties(context, device, properties.data());
  }
};

// The class of the queues to which the host enqueues, whatever its name in this version.
template <version V>
struct host_queue_of {
  using type = host_command_queue<V>;
};
template <version V>
requires(!version_traits<V>::has_device_queue) struct host_queue_of<V> {
  using type = command_queue<V>;
};
template <version V>
using host_queue = typename host_queue_of<V>::type;

} // namespace oryn::skerv::opencl
