#pragma once

#include "access/common/call_handle.h"
#include "access/opencl/device.h"

#include <cstdint>
#include <vector>

namespace oryn::skerv::opencl {

// One device of the machine, as it can be used under one version of OpenCL.
struct capability_node {
  std::uint64_t root;
  std::uint64_t node;
};

// All devices that the capability library offers under `capability`.
std::vector<capability_node> find_capability_nodes(std::uint32_t capability);

common::call_handle open_call_handle(const capability_node& node);

template <version V>
std::vector<device<V>> find_devices() {
  std::vector<device<V>> devices;
  for (const capability_node& node : find_capability_nodes(capability_of(V)))
    devices.emplace_back(open_call_handle(node));
  return devices;
}

} // namespace oryn::skerv::opencl
