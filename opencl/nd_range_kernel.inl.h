// The bodies of nd_range_kernel.h, compiled once for each version.
#pragma once

#include "access/opencl/nd_range_kernel.h"
#include "opencl/nd_range_kernel.h"
#include "ir/launch_checks.h"
#include "memory/swap_endianness.h"
#include "opencl/opencl_kernel.h"

namespace oryn::tarva::library::device_ir::opencl {

namespace detail {

template <version V>
skerv::opencl::kernel<V> clone(library_kernel& kernel) {
  auto* typed = dynamic_cast<opencl_version_kernel<V>*>(&kernel);
  if (typed == nullptr)
    throw std::logic_error(std::string("Expected OpenCL ") + version_traits<V>::text + " kernel.");
  return typed->clone_kernel();
}

// Sets one argument of a kernel.
template <version V>
class argument_setter {
public:
  argument_setter(skerv::opencl::kernel<V>& kernel, std::uint32_t index, bool device_is_little_endian)
      : kernel_(kernel), index_(index), device_is_little_endian_(device_is_little_endian) {}

  void operator()(const kernel_argument_nullptr&) const { kernel_.set_null_argument(index_); }
  // It travels in the byte order of the device; the capture keeps the host's.
  void operator()(const kernel_argument_pod_value& value) const {
    const auto raw = value.get_raw_data();
    if (raw.empty())
      throw std::logic_error("Expected raw data to be non-empty.");
    if (device_is_little_endian_) {
      kernel_.set_value_argument(index_, raw.size(), raw.data());
      return;
    }
    std::vector<std::uint8_t> bytes(raw.begin(), raw.end());
    swap_endianness(bytes.data(), value.get_type(), 0, 1);
    kernel_.set_value_argument(index_, bytes.size(), bytes.data());
  }
  void operator()(const kernel_argument_local_memory& local) const {
    kernel_.set_local_argument(index_, element_size(local.get_type()) * local.get_num_elements());
  }
  // Nobody knows what the kernel writes.
  void operator()(const kernel_argument_typed_device_memory_array& memory) const {
    memory.get_memory().note_content();
    kernel_.set_memory_argument(index_, buffer_of<V>(memory.get_memory()));
  }
  [[noreturn]] void operator()(const kernel_argument_typed_library_memory_array&) const {
    throw std::logic_error(
        "Unexpected type of library memory in the kernel argument capture.  This should not "
        "be possible.");
  }

private:
  skerv::opencl::kernel<V>& kernel_;
  const std::uint32_t index_;
  const bool device_is_little_endian_;
};

} // namespace detail

template <version V>
std::string nd_range_kernel<V>::to_string() const {
  return class_text<V>("nd_range_kernel") + library::to_string(step_.get_range()) + "}";
}

template <version V>
skerv::opencl::event<V> nd_range_kernel<V>::enqueue(dispatch_queue<V>& queue, std::uint32_t wait_count,
                                                    void* const* wait_list) {
  const nd_range& range = step_.get_range();
  const kernel_argument_capture& arguments = step_.get_arguments();
  check_work_dimension(range, version_traits<V>::has_global_offset);
  skerv::opencl::kernel<V> kernel = detail::clone<V>(*step_.get_kernel_object());
  if (!arguments.get_library_memory_arguments().empty())
    throw std::logic_error(
        "Expected the library memory arguments to be empty in the kernel argument capture.");
  const bool device_is_little_endian = this->get_device().is_little_endian();
  const std::uint64_t count = arguments.get_argument_count();
  for (std::uint32_t index = 0; index < count; ++index)
    arguments.visit_argument(index, detail::argument_setter<V>(kernel, index, device_is_little_endian));
  const auto work_dim = static_cast<std::uint32_t>(range.work_dim);
  if constexpr (version_traits<V>::has_global_offset)
    return this->submit(queue,
                        skerv::opencl::nd_range_kernel<V>(kernel, work_dim, range.global_offset,
                                                          range.global_size, range.local_size),
                        wait_count, wait_list);
  else
    return this->submit(
        queue, skerv::opencl::nd_range_kernel<V>(kernel, work_dim, range.global_size, range.local_size),
        wait_count, wait_list);
}

} // namespace oryn::tarva::library::device_ir::opencl
