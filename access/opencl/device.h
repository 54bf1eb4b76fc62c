// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The devices of the machine, and what they tell about themselves.
#pragma once

#include "access/opencl/opencl_handle.h"
#include "properties/device_parameters.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace oryn::skerv::opencl {

namespace device_parameter = tarva::library::device_parameter;
namespace device_flag = tarva::library::device_flag;

// To ask a device for what its version does not have does not compile.
template <version V, tarva::library::device_parameter_row Parameter>
concept device_has_parameter = Parameter.versions.contains(capability_of(V));

template <version V, tarva::library::device_flag_row Flag>
concept device_has_flag = Flag.versions.contains(capability_of(V));

// The two commands exist from 1.2 on; before, devices are not counted.
struct device_kind {
  static constexpr qv::operation release = qv::operation::release_device;
  static constexpr qv::operation retain = qv::operation::retain_device;
  static constexpr const char* destructor_fault = "Exception caught in device::~device().";
};

// The platform of a device. It is not counted, and has no use but to find the functions of extensions.
template <version V>
class platform {
  static_assert(version_traits<V>::has_platform);

public:
  platform(common::call_handle call_handle, void* handle) noexcept
      : call_handle_(std::move(call_handle)), handle_(handle) {}

  const common::call_handle& get_call_handle() const noexcept { return call_handle_; }
  void* get_handle() const noexcept { return handle_; }

private:
  common::call_handle call_handle_;
  void* handle_;
};

// The parameters of a device by their numbers, for callers that read them from a table at run time, too. The versions differ in
// no more than the number of the command, so this is compiled once. It holds nothing: the device must outlive it.
class device_info {
public:
  // `command` is the number of clGetDeviceInfo under the capability of `handle`.
  device_info(qv_call_handle* handle, std::uint64_t command, void* device) noexcept
      : handle_(handle), command_(command), device_(device) {}

  std::uint32_t get_uint32(std::uint32_t parameter) const;
  std::uint64_t get_uint64(std::uint32_t parameter) const;
  bool get_bool(std::uint32_t parameter) const { return get_uint32(parameter) != 0; }
  std::string get_string(std::uint32_t parameter) const;
  // Takes the place of what is in `text`, and uses its memory again.
  void read_string(std::uint32_t parameter, std::string& text) const;
  std::vector<std::string> get_words(std::uint32_t parameter) const;
  std::vector<std::string> get_names(std::uint32_t parameter) const;
  std::array<std::uint64_t, 3> get_sizes(std::uint32_t parameter) const;
  void* get_pointer(std::uint32_t parameter) const;

  // Of the two profiles that there are.
  bool is_embedded_profile() const;

private:
  common::info_query<qv::operation::get_device_info> query(std::uint32_t parameter) const;

  qv_call_handle* handle_;
  std::uint64_t command_;
  void* device_;
};

// A device of OpenCL. What it tells is asked of OpenCL each time, on the thread of the caller, and nothing is kept: a
// device that fails to answer throws, and may answer the next time.
template <version V>
class device : public opencl_handle<V, device_kind> {
public:
  // The device to which `call_handle` is bound.
  explicit device(const common::call_handle& call_handle);

  // Takes a reference of its own: no command hands one out with a device.
  device(common::call_handle call_handle, void* handle)
      : opencl_handle<V, device_kind>(std::move(call_handle), handle, from_query) {}

  // A parameter by its row, such as device_parameter::vendor_id, in the C++ type of its form.
  template <tarva::library::device_parameter_row Parameter>
  auto get() const requires device_has_parameter<V, Parameter>;

  // A flag by its row, such as device_flag::type_gpu.
  template <tarva::library::device_flag_row Flag>
  bool is() const requires device_has_flag<V, Flag>;

  // One of the two is true.
  bool is_embedded_profile() const { return info().is_embedded_profile(); }
  bool is_full_profile() const { return !is_embedded_profile(); }

  // The list of extensions is asked for each time.
  bool has_extension(const char* name) const;
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
    return {this->call_handle_, info().get_pointer(device_parameter::platform.number)};
  }

  device_info info() const {
    return {this->call_handle_.get(), command_of<V, qv::operation::get_device_info>, this->get_handle()};
  }
};

// All devices that the capability library offers under this version, each with a call handle of its own. Throws if
// any of them cannot be opened.
template <version V>
std::vector<device<V>> find_devices();

// The arguments of the commands that take several devices.
template <version V>
std::vector<void*> handles_of(const std::vector<device<V>>& devices);

// What a query for devices gives. They share the call handle of the object that was asked.
template <version V>
std::vector<device<V>> wrap_devices(const common::call_handle& call_handle,
                                    const std::vector<void*>& handles);

template <version V>
template <tarva::library::device_parameter_row Parameter>
auto device<V>::get() const requires device_has_parameter<V, Parameter> {
  using tarva::library::info_form;
  if constexpr (Parameter.form == info_form::uint32)
    return info().get_uint32(Parameter.number);
  else if constexpr (Parameter.form == info_form::uint64)
    return info().get_uint64(Parameter.number);
  else if constexpr (Parameter.form == info_form::boolean)
    return info().get_bool(Parameter.number);
  else if constexpr (Parameter.form == info_form::text)
    return info().get_string(Parameter.number);
  else if constexpr (Parameter.form == info_form::word_list)
    return info().get_words(Parameter.number);
  else if constexpr (Parameter.form == info_form::name_list)
    return info().get_names(Parameter.number);
  else if constexpr (Parameter.form == info_form::sizes)
    return info().get_sizes(Parameter.number);
  else
    return info().get_pointer(Parameter.number);
}

template <version V>
template <tarva::library::device_flag_row Flag>
bool device<V>::is() const requires device_has_flag<V, Flag> {
  const std::uint64_t value = get<Flag.parameter>();
  return Flag.test == tarva::library::flag_test::equals ? value == Flag.operand : (value & Flag.operand) != 0;
}

} // namespace oryn::skerv::opencl
