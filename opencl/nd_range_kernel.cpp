#include "opencl/nd_range_kernel.h"

#include "access/opencl/commands.h"
#include "ir/launch_checks.h"

#include <stdexcept>
#include <type_traits>
#include <vector>

namespace oryn::tarva::library::device_ir::opencl {

namespace {

// A value travels in the byte order of the device; the arguments of the launch keep the host's.
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

} // namespace

template <version V>
void nd_range_kernel<V>::set_arguments(skerv::opencl::kernel<V>& kernel) const {
  const kernel_argument_capture& arguments = launch_.get_arguments();
  if (!arguments.get_library_memory_arguments().empty())
    throw std::logic_error(
        "Expected the library memory arguments to be empty in the kernel argument capture.");
  const bool device_is_little_endian = this->get_device().is_little_endian();
  const std::uint64_t count = arguments.get_argument_count();
  for (std::uint32_t index = 0; index < count; ++index)
    arguments.visit_argument(index, [&](const auto& argument) {
      using kind = std::remove_cvref_t<decltype(argument)>;
      if constexpr (std::is_same_v<kind, kernel_argument_nullptr>) {
        kernel.set_null_argument(index);
      } else if constexpr (std::is_same_v<kind, kernel_argument_pod_value>) {
        set_value<V>(kernel, index, argument, device_is_little_endian);
      } else if constexpr (std::is_same_v<kind, kernel_argument_local_memory>) {
        kernel.set_local_argument(index, element_size(argument.get_type()) * argument.get_num_elements());
      } else if constexpr (std::is_same_v<kind, kernel_argument_typed_device_memory_array>) {
        argument.get_memory().mark_content(); // nobody knows what the kernel writes
        kernel.set_memory_argument(index, this->buffer_of(argument.get_memory()));
      } else {
        throw std::logic_error(
            "Unexpected type of library memory in the kernel argument capture.  This should not "
            "be possible.");
      }
    });
}

template <version V>
void nd_range_kernel<V>::enqueue() {
  const nd_range& range = launch_.get_range();
  check_work_dimension(range, version_traits<V>::has_global_offset);
  skerv::opencl::kernel<V> kernel = kernel_.clone_kernel();
  set_arguments(kernel);
  const auto work_dim = static_cast<std::uint32_t>(range.work_dim);
  if constexpr (version_traits<V>::has_global_offset)
    this->submit(skerv::opencl::nd_range_kernel<V>(kernel, work_dim, range.global_offset, range.global_size,
                                                   range.local_size));
  else
    this->submit(
        skerv::opencl::nd_range_kernel<V>(kernel, work_dim, range.global_size, range.local_size));
}

#define INSTANTIATE(V) template class nd_range_kernel<version::V>;
ORYN_FOR_EACH_VERSION(INSTANTIATE)
#undef INSTANTIATE

} // namespace oryn::tarva::library::device_ir::opencl
