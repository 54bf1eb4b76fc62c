#pragma once

#include "access/opencl/device.h"

#include <cstdint>
#include <vector>

namespace oryn::skerv::opencl {

// A program as compiled for one device.
template <version V>
struct device_binary {
  opencl::device<V> device;
  std::vector<std::uint8_t> binary;
};

} // namespace oryn::skerv::opencl
