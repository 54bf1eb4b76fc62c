// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "access/opencl/device.h"

#include "access/common/info_query.h"

namespace oryn::skerv::opencl {
namespace {

// A call handle is opened for one device of one version, and says which.
template <version V>
void* device_of(const common::call_handle& call_handle) {
  qv::device_of_handle_record record{};
  call<V, qv::operation::device_of_handle>(call_handle, record);
  return record.result;
}

} // namespace

inline common::info_query<qv::operation::get_device_info> device_info::query(std::uint32_t parameter) const {
  return {handle_, command_, device_, nullptr, parameter};
}

std::uint32_t device_info::get_uint32(std::uint32_t parameter) const {
  return common::get_scalar_info<std::uint32_t>(query(parameter));
}

std::uint64_t device_info::get_uint64(std::uint32_t parameter) const {
  return common::get_scalar_info<std::uint64_t>(query(parameter));
}

std::string device_info::get_string(std::uint32_t parameter) const {
  return common::get_string_info(query(parameter));
}

void device_info::read_string(std::uint32_t parameter, std::string& text) const {
  common::read_string_info(query(parameter), text);
}

std::vector<std::string> device_info::get_words(std::uint32_t parameter) const {
  return common::split_on_whitespace(get_string(parameter));
}

std::vector<std::string> device_info::get_names(std::uint32_t parameter) const {
  return common::split_on_semicolon(get_string(parameter));
}

std::array<std::uint64_t, 3> device_info::get_sizes(std::uint32_t parameter) const {
  return common::get_fixed_array_info<std::uint64_t, 3>(query(parameter));
}

void* device_info::get_pointer(std::uint32_t parameter) const {
  return common::get_scalar_info<void*>(query(parameter));
}

// Any other text is the full profile.
bool device_info::is_embedded_profile() const {
  return get_string(device_parameter::profile.number) == "EMBEDDED_PROFILE";
}

template <version V>
device<V>::device(const common::call_handle& call_handle) : device(call_handle, device_of<V>(call_handle)) {}

template <version V>
bool device<V>::has_extension(const char* name) const {
  return common::has_extension(get<device_parameter::extensions>(), name);
}

// A handle is closed if its device cannot be made, and all devices go if one of them fails.
template <version V>
std::vector<device<V>> find_devices() {
  std::vector<device<V>> devices;
  for (const common::capability_node& node : common::find_capability_nodes(capability_of(V)))
    devices.emplace_back(common::open_call_handle(node));
  return devices;
}

template <version V>
std::vector<void*> handles_of(const std::vector<device<V>>& devices) {
  std::vector<void*> handles;
  handles.reserve(devices.size());
  for (const device<V>& each : devices)
    handles.push_back(each.get_handle());
  return handles;
}

// The query keeps its references, so each device takes one of its own.
template <version V>
std::vector<device<V>> wrap_devices(const common::call_handle& call_handle,
                                    const std::vector<void*>& handles) {
  std::vector<device<V>> devices;
  devices.reserve(handles.size());
  for (void* handle : handles)
    devices.emplace_back(call_handle, handle);
  return devices;
}

#define INSTANTIATE(v)                                                                                       \
  template class device<version::v>;                                                                         \
  template std::vector<device<version::v>> find_devices();                                                   \
  template std::vector<void*> handles_of(const std::vector<device<version::v>>&);                            \
  template std::vector<device<version::v>> wrap_devices(const common::call_handle&,                          \
                                                        const std::vector<void*>&);
ORYN_FOR_EACH_VERSION(INSTANTIATE)
#undef INSTANTIATE

} // namespace oryn::skerv::opencl
