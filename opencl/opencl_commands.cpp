// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "opencl/opencl_commands.h"

#include "access/opencl/commands.h"
#include "memory/ranges.h"
#include "objects/library_device.h"

#include <span>
#include <stdexcept>
#include <vector>

namespace oryn::tarva::library::device_ir::opencl {

namespace {

// A value travels in the byte order of the device; the arguments of the launch keep the host's.
template <version V>
void set_value(skerv::opencl::kernel<V>& kernel, std::uint32_t index, std::span<const std::uint8_t> raw,
               data_type type, bool device_is_little_endian) {
  if (device_is_little_endian)
    return kernel.set_value_argument(index, raw.size(), raw.data());
  std::vector<std::uint8_t> bytes(raw.begin(), raw.end());
  swap_endianness(bytes.data(), type, 0, 1);
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

// In all that follow: checks first, then the content is marked, then the command is enqueued.

template <version V>
bool copy_device_to_host<V>::enqueue_copy() {
  this->check();
  const auto& copy = this->copy_;
  return this->submit(skerv::opencl::read_buffer<V>(
      this->buffer_of(*copy.source), false, this->in_bytes(copy.source_start), this->in_bytes(copy.count),
      copy.destination->get_write_pointer(copy.destination_start)));
}

template <version V>
bool copy_host_to_device<V>::enqueue_copy() {
  this->check();
  const auto& copy = this->copy_;
  copy.destination->mark_content();
  return this->submit(skerv::opencl::write_buffer<V>(
      this->buffer_of(*copy.destination), false, this->in_bytes(copy.destination_start),
      this->in_bytes(copy.count), copy.source->get_read_pointer(copy.source_start)));
}

template <version V>
bool copy_same_device<V>::enqueue_copy() {
  const auto& copy = this->copy_;
  if (copy.source->get_device() != copy.destination->get_device())
    throw std::logic_error("Source and destination memory must be on the same device.");
  const auto source = this->buffer_of(*copy.source);
  this->check();
  copy.destination->mark_content();
  return this->submit(skerv::opencl::copy_buffer<V>(
      source, this->buffer_of(*copy.destination), this->in_bytes(copy.source_start),
      this->in_bytes(copy.destination_start), this->in_bytes(copy.count)));
}

// The byte order of the value is changed in place, as the command runs once.
template <version V>
requires(version_traits<V>::has_fill_buffer) bool fill_on_device<V>::enqueue() {
  const data_type type = fill_.memory->get_type();
  check_fill(fill_.value, fill_.start, fill_.count, {type, fill_.memory->get_size()});
  if (!this->get_device().is_little_endian())
    swap_endianness(fill_.value.data(), type, 0, 1);
  fill_.memory->mark_content();
  return this->submit(skerv::opencl::fill_buffer_bytes<V>(this->buffer_of(*fill_.memory), fill_.value,
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

// In the order of the parameters. What is wrong with an argument was refused before the launch was accepted.
template <version V>
void nd_range_kernel<V>::set_arguments(skerv::opencl::kernel<V>& kernel) const {
  const kernel_argument_capture& captured = launch_.launch.arguments;
  const bool device_is_little_endian = this->get_device().is_little_endian();
  auto next_block = launch_.blocks.begin();
  std::uint32_t index = 0;
  for (const kernel_argument& argument : captured.arguments) {
    if (std::holds_alternative<kernel_argument_typed_library_memory_array>(argument)) {
      device_memory& block = **next_block++;
      block.mark_content(); // nobody knows what the kernel writes
      kernel.set_memory_argument(index, this->buffer_of(block));
    } else if (const auto* value = std::get_if<kernel_argument_pod_value>(&argument)) {
      set_value<V>(kernel, index, captured.get_raw_data(*value), value->type, device_is_little_endian);
    } else if (const auto* local = std::get_if<kernel_argument_local_memory>(&argument)) {
      kernel.set_local_argument(index, element_size(local->type) * local->num_elements);
    } else {
      kernel.set_null_argument(index);
    }
    ++index;
  }
}

// The kernel lives until the command is enqueued; OpenCL keeps what the launch needs.
template <version V>
bool nd_range_kernel<V>::enqueue() {
  const nd_range& range = launch_.range;
  skerv::opencl::kernel<V> kernel = kernel_.clone();
  set_arguments(kernel);
  const auto work_dim = static_cast<std::uint32_t>(range.work_dim);
  if constexpr (version_traits<V>::has_global_offset)
    return this->submit(skerv::opencl::nd_range_kernel<V>(kernel, work_dim, range.global_offset,
                                                          range.global_size, range.local_size));
  else
    return this->submit(
        skerv::opencl::nd_range_kernel<V>(kernel, work_dim, range.global_size, range.local_size));
}

#define INSTANTIATE(V)                                                                                       \
  template class opencl_version_queues<version::V>;                                                          \
  template class nd_range_kernel<version::V>;
ORYN_FOR_EACH_VERSION(INSTANTIATE)
#undef INSTANTIATE

} // namespace oryn::tarva::library::device_ir::opencl
