#pragma once

#include "memory/device_memory_allocation.h"

namespace oryn::tarva::library {

// Device storage that is one OpenCL buffer, which goes with it. `Buffer` is the buffer class of one OpenCL
// version.
template <class Buffer>
class opencl_buffer_allocation final : public device_memory_allocation {
public:
  opencl_buffer_allocation(std::shared_ptr<library_device> device, data_type type, std::uint64_t size,
                           Buffer buffer)
      : device_memory_allocation(std::move(device), type, size), buffer_(std::move(buffer)) {}

  const Buffer& get_buffer() const { return buffer_; }

private:
  Buffer buffer_;
};

} // namespace oryn::tarva::library
