#include "opencl/opencl_commands.h"

#include "access/opencl/commands.h"
#include "ir/launch_checks.h"
#include "memory/ranges.h"
#include "objects/library_device.h"

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

template <version V, class Source, class Destination>
std::string copy_command<V, Source, Destination>::text(const char* name) const {
  return this->class_text(name) + "src_object_id=" + std::to_string(copy_.source->get_unique_identifier()) +
         ", dest_object_id=" + std::to_string(copy_.destination->get_unique_identifier()) +
         ", src_start_pos=" + std::to_string(copy_.source_start) +
         ", dest_start_pos=" + std::to_string(copy_.destination_start) +
         ", count=" + std::to_string(copy_.count) + "}";
}

template <version V, class Source, class Destination>
void copy_command<V, Source, Destination>::check() const {
  check_device_copy({copy_.source->get_type(), copy_.source->get_size()}, copy_.source_start,
                    {copy_.destination->get_type(), copy_.destination->get_size()}, copy_.destination_start,
                    copy_.count);
}

template <version V>
void copy_device_to_host<V>::enqueue() {
  this->check();
  const auto& copy = this->copy_;
  this->submit(skerv::opencl::read_buffer<V>(this->buffer_of(*copy.source), false,
                                             this->in_bytes(copy.source_start), this->in_bytes(copy.count),
                                             copy.destination->get_write_pointer(copy.destination_start)));
}

template <version V>
void copy_host_to_device<V>::enqueue() {
  this->check();
  const auto& copy = this->copy_;
  copy.destination->mark_content();
  this->submit(skerv::opencl::write_buffer<V>(
      this->buffer_of(*copy.destination), false, this->in_bytes(copy.destination_start),
      this->in_bytes(copy.count), copy.source->get_read_pointer(copy.source_start)));
}

template <version V>
void copy_same_device<V>::enqueue() {
  const auto& copy = this->copy_;
  if (copy.source->get_device() != copy.destination->get_device())
    throw std::logic_error("Source and destination memory must be on the same device.");
  const auto source = this->buffer_of(*copy.source);
  this->check();
  copy.destination->mark_content();
  this->submit(skerv::opencl::copy_buffer<V>(
      source, this->buffer_of(*copy.destination), this->in_bytes(copy.source_start),
      this->in_bytes(copy.destination_start), this->in_bytes(copy.count)));
}

template <version V>
requires(version_traits<V>::has_fill_buffer) void fill_on_device<V>::enqueue() {
  const data_type type = fill_.memory->get_type();
  check_fill(fill_.value, fill_.start, fill_.count, {type, fill_.memory->get_size()});
  if (!this->get_device().is_little_endian())
    swap_endianness(fill_.value.data(), type, 0, 1);
  fill_.memory->mark_content();
  this->submit(skerv::opencl::fill_buffer_bytes<V>(this->buffer_of(*fill_.memory), std::move(fill_.value),
                                                   element_size(type) * fill_.start, fill_.count));
}

template <version V>
auto opencl_version_queues<V>::make_copy(const operation_pointer& operation, device_to_host_copy copy)
    -> command_pointer {
  return std::make_shared<copy_device_to_host<V>>(operation, *this, std::move(copy));
}

template <version V>
auto opencl_version_queues<V>::make_copy(const operation_pointer& operation, host_to_device_copy copy)
    -> command_pointer {
  return std::make_shared<copy_host_to_device<V>>(operation, *this, std::move(copy));
}

template <version V>
auto opencl_version_queues<V>::make_copy(const operation_pointer& operation, device_copy copy)
    -> command_pointer {
  return std::make_shared<copy_same_device<V>>(operation, *this, std::move(copy));
}

template <version V>
auto opencl_version_queues<V>::make_fill(const operation_pointer& operation, device_fill fill)
    -> command_pointer {
  if constexpr (version_traits<V>::has_fill_buffer)
    return std::make_shared<fill_on_device<V>>(operation, *this, std::move(fill));
  else
    return nullptr;
}

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
    this->submit(skerv::opencl::nd_range_kernel<V>(kernel, work_dim, range.global_size, range.local_size));
}

#define INSTANTIATE(V)                                                                                       \
  template class opencl_version_queues<version::V>;                                                          \
  template class nd_range_kernel<version::V>;
ORYN_FOR_EACH_VERSION(INSTANTIATE)
#undef INSTANTIATE

} // namespace oryn::tarva::library::device_ir::opencl
