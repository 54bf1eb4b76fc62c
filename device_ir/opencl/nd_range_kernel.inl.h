// The bodies of nd_range_kernel.h, compiled once for each version.
#pragma once

#include "access/opencl/nd_range_kernel.h"
#include "device_ir/opencl/nd_range_kernel.h"
#include "ir/launch_checks.h"
#include "memory/swap_endianness.h"
#include "objects/opencl/opencl_kernel.h"

namespace oryn::tarva::library::device_ir::opencl {

namespace detail {

template <version V>
skerv::opencl::kernel<V> clone(library_kernel& kernel) {
  auto* typed = dynamic_cast<opencl_version_kernel<V>*>(&kernel);
  if (typed == nullptr)
    throw std::logic_error(std::string("Expected OpenCL ") + version_traits<V>::text + " kernel.");
  return typed->clone_kernel();
}

// A value travels in the byte order of the device; the capture keeps the host's.
template <version V>
void set_value(skerv::opencl::kernel<V>& kernel, std::uint32_t index, const kernel_argument_pod_value& value,
               bool device_is_little_endian) {
  const auto raw = value.get_raw_data();
  if (raw.empty())
    throw std::logic_error("Expected raw data to be non-empty.");
  if (device_is_little_endian) {
    kernel.set_value_argument(index, raw.size(), raw.data());
    return;
  }
  std::vector<std::uint8_t> bytes(raw.begin(), raw.end());
  swap_endianness(bytes.data(), value.get_type(), 0, 1);
  kernel.set_value_argument(index, bytes.size(), bytes.data());
}

template <version V>
void set_argument(skerv::opencl::kernel<V>& kernel, std::uint32_t index, const kernel_argument& argument,
                  bool device_is_little_endian) {
  if (const auto* value = std::get_if<kernel_argument_pod_value>(&argument))
    set_value<V>(kernel, index, *value, device_is_little_endian);
  else if (std::holds_alternative<kernel_argument_nullptr>(argument))
    kernel.set_null_argument(index);
  else if (const auto* local = std::get_if<kernel_argument_local_memory>(&argument))
    kernel.set_local_argument(index, element_size(local->get_type()) * local->get_num_elements());
  else if (std::holds_alternative<kernel_argument_typed_library_memory_array>(argument))
    throw std::logic_error(
        "Unexpected type of library memory in the kernel argument capture.  This should not "
        "be possible.");
  else if (const auto* memory = std::get_if<kernel_argument_typed_device_memory_array>(&argument))
    kernel.set_memory_argument(index, buffer_of<V>(*memory->get_memory()));
  else
    throw std::logic_error("Unexpected kernel argument type.");
}

} // namespace detail

template <version V>
std::string nd_range_kernel<V>::to_string() const {
  return class_text<V>("nd_range_kernel") + library::to_string(range_) + "}";
}

template <version V>
skerv::opencl::event<V> nd_range_kernel<V>::enqueue(dispatch_queue<V>& queue, std::uint32_t wait_count,
                                                    void* const* wait_list) {
  check_work_dimension(range_, version_traits<V>::has_global_offset);
  skerv::opencl::kernel<V> kernel = detail::clone<V>(*kernel_);
  if (!arguments_.get_library_memory_arguments().empty())
    throw std::logic_error(
        "Expected the library memory arguments to be empty in the kernel argument capture.");
  const bool device_is_little_endian = this->get_device().is_little_endian();
  for (std::uint32_t index = 0; index < arguments_.get_argument_count(); ++index)
    detail::set_argument<V>(kernel, index, arguments_.get_argument(index), device_is_little_endian);
  const auto work_dim = static_cast<std::uint32_t>(range_.work_dim);
  if constexpr (version_traits<V>::has_global_offset)
    return this->submit(queue,
                        skerv::opencl::nd_range_kernel<V>(kernel, work_dim, range_.global_offset,
                                                          range_.global_size, range_.local_size),
                        wait_count, wait_list);
  else
    return this->submit(
        queue, skerv::opencl::nd_range_kernel<V>(kernel, work_dim, range_.global_size, range_.local_size),
        wait_count, wait_list);
}

} // namespace oryn::tarva::library::device_ir::opencl
