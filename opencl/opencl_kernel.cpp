// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "opencl/opencl_kernel.h"

#include "access/opencl/program.h"
#include "objects/library_program.h"
#include "opencl/opencl_commands.h"
#include "opencl/opencl_device.h"
#include "opencl/read_launch_limits.h"

#include <stdexcept>

namespace oryn::tarva::library {

// Limits and signature are learnt here, so that a launch need not ask OpenCL for them.
template <version V>
opencl_version_kernel<V>::opencl_version_kernel(std::shared_ptr<library_program> program,
                                                opencl_version_device<V>& device, const std::string& name,
                                                skerv::opencl::kernel<V> kernel,
                                                std::shared_ptr<const kernel_signature> signature)
    : opencl_kernel(std::move(program), name), kernel_(std::move(kernel)), queues_(device.get_queues()),
      device_(device.get_access_device()), signature_(std::move(signature)) {
  try {
    get_launch_limits();
    if (!signature_) {
      signature_ = learn_signature<V>(kernel_, *limits_);
      add_signature(*limits_); // nobody else has this kernel yet
    }
  } catch (...) {
    // The first launch asks for the limits again, and is the one to fail. Without a signature the device judges.
  }
}

template <version V>
opencl_version_kernel<V>::~opencl_version_kernel() = default;

// The atomic spares every launch but the first the lock.
template <version V>
const launch_limits& opencl_version_kernel<V>::get_launch_limits() const {
  if (has_limits_)
    return *limits_;
  const lock_guard guard(limits_lock_);
  if (!limits_) {
    launch_limits limits = read_launch_limits<V>(kernel_, device_);
    add_signature(limits);
    limits_ = limits;
    has_limits_ = true;
  }
  return *limits_;
}

template <version V>
void opencl_version_kernel<V>::add_signature(launch_limits& limits) const {
  if (!signature_)
    return;
  limits.parameters = signature_->parameters;
  if (!limits.compile_work_group_size)
    limits.compile_work_group_size = signature_->required_group_size;
}

template <version V>
std::shared_ptr<device_ir::device_command> opencl_version_kernel<V>::make_launch_command(
    const std::shared_ptr<physical_ir::physical_operation>& launch) const {
  return std::make_shared<device_ir::opencl::nd_range_kernel<V>>(launch, queues_, kernel_);
}

// A size that the compiler has fixed, or else the largest group, as square or cubic as integers allow.
template <version V>
size_triple opencl_version_kernel<V>::get_preferred_work_group_size(std::uint64_t work_dim) {
  const size_triple fixed = get_compile_work_group_size();
  if (fixed != size_triple{})
    return fixed;
  const std::uint64_t size = kernel_.get_work_group_size(device_);
  switch (work_dim) {
  case 1:
    return {size, 1, 1};
  case 2: {
    const std::uint64_t side = integer_square_root(size);
    return {side, side, 1};
  }
  case 3: {
    const std::uint64_t side = integer_cube_root(size);
    return {side, side, side};
  }
  default:
    throw std::runtime_error("Maximum work dimension is 3, but work-dimension of " +
                             std::to_string(work_dim) + " was provided.");
  }
}

template <version V>
size_triple opencl_version_kernel<V>::get_compile_work_group_size() {
  return kernel_.get_compile_work_group_size(device_);
}

template <version V>
std::uint32_t opencl_version_kernel<V>::get_max_compute_units() {
  return device_.template get<skerv::opencl::device_parameter::max_compute_units>();
}

// OpenCL tells it of custom devices and of built-in kernels alone. Of any other kernel it is what addresses can count.
template <version V>
size_triple opencl_version_kernel<V>::get_max_global_size() {
  if constexpr (version_traits<V>::has_kernel_global_work_size) {
    const bool is_custom = device_.template is<skerv::opencl::device_flag::type_custom>();
    if (is_custom || this->get_program()->is_builtin())
      return kernel_.get_global_work_size(device_);
  }
  return get_address_space_limit();
}

template <version V>
size_triple opencl_version_kernel<V>::get_address_space_limit() const {
  const std::uint32_t bits = device_.template get<skerv::opencl::device_parameter::address_bits>();
  if (bits != 32 && bits != 64)
    throw std::runtime_error("Expected the number of address bits for the device to be 32 or 64, but read " +
                             std::to_string(bits));
  const std::uint64_t largest = bits == 32 ? UINT32_MAX : UINT64_MAX;
  return {largest, largest, largest};
}

template <version V>
bool opencl_version_kernel<V>::read_value(const kernel_catalogue::row& wanted, property_value& value) {
  using from = kernel_source;
  switch (wanted.source) {
  case from::none:
    break;
  case from::max_work_item_dimensions:
    value.set(device_.template get<skerv::opencl::device_parameter::max_work_item_dimensions>());
    break;
  case from::max_work_group_size:
    value.set(kernel_.get_work_group_size(device_));
    break;
  case from::name:
    value.set(kernel_.get_function_name());
    break;
  case from::object_id:
    value.set(this->get_unique_identifier());
    break;
  case from::required_work_group_size:
    value.set(get_compile_work_group_size());
    break;
  case from::max_global_work_size:
    value.set(get_max_global_size());
    break;
  case from::num_args:
    value.set(kernel_.get_num_args());
    break;
  case from::compile_work_group_size:
    value.set(kernel_.get_compile_work_group_size(device_));
    break;
  case from::attributes:
    if constexpr (version_traits<V>::has_kernel_attributes)
      value.set(kernel_.get_attributes());
    break;
  case from::preferred_work_group_size_multiple:
    if constexpr (version_traits<V>::has_work_group_size_multiple)
      value.set(kernel_.get_preferred_work_group_size_multiple(device_));
    break;
  }
  return true;
}

#define INSTANTIATE(V) template class opencl_version_kernel<version::V>;
ORYN_FOR_EACH_VERSION(INSTANTIATE)
#undef INSTANTIATE

} // namespace oryn::tarva::library
