// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "access/opencl/kernel.h"

#include "access/common/info_query.h"
#include "access/opencl/program.h"

namespace oryn::skerv::opencl {
namespace {

template <version V>
common::info_query<qv::operation::get_kernel_info> info(const kernel<V>& kernel, std::uint32_t parameter) {
  return kernel.template query<qv::operation::get_kernel_info>(parameter);
}

// What the kernel is on one device.
template <version V>
common::info_query<qv::operation::get_kernel_work_group_info>
info(const kernel<V>& kernel, std::uint32_t parameter, const device<V>& device) {
  return kernel.template query<qv::operation::get_kernel_work_group_info>(parameter, device.get_handle());
}

} // namespace

template <version V>
std::string kernel<V>::get_function_name() const {
  return common::get_string_info(info(*this, common::cl::kernel_function_name));
}

template <version V>
std::uint32_t kernel<V>::get_num_args() const {
  return common::get_scalar_info<std::uint32_t>(info(*this, common::cl::kernel_num_args));
}

template <version V>
std::vector<std::string> kernel<V>::get_words(std::uint32_t parameter) const {
  return common::split_on_whitespace(common::get_string_info(info(*this, parameter)));
}

// The query hands out no reference: the wrapper takes one, for as long as it lives.
template <version V>
program<V> kernel<V>::get_program() const {
  void* const handle = common::get_scalar_info<void*>(info(*this, common::cl::kernel_program));
  return {this->call_handle_, handle, from_query};
}

// The same in every version: the command that clones, which the last versions have, would keep the arguments.
template <version V>
kernel<V> kernel<V>::clone() const {
  return get_program().create_kernel(get_function_name());
}

template <version V>
std::uint64_t kernel<V>::get_number(std::uint32_t parameter, const device<V>& device) const {
  return common::get_scalar_info<std::uint64_t>(info(*this, parameter, device));
}

template <version V>
std::array<std::uint64_t, 3> kernel<V>::get_sizes(std::uint32_t parameter, const device<V>& device) const {
  return common::get_fixed_array_info<std::uint64_t, 3>(info(*this, parameter, device));
}

#define INSTANTIATE(v) template class kernel<version::v>;
ORYN_FOR_EACH_VERSION(INSTANTIATE)
#undef INSTANTIATE

} // namespace oryn::skerv::opencl
