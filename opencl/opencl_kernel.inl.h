// The bodies of opencl_kernel.h, compiled once for each version.
#pragma once

#include "access/common/errors.h"
#include "access/common/transport.h"
#include "access/opencl/program.h"
#include "objects/integer_root.h"
#include "objects/library_program.h"
#include "opencl/kernel_properties.inl.h"
#include "opencl/kernel_signature.inl.h"
#include "opencl/opencl_device.h"
#include "opencl/opencl_kernel.h"

#include <algorithm>
#include <stdexcept>

namespace oryn::tarva::library {

namespace detail {

template <version V>
const skerv::opencl::device<V>& access_device_of(const std::shared_ptr<library_program>& program) {
  return dynamic_cast<const opencl_version_device<V>&>(*program->get_device()).get_access_device();
}

// What the device tells. A query or command that it does not know, or a query that it answers wrongly, tells
// nothing; any other failure is one of the moment.
template <class Read>
auto ask(Read read) -> std::optional<decltype(read())> {
  try {
    return read();
  } catch (const skerv::common::runtime_error&) {
    throw;
  } catch (const skerv::common::error&) {
    return std::nullopt;
  } catch (const qv::recoverable_error&) {
    return std::nullopt;
  }
}

// For what a launch can do without: any failure means that it is not told.
template <class Read>
auto try_to_ask(Read read) -> std::optional<decltype(read())> {
  try {
    return read();
  } catch (...) {
    return std::nullopt;
  }
}

// A limit of 0 would forbid everything: a device that gives it tells nothing either.
template <class Read>
auto limit(Read read) -> std::optional<decltype(read())> {
  auto told = ask(read);
  if (told == decltype(read()){})
    told.reset();
  return told;
}

} // namespace detail

template <version V>
opencl_version_kernel<V>::opencl_version_kernel(std::shared_ptr<library_program> program,
                                                const std::string& name, skerv::opencl::kernel<V> kernel,
                                                std::shared_ptr<const kernel_signature> signature)
    : opencl_kernel(program, name), kernel_(std::move(kernel)), device_(detail::access_device_of<V>(program)),
      signature_(std::move(signature)) {
  try {
    get_launch_limits();
    if (!signature_)
      learn_signature();
  } catch (...) {
    // The first launch asks for the limits again, and is the one to fail. Without a signature the device judges.
  }
}

template <version V>
opencl_version_kernel<V>::~opencl_version_kernel() = default;

template <version V>
const launch_limits& opencl_version_kernel<V>::get_launch_limits() const {
  if (has_limits_)
    return *limits_;
  const std::lock_guard guard(limits_lock_);
  if (!limits_) {
    limits_ = read_limits();
    has_limits_ = true;
  }
  return *limits_;
}

template <version V>
launch_limits opencl_version_kernel<V>::read_limits() const {
  using detail::ask;
  using detail::limit;
  using skerv::opencl::device_parameter;
  launch_limits limits;
  limits.has_global_offset = version_traits<V>::has_global_offset;
  limits.zero_global_size_is_allowed = V >= version::v2_1;
  limits.local_size_must_divide = !has_non_uniform_groups();
  limits.argument_count = ask([this] { return std::uint64_t{kernel_.get_num_args()}; });
  limits.work_group_size = limit([this] { return kernel_.get_work_group_size(device_); });
  // A device may allow less than it tells of a kernel, or tell nothing of the kernel.
  if (const auto of_device =
          limit([this] { return device_.template get<device_parameter::max_work_group_size>(); }))
    limits.work_group_size = std::min(limits.work_group_size.value_or(*of_device), *of_device);
  limits.compile_work_group_size = ask([this] { return kernel_.get_compile_work_group_size(device_); });
  if (const auto& fixed = limits.compile_work_group_size; fixed && std::ranges::count(*fixed, 0U) != 0)
    limits.compile_work_group_size.reset();
  limits.work_item_sizes =
      limit([this] { return device_.template get<device_parameter::max_work_item_sizes>(); });
  limits.local_memory_bytes =
      limit([this] { return device_.template get<device_parameter::local_mem_size>(); });
  // The kernel's own local variables take room from its arguments.
  const auto own_bytes =
      detail::try_to_ask([this] { return kernel_.get_local_memory_size(device_); }).value_or(0);
  if (limits.local_memory_bytes)
    *limits.local_memory_bytes -= std::min(own_bytes, *limits.local_memory_bytes);
  limits.allocation_bytes =
      limit([this] { return device_.template get<device_parameter::max_mem_alloc_size>(); });
  limits.address_bits = limit([this] { return device_.template get<device_parameter::address_bits>(); });
  add_signature(limits);
  return limits;
}

// While nobody else has this kernel, whose limits have been read.
template <version V>
void opencl_version_kernel<V>::learn_signature() {
  launch_limits& limits = *limits_;
  if (limits.argument_count.value_or(UINT64_MAX) > detail::most_parameters)
    return;
  const auto learnt = std::make_shared<kernel_signature>();
  learnt->parameters = detail::ask_parameters(kernel_, *limits.argument_count);
  if constexpr (version_traits<V>::has_kernel_attributes)
    if (!limits.compile_work_group_size)
      learnt->required_group_size = find_required_group_size(
          detail::ask([this] { return kernel_.get_attributes(); }).value_or(std::vector<std::string>()));
  signature_ = learnt;
  add_signature(limits);
}

template <version V>
void opencl_version_kernel<V>::add_signature(launch_limits& limits) const {
  if (!signature_)
    return;
  limits.parameters = signature_->parameters;
  if (!limits.compile_work_group_size)
    limits.compile_work_group_size = signature_->required_group_size;
}

// A device of 2.x has them. One of an earlier version that is used as 2.x has none. In later versions they are
// optional, and the device tells.
template <version V>
bool opencl_version_kernel<V>::has_non_uniform_groups() const {
  constexpr std::uint32_t non_uniform_work_group_support = 0x1065;
  if constexpr (V < version::v2_0)
    return false;
  const std::string reported = detail::ask([this] {
                                 return device_.template get<skerv::opencl::device_parameter::version>();
                               }).value_or("");
  if (reported.rfind("OpenCL 1.", 0) == 0)
    return false;
  if (reported.rfind("OpenCL 2.", 0) == 0)
    return true;
  return detail::try_to_ask([this] { return device_.get_bool(non_uniform_work_group_support); })
      .value_or(true);
}

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

} // namespace oryn::tarva::library
