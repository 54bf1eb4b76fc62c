#pragma once

#include "access/common/opencl_constants.h"
#include "access/opencl/basic_command_queue.h"
#include "access/opencl/context.h"
#include "access/opencl/device.h"

#include <cstdint>

namespace oryn::skerv::opencl {

constexpr std::uint64_t queue_property_bits(bool out_of_order, bool profiling) {
  return (out_of_order ? common::cl::queue_out_of_order : 0) | (profiling ? common::cl::queue_profiling : 0);
}

// The queue of the versions that know but one kind.
template <version V>
requires(!version_traits<V>::has_device_queue) class command_queue
    : public basic_command_queue<V, command_queue_kind> {
public:
  command_queue(const context<V>& context, const device<V>& device, bool out_of_order, bool profiling)
      : basic_command_queue<V, command_queue_kind>(
            context.get_call_handle(),
            create(context, device, queue_property_bits(out_of_order, profiling))) {}

private:
  static void* create(const context<V>& context, const device<V>& device, std::uint64_t properties) {
    qv::create_command_queue_record record{};
    record.context = context.get_handle();
    record.device = device.get_handle();
    record.properties = properties;
    call<V, qv::operation::create_command_queue>(context.get_call_handle(), record);
    return record.result;
  }
};

} // namespace oryn::skerv::opencl
