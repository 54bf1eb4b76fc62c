// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "access/opencl/program.h"

#include "access/common/info_query.h"

namespace oryn::skerv::opencl {
namespace {

template <version V>
common::info_query<qv::operation::get_program_info> info(const program<V>& program, std::uint32_t parameter) {
  return program.template query<qv::operation::get_program_info>(parameter);
}

template <version V>
common::info_query<qv::operation::get_program_build_info>
build_info(const program<V>& program, std::uint32_t parameter, const device<V>& device) {
  return program.template query<qv::operation::get_program_build_info>(parameter, device.get_handle());
}

} // namespace

// One status is no failure of the call: the source is wrong, and the build status and log tell.
template <version V>
void program<V>::build(const std::vector<device<V>>& devices, const std::string& options,
                       qv::program_callback pfn_notify, void* user_data) {
  const std::vector<void*> handles = handles_of(devices);
  qv::build_program_record record{};
  record.program = this->object_;
  record.device_list = handles.data();
  record.num_devices = static_cast<std::uint32_t>(handles.size());
  record.options = options.c_str();
  record.pfn_notify = pfn_notify;
  record.user_data = user_data;
  common::send(this->call_handle_.get(), command_of<V, qv::operation::build_program>, &record);
  if (record.status != common::cl::build_program_failure)
    common::check_status(record.status);
}

template <version V>
std::int32_t program<V>::get_build_status(const device<V>& device) const {
  return common::get_scalar_info<std::int32_t>(build_info(*this, common::cl::program_build_status, device));
}

template <version V>
std::string program<V>::get_build_log(const device<V>& device) const {
  return common::get_string_info(build_info(*this, common::cl::program_build_log, device));
}

template <version V>
std::string program<V>::get_source() const {
  return common::get_string_info(info(*this, common::cl::program_source));
}

template <version V>
std::vector<device<V>> program<V>::get_devices() const {
  return wrap_devices<V>(this->call_handle_,
                         common::get_vector_info<void*>(info(*this, common::cl::program_devices)));
}

// OpenCL is given an array of addresses and writes behind each of them. The sizes come first, and are not trusted: a launch on
// another thread may compile a kernel once more and make a binary longer, so there is some room behind each, and the sizes must
// be the same afterwards.
template <version V>
std::vector<device_binary<V>> program<V>::get_binaries() const {
  std::vector<device_binary<V>> binaries;
  for (device<V>& each : get_devices())
    binaries.push_back({std::move(each), {}});
  const auto ask_sizes = [this] {
    return common::get_vector_info<std::size_t>(info(*this, common::cl::program_binary_sizes));
  };
  constexpr std::size_t room = std::size_t{256} << 10;
  const auto sizes = ask_sizes();
  if (sizes.size() != binaries.size())
    throw common::bad_implementation(
        "The number of binary sizes returned should be equal to the number of devices.");

  std::vector<std::uint8_t*> addresses;
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    common::check_reported_size(sizes[i]);
    binaries[i].binary.resize(sizes[i] + room);
    addresses.push_back(binaries[i].binary.data());
  }
  info(*this, common::cl::program_binaries)
      .ask(addresses.size() * sizeof(addresses.front()), addresses.data(), nullptr);
  if (ask_sizes() != sizes)
    common::throw_size_changed();
  for (std::size_t i = 0; i < sizes.size(); ++i)
    binaries[i].binary.resize(sizes[i]);
  return binaries;
}

template <version V>
std::vector<std::uint8_t> program<V>::get_bytes(std::uint32_t parameter) const {
  return common::get_vector_info<std::uint8_t>(info(*this, parameter));
}

template <version V>
std::vector<std::string> program<V>::get_names(std::uint32_t parameter) const {
  return common::split_on_semicolon(common::get_string_info(info(*this, parameter)));
}

// On the way of each launch, which has a kernel of its own.
template <version V>
kernel<V> program<V>::create_kernel(const std::string& name) const {
  qv::create_kernel_record record{};
  record.program = this->object_;
  record.kernel_name = name.c_str();
  call<V, qv::operation::create_kernel>(this->call_handle_, record);
  return {this->call_handle_, record.result};
}

// Only 1.0 and 1.1 need it: there a program cannot tell the names of its kernels, but they can.
template <version V>
template <version W>
std::vector<kernel<V>> program<V>::create_kernels() const requires(version_traits<W>::has_create_kernels) {
  std::uint32_t count = 0;
  qv::create_kernels_in_program_record record{};
  record.program = this->object_;
  record.num_kernels_ret = &count;
  call<V, qv::operation::create_kernels_in_program>(this->call_handle_, record);
  std::vector<kernel<V>> kernels;
  if (count == 0)
    return kernels;

  common::check_reported_count(count);
  // All room is taken before there are kernels, so that nothing can fail while some have no owner yet.
  std::vector<void*> handles(count);
  kernels.reserve(count);
  record = {};
  record.program = this->object_;
  record.kernels = handles.data();
  record.num_kernels = count;
  call<V, qv::operation::create_kernels_in_program>(this->call_handle_, record);
  for (void* handle : handles)
    kernels.emplace_back(this->call_handle_, handle);
  return kernels;
}

// OpenCL copies the value.
template <version V>
template <version W>
void program<V>::set_specialization_constant(std::uint32_t id, std::size_t size, const void* value) requires(
    version_traits<W>::has_specialization_constants) {
  qv::set_program_specialization_constant_record record{};
  record.program = this->object_;
  record.spec_id = id;
  record.spec_size = size;
  record.spec_value = value;
  call<V, qv::operation::set_program_specialization_constant>(this->call_handle_, record);
}

#define INSTANTIATE(v) template class program<version::v>;
ORYN_FOR_EACH_VERSION(INSTANTIATE)
#undef INSTANTIATE

#define INSTANTIATE(v)                                                                                       \
  template std::vector<kernel<version::v>> program<version::v>::create_kernels<version::v>() const;
ORYN_FOR_EACH_VERSION_UNTIL_1_1(INSTANTIATE)
#undef INSTANTIATE

#define INSTANTIATE(v)                                                                                       \
  template void program<version::v>::set_specialization_constant<version::v>(std::uint32_t, std::size_t,     \
                                                                             const void*);
ORYN_FOR_EACH_VERSION_FROM_2_2(INSTANTIATE)
#undef INSTANTIATE

} // namespace oryn::skerv::opencl
