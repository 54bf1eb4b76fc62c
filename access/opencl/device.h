#pragma once

#include "access/common/text.h"
#include "access/opencl/device_flags.h"
#include "access/opencl/device_parameters.h"
#include "access/opencl/opencl_handle.h"
#include "access/opencl/platform.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace oryn::skerv::opencl {

template <version V>
class device : public opencl_handle<V, device_kind> {
public:
  // The device to which `call_handle` is bound.
  explicit device(const common::call_handle& call_handle);

  // Takes a reference of its own: no command hands one out with a device.
  device(common::call_handle call_handle, void* handle)
      : opencl_handle<V, device_kind>(std::move(call_handle), handle, from_query) {}

  template <device_parameter Parameter>
  device_value<Parameter> get() const requires device_has_parameter<V, Parameter>;

  template <device_flag Flag>
  bool is() const requires device_has_flag<V, Flag>;

  bool is_embedded_profile() const { return get<device_parameter::profile>() == "EMBEDDED_PROFILE"; }
  bool is_full_profile() const { return !is_embedded_profile(); }

  bool has_extension(const char* name) const {
    return common::has_extension(get<device_parameter::extensions>(), name);
  }
  template <version W = V>
  bool has_spir_extension() const requires(version_traits<W>::has_spir) {
    return has_extension("cl_khr_spir");
  }
  template <version W = V>
  bool has_il_program_extension() const requires(version_traits<W>::has_il_extension) {
    return has_extension("cl_khr_il_program");
  }
  template <version W = V>
  platform<V> get_platform() const requires(version_traits<W>::has_platform) {
    return {this->get_call_handle(), get<device_parameter::platform>()};
  }

  // The same parameters by their numbers, for callers that read them from a table at run time.
  std::uint32_t get_uint32(std::uint32_t parameter) const;
  std::uint64_t get_uint64(std::uint32_t parameter) const;
  bool get_bool(std::uint32_t parameter) const { return get_uint32(parameter) != 0; }
  std::string get_string(std::uint32_t parameter) const;
  void read_string(std::uint32_t parameter, std::string& text) const; // takes the place of what is there
  std::array<std::uint64_t, 3> get_sizes(std::uint32_t parameter) const;

private:
  common::info_query<qv::operation::get_device_info> info(std::uint32_t parameter) const {
    return this->template query<qv::operation::get_device_info>(parameter);
  }

  static void* device_of(const common::call_handle& call_handle);
};

template <version V>
device<V>::device(const common::call_handle& call_handle) : device(call_handle, device_of(call_handle)) {}

template <version V>
void* device<V>::device_of(const common::call_handle& call_handle) {
  qv::device_of_handle_record record{};
  call<V, qv::operation::device_of_handle>(call_handle, record);
  return record.result;
}

template <version V>
template <device_parameter Parameter>
device_value<Parameter> device<V>::get() const requires device_has_parameter<V, Parameter> {
  constexpr info_form form = row_of(Parameter).form;
  constexpr auto number = static_cast<std::uint32_t>(Parameter);
  if constexpr (form == info_form::uint32)
    return get_uint32(number);
  else if constexpr (form == info_form::uint64)
    return get_uint64(number);
  else if constexpr (form == info_form::boolean)
    return get_bool(number);
  else if constexpr (form == info_form::text)
    return get_string(number);
  else if constexpr (form == info_form::word_list)
    return common::split_on_whitespace(get_string(number));
  else if constexpr (form == info_form::name_list)
    return common::split_on_semicolon(get_string(number));
  else if constexpr (form == info_form::sizes)
    return get_sizes(number);
  else
    return common::get_scalar_info<void*>(info(number));
}

template <version V>
template <device_flag Flag>
bool device<V>::is() const requires device_has_flag<V, Flag> {
  constexpr device_flag_row row = row_of(Flag);
  const std::uint64_t value = get<row.parameter>();
  return row.test == flag_test::equals ? value == row.operand : (value & row.operand) != 0;
}

template <version V>
std::uint32_t device<V>::get_uint32(std::uint32_t parameter) const {
  return common::get_scalar_info<std::uint32_t>(info(parameter));
}

template <version V>
std::uint64_t device<V>::get_uint64(std::uint32_t parameter) const {
  return common::get_scalar_info<std::uint64_t>(info(parameter));
}

template <version V>
std::string device<V>::get_string(std::uint32_t parameter) const {
  return common::get_string_info(info(parameter));
}

template <version V>
void device<V>::read_string(std::uint32_t parameter, std::string& text) const {
  common::read_string_info(info(parameter), text);
}

template <version V>
std::array<std::uint64_t, 3> device<V>::get_sizes(std::uint32_t parameter) const {
  return common::get_fixed_array_info<std::uint64_t, 3>(info(parameter));
}

// The arguments of the commands that take several devices.
template <version V>
std::vector<void*> handles_of(const std::vector<device<V>>& devices) {
  std::vector<void*> handles;
  handles.reserve(devices.size());
  for (const device<V>& each : devices)
    handles.push_back(each.get_handle());
  return handles;
}

// What a query for devices gives.
template <version V>
std::vector<device<V>> wrap_devices(const common::call_handle& call_handle,
                                    const std::vector<void*>& handles) {
  std::vector<device<V>> devices;
  devices.reserve(handles.size());
  for (void* handle : handles)
    devices.emplace_back(call_handle, handle);
  return devices;
}

extern template class device<version::v1_0>;
extern template class device<version::v1_1>;
extern template class device<version::v1_2>;
extern template class device<version::v2_0>;
extern template class device<version::v2_1>;
extern template class device<version::v2_2>;

} // namespace oryn::skerv::opencl
