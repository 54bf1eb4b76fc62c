// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "capability/opencl_queries.h"

#include <algorithm>

namespace qv {
namespace {

// This library runs on little-endian hosts alone, so a narrower answer is the number itself: the rest is zero before.
template <class Query, class Object>
std::optional<std::uint64_t> ask_number(cl_uint name, Query query, Object object) noexcept {
  std::uint64_t number = 0;
  if (ask_value(number, name, query, object) != CL_SUCCESS)
    return std::nullopt;
  return number;
}

} // namespace

std::optional<std::string> platform_text(const opencl_functions& cl, cl_platform_id platform,
                                         cl_platform_info name) {
  return ask_text(name, cl.get_platform_info, platform);
}

std::optional<std::string> device_text(const opencl_functions& cl, cl_device_id device, cl_device_info name) {
  return ask_text(name, cl.get_device_info, device);
}

std::optional<std::uint64_t> platform_number(const opencl_functions& cl, cl_platform_id platform,
                                             cl_platform_info name) noexcept {
  return ask_number(name, cl.get_platform_info, platform);
}

std::optional<std::uint64_t> device_number(const opencl_functions& cl, cl_device_id device,
                                           cl_device_info name) noexcept {
  return ask_number(name, cl.get_device_info, device);
}

std::vector<cl_device_id> context_devices(const opencl_functions& cl, cl_context context) {
  // Asked once for the devices themselves, with room for more than any context here has; OpenCL refuses where there are more.
  constexpr std::size_t most_devices = 64;
  std::vector<cl_device_id> devices(most_devices);
  std::size_t size = 0;
  const cl_int status =
      call_or_refuse(cl.get_context_info, context, cl_context_info{CL_CONTEXT_DEVICES},
                     devices.size() * sizeof(cl_device_id), static_cast<void*>(devices.data()), &size);
  devices.resize(status == CL_SUCCESS ? std::min(size / sizeof(cl_device_id), devices.size()) : 0);
  return devices;
}

} // namespace qv
