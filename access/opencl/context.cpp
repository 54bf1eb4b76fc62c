// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "access/opencl/context.h"

#include "access/common/info_query.h"
#include "access/common/opencl_constants.h"

#include <stdexcept>

namespace oryn::skerv::opencl {
namespace {

// Throws before any command is sent.
template <version V>
const device<V>& first_of(const std::vector<device<V>>& devices) {
  if (devices.empty())
    throw std::logic_error("Cannot create a context without supplying any devices!");
  return devices.front();
}

// The devices are given in their order; OpenCL takes references of its own to them.
template <version V>
void* create(const std::vector<std::uint64_t>& properties, const std::vector<device<V>>& devices,
             qv::context_callback pfn_notify, void* user_data) {
  const device<V>& first = first_of(devices);
  const std::vector<void*> handles = handles_of(devices);
  qv::create_context_record record{};
  record.properties = properties.empty() ? nullptr : properties.data();
  record.num_devices = static_cast<std::uint32_t>(handles.size());
  record.devices = handles.data();
  record.pfn_notify = pfn_notify;
  record.user_data = user_data;
  call<V, qv::operation::create_context>(first.get_call_handle(), record);
  return record.result;
}

} // namespace

template <version V>
context<V>::context(const std::vector<std::uint64_t>& properties, const std::vector<device<V>>& devices,
                    qv::context_callback pfn_notify, void* user_data)
    : opencl_handle<V, context_kind>(first_of(devices).get_call_handle(),
                                     create(properties, devices, pfn_notify, user_data)) {}

template <version V>
std::vector<device<V>> context<V>::get_devices() const {
  auto info = this->template query<qv::operation::get_context_info>(common::cl::context_devices);
  return wrap_devices<V>(this->call_handle_, common::get_vector_info<void*>(info));
}

// A context does not tell its platform, but its devices do, and they all have the same one.
template <version V>
template <version W>
platform<V> context<V>::get_platform() const requires(version_traits<W>::has_platform) {
  const std::vector<device<V>> devices = get_devices();
  if (devices.empty())
    throw common::bad_implementation("Context has no associated devices, this is impossible.");
  return devices.front().get_platform();
}

template <version V>
template <qv::operation Op>
void* context<V>::create_object(qv::record<Op>& record) const {
  record.context = this->object_;
  call<V, Op>(this->call_handle_, record);
  return record.result;
}

template <version V>
buffer<V> context<V>::create_buffer(std::uint64_t flags, std::size_t size, void* host_ptr) const {
  qv::create_buffer_record record{};
  record.flags = flags;
  record.size = size;
  record.host_ptr = host_ptr;
  return {this->call_handle_, create_object<qv::operation::create_buffer>(record)};
}

// One string, which ends in a zero, so that no length is needed.
template <version V>
program<V> context<V>::create_program_with_source(const char* text) const {
  qv::create_program_with_source_record record{};
  record.strings = &text;
  record.lengths = nullptr;
  record.count = 1;
  return {this->call_handle_, create_object<qv::operation::create_program_with_source>(record)};
}

// OpenCL is not asked about each binary: one that is bad fails the whole call.
template <version V>
program<V> context<V>::create_program_with_binaries(const std::vector<device_binary<V>>& binaries) const {
  if (binaries.empty())
    throw std::logic_error("Cannot create a device binary from an empty collection of binaries.");
  std::vector<void*> devices;
  std::vector<const unsigned char*> addresses;
  std::vector<std::size_t> lengths;
  for (const device_binary<V>& each : binaries) {
    devices.push_back(each.device.get_handle());
    addresses.push_back(each.binary.data());
    lengths.push_back(each.binary.size());
  }
  qv::create_program_with_binary_record record{};
  record.device_list = devices.data();
  record.lengths = lengths.data();
  record.binaries = addresses.data();
  record.binary_status = nullptr;
  record.num_devices = static_cast<std::uint32_t>(binaries.size());
  return {this->call_handle_, create_object<qv::operation::create_program_with_binary>(record)};
}

template <version V>
template <version W>
program<V> context<V>::create_program_with_builtin_kernels(const std::vector<device<V>>& devices,
                                                           const std::vector<std::string>& kernel_names) const
    requires(version_traits<W>::has_builtin_kernels) {
  const std::vector<void*> handles = handles_of(devices);
  const std::string names = common::join_with_semicolon(kernel_names);
  qv::create_program_with_builtin_kernels_record record{};
  record.device_list = handles.data();
  record.num_devices = static_cast<std::uint32_t>(handles.size());
  record.kernel_names = names.c_str();
  return {this->call_handle_, create_object<qv::operation::create_program_with_builtin_kernels>(record)};
}

template <version V>
template <version W>
program<V> context<V>::create_program_with_il(const std::vector<std::uint8_t>& il) const
    requires(version_traits<W>::has_il) {
  qv::create_program_with_il_record record{};
  record.il = il.data();
  record.length = il.size();
  return {this->call_handle_, create_object<qv::operation::create_program_with_il>(record)};
}

template <version V>
template <version W>
program<V> context<V>::create_program_with_il(const void* il, std::size_t length) const
    requires(version_traits<W>::has_il_extension) {
  using create_function = void* (*)(void* context, const void* il, std::size_t length, std::int32_t* status);

  qv::get_extension_function_address_for_platform_record record{};
  record.platform = get_platform().get_handle();
  record.func_name = "clCreateProgramWithILKHR";
  call<V, qv::operation::get_extension_function_address_for_platform>(this->call_handle_, record);
  if (record.result == nullptr)
    throw std::logic_error(
        "Failed to extract clCreateProgramWithILKHR function address, is the cl_khr_il_program extension actually supported?");

  // An extension has no command of its own: this is the one call that does not pass the capability library.
  const auto create = reinterpret_cast<create_function>(record.result);
  std::int32_t status = common::cl::success;
  void* const result = create(this->object_, il, length, &status);
  common::check_status(status);
  return {this->call_handle_, result};
}

#define INSTANTIATE(v) template class context<version::v>;
ORYN_FOR_EACH_VERSION(INSTANTIATE)
#undef INSTANTIATE

#define INSTANTIATE(v)                                                                                       \
  template program<version::v> context<version::v>::create_program_with_builtin_kernels<version::v>(         \
      const std::vector<device<version::v>>&, const std::vector<std::string>&) const;
ORYN_FOR_EACH_VERSION_FROM_1_2(INSTANTIATE)
#undef INSTANTIATE

#define INSTANTIATE(v)                                                                                       \
  template program<version::v> context<version::v>::create_program_with_il<version::v>(                      \
      const std::vector<std::uint8_t>&) const;
ORYN_FOR_EACH_VERSION_FROM_2_1(INSTANTIATE)
#undef INSTANTIATE

// The two versions with the extension.
#define INSTANTIATE(v)                                                                                       \
  template platform<version::v> context<version::v>::get_platform<version::v>() const;                       \
  template program<version::v> context<version::v>::create_program_with_il<version::v>(const void*,          \
                                                                                       std::size_t) const;
INSTANTIATE(v1_2)
INSTANTIATE(v2_0)
#undef INSTANTIATE

} // namespace oryn::skerv::opencl
