// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "access/opencl/command_queue.h"

#include "access/common/opencl_constants.h"

#include <array>

namespace oryn::skerv::opencl {
namespace {

constexpr std::uint64_t queue_property_bits(bool out_of_order, bool profiling) {
  return (out_of_order ? common::cl::queue_out_of_order : 0) | (profiling ? common::cl::queue_profiling : 0);
}

// The command of the versions before 2.0.
template <version V>
void* create_queue(const context<V>& context, const device<V>& device, std::uint64_t properties) {
  qv::create_command_queue_record record{};
  record.context = context.get_handle();
  record.device = device.get_handle();
  record.properties = properties;
  call<V, qv::operation::create_command_queue>(context.get_call_handle(), record);
  return record.result;
}

// `properties` are pairs of words, closed by a 0.
template <version V, std::size_t Count>
void* create_queue_with_properties(const context<V>& context, const device<V>& device,
                                   const std::array<std::uint64_t, Count>& properties) {
  qv::create_command_queue_with_properties_record record{};
  record.device = device.get_handle();
  record.context = context.get_handle();
  record.properties = properties.data();
  call<V, qv::operation::create_command_queue_with_properties>(context.get_call_handle(), record);
  return record.result;
}

} // namespace

template <version V>
requires(!version_traits<V>::has_device_queue) command_queue<V>::command_queue(const context<V>& context,
                                                                               const device<V>& device,
                                                                               bool out_of_order,
                                                                               bool profiling)
    : basic_command_queue<V, command_queue_kind>(
          context.get_call_handle(),
          create_queue(context, device, queue_property_bits(out_of_order, profiling))) {}

template <version V>
requires(version_traits<V>::has_device_queue) host_command_queue<V>::host_command_queue(
    const context<V>& context, const device<V>& device, bool out_of_order, bool profiling)
    : basic_command_queue<V, host_command_queue_kind>(
          context.get_call_handle(),
          create_queue_with_properties<V, 3>(
              context, device,
              {common::cl::queue_properties, queue_property_bits(out_of_order, profiling), 0})) {}

// What kernels enqueue has no order of its own: OpenCL wants such queues to be out of order.
template <version V>
requires(version_traits<V>::has_device_queue) device_command_queue<V>::device_command_queue(
    const context<V>& context, const device<V>& device, bool profiling, std::uint32_t size)
    : basic_command_queue<V, device_command_queue_kind>(
          context.get_call_handle(), create_queue_with_properties<V, 5>(
                                         context, device,
                                         {common::cl::queue_properties,
                                          queue_property_bits(true, profiling) | common::cl::queue_on_device |
                                              common::cl::queue_on_device_default,
                                          common::cl::queue_size, size, 0})) {}

#define INSTANTIATE(v)                                                                                       \
  template class basic_command_queue<version::v, command_queue_kind>;                                        \
  template class command_queue<version::v>;
ORYN_FOR_EACH_VERSION_UNTIL_1_2(INSTANTIATE)
#undef INSTANTIATE

#define INSTANTIATE(v)                                                                                       \
  template class basic_command_queue<version::v, host_command_queue_kind>;                                   \
  template class basic_command_queue<version::v, device_command_queue_kind>;                                 \
  template class host_command_queue<version::v>;                                                             \
  template class device_command_queue<version::v>;
ORYN_FOR_EACH_VERSION_FROM_2_0(INSTANTIATE)
#undef INSTANTIATE

} // namespace oryn::skerv::opencl
