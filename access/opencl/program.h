#pragma once

#include "access/common/opencl_constants.h"
#include "access/opencl/device.h"
#include "access/opencl/device_binary.h"
#include "access/opencl/kernel.h"
#include "access/opencl/opencl_handle.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace oryn::skerv::opencl {

template <version V>
class program : public opencl_handle<V, program_kind> {
public:
  // Takes over the reference that the create command returned.
  program(common::call_handle call_handle, void* handle) noexcept
      : opencl_handle<V, program_kind>(std::move(call_handle), handle) {}

  program(common::call_handle call_handle, void* handle, from_query_t)
      : opencl_handle<V, program_kind>(std::move(call_handle), handle, from_query) {}

  // A program that does not compile is no exception: get_build_status tells.
  void build(const std::vector<device<V>>& devices, const std::string& options,
             qv::program_callback pfn_notify, void* user_data);
  std::int32_t get_build_status(const device<V>& device) const;
  std::string get_build_log(const device<V>& device) const;

  std::string get_source() const { return common::get_string_info(info(common::cl::program_source)); }
  std::vector<device<V>> get_devices() const;
  std::vector<device_binary<V>> get_binaries() const;
  template <version W = V>
  std::vector<std::uint8_t> get_il() const requires(version_traits<W>::has_il);
  template <version W = V>
  std::vector<std::string> get_kernel_names() const requires(version_traits<W>::has_kernel_names);
  kernel<V> create_kernel(const std::string& name) const;
  template <version W = V>
  std::vector<kernel<V>> create_kernels() const requires(version_traits<W>::has_create_kernels);
  template <version W = V>
  void
  set_specialization_constant(std::uint32_t id, std::size_t size,
                              const void* value) requires(version_traits<W>::has_specialization_constants);
  template <version W = V>
  void set_specialization_constant(std::uint32_t id,
                                   bool flag) requires(version_traits<W>::has_specialization_constants);

private:
  common::info_query<qv::operation::get_program_info> info(std::uint32_t parameter) const {
    return this->template query<qv::operation::get_program_info>(parameter);
  }
  common::info_query<qv::operation::get_program_build_info> build_info(std::uint32_t parameter,
                                                                       const device<V>& device) const {
    return this->template query<qv::operation::get_program_build_info>(parameter, device.get_handle());
  }
};

template <version V>
void program<V>::build(const std::vector<device<V>>& devices, const std::string& options,
                       qv::program_callback pfn_notify, void* user_data) {
  const std::vector<void*> handles = handles_of(devices);
  qv::build_program_record record{};
  record.program = this->get_handle();
  record.device_list = handles.data();
  record.num_devices = static_cast<std::uint32_t>(handles.size());
  record.options = options.c_str();
  record.pfn_notify = pfn_notify;
  record.user_data = user_data;
  send<V, qv::operation::build_program>(this->get_call_handle(), record);
  if (record.status != common::cl::build_program_failure)
    common::check_status(record.status);
}

template <version V>
std::int32_t program<V>::get_build_status(const device<V>& device) const {
  return common::get_scalar_info<std::int32_t>(build_info(common::cl::program_build_status, device));
}

template <version V>
std::string program<V>::get_build_log(const device<V>& device) const {
  return common::get_string_info(build_info(common::cl::program_build_log, device));
}

template <version V>
std::vector<device<V>> program<V>::get_devices() const {
  return wrap_devices<V>(this->get_call_handle(),
                         common::get_vector_info<void*>(info(common::cl::program_devices)));
}

template <version V>
std::vector<device_binary<V>> program<V>::get_binaries() const {
  std::vector<device_binary<V>> binaries;
  for (device<V>& each : get_devices())
    binaries.push_back({std::move(each), {}});
  const auto sizes = common::get_vector_info<std::size_t>(info(common::cl::program_binary_sizes));
  if (sizes.size() != binaries.size())
    throw common::bad_implementation(
        "The number of binary sizes returned should be equal to the number of devices.");

  std::vector<std::uint8_t*> addresses;
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    common::check_reported_size(sizes[i]);
    binaries[i].binary.resize(sizes[i]);
    addresses.push_back(binaries[i].binary.data());
  }
  info(common::cl::program_binaries)
      .ask(addresses.size() * sizeof(addresses.front()), addresses.data(), nullptr);
  return binaries;
}

template <version V>
template <version W>
std::vector<std::uint8_t> program<V>::get_il() const requires(version_traits<W>::has_il) {
  return common::get_vector_info<std::uint8_t>(info(common::cl::program_il));
}

template <version V>
template <version W>
std::vector<std::string> program<V>::get_kernel_names() const requires(version_traits<W>::has_kernel_names) {
  return common::split_on_semicolon(common::get_string_info(info(common::cl::program_kernel_names)));
}

template <version V>
kernel<V> program<V>::create_kernel(const std::string& name) const {
  qv::create_kernel_record record{};
  record.program = this->get_handle();
  record.kernel_name = name.c_str();
  call<V, qv::operation::create_kernel>(this->get_call_handle(), record);
  return {this->get_call_handle(), record.result};
}

template <version V>
template <version W>
std::vector<kernel<V>> program<V>::create_kernels() const requires(version_traits<W>::has_create_kernels) {
  std::uint32_t count = 0;
  qv::create_kernels_in_program_record record{};
  record.program = this->get_handle();
  record.num_kernels_ret = &count;
  call<V, qv::operation::create_kernels_in_program>(this->get_call_handle(), record);
  std::vector<kernel<V>> kernels;
  if (count == 0)
    return kernels;

  // All room is taken before there are kernels, so that nothing can fail while some have no owner yet.
  std::vector<void*> handles(count);
  kernels.reserve(count);
  record = {};
  record.program = this->get_handle();
  record.kernels = handles.data();
  record.num_kernels = count;
  call<V, qv::operation::create_kernels_in_program>(this->get_call_handle(), record);
  for (void* handle : handles)
    kernels.emplace_back(this->get_call_handle(), handle);
  return kernels;
}

template <version V>
template <version W>
void program<V>::set_specialization_constant(std::uint32_t id, std::size_t size, const void* value) requires(
    version_traits<W>::has_specialization_constants) {
  qv::set_program_specialization_constant_record record{};
  record.program = this->get_handle();
  record.spec_id = id;
  record.spec_size = size;
  record.spec_value = value;
  call<V, qv::operation::set_program_specialization_constant>(this->get_call_handle(), record);
}

template <version V>
template <version W>
void program<V>::set_specialization_constant(std::uint32_t id, bool flag) requires(
    version_traits<W>::has_specialization_constants) {
  const std::uint8_t value = flag ? 1 : 0;
  set_specialization_constant(id, sizeof(value), &value);
}

extern template class program<version::v1_0>;
extern template class program<version::v1_1>;
extern template class program<version::v1_2>;
extern template class program<version::v2_0>;
extern template class program<version::v2_1>;
extern template class program<version::v2_2>;

} // namespace oryn::skerv::opencl
