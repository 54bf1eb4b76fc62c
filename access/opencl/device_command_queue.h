#pragma once

#include "access/opencl/host_command_queue.h"

#include <array>
#include <cstdint>

namespace oryn::skerv::opencl {

// The default queue of a device, to which its kernels enqueue.
template <version V>
requires(version_traits<V>::has_device_queue) class device_command_queue
    : public basic_command_queue<V, device_command_queue_kind> {
public:
  // `size` is in bytes.
  device_command_queue(const context<V>& context, const device<V>& device, bool profiling, std::uint32_t size)
      : basic_command_queue<V, device_command_queue_kind>(context.get_call_handle(),
                                                          create(context, device, profiling, size)) {}

private:
  static void* create(const context<V>& context, const device<V>& device, bool profiling,
                      std::uint32_t size) {
    const std::uint64_t bits = queue_property_bits(true, profiling) | common::cl::queue_on_device |
                               common::cl::queue_on_device_default;
    const std::array<std::uint64_t, 5> properties{common::cl::queue_properties, bits, common::cl::queue_size,
                                                  size, 0};
    return create_queue_with_properties(context, device, properties.data());
  }
};

} // namespace oryn::skerv::opencl
