// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "ir/launch_checks.h"

#include "memory/device_memory.h"
#include "memory/host_memory.h"
#include "memory/library_memory.h"

#include <cstdint>
#include <stdexcept>
#include <string>

namespace oryn::tarva::library {

namespace {

std::string text_of(const nd_range& range, const size_triple& sizes) {
  return to_string(sizes, range.work_dim);
}

// Of a triple the first `work_dim` entries count.
bool is_zero_everywhere(const nd_range& range, const size_triple& sizes) {
  for (std::uint64_t d = 0; d < range.work_dim; ++d)
    if (sizes[d] != 0)
      return false;
  return true;
}

// More than can be counted are as many as can be.
std::uint64_t work_items_of_group(const nd_range& range) {
  std::uint64_t product = 1;
  for (std::uint64_t d = 0; d < range.work_dim; ++d)
    if (__builtin_mul_overflow(product, range.local_size[d], &product))
      return UINT64_MAX;
  return product;
}

// Every work-item has a global id from the offset on, which the device must be able to count.
void check_global_size(const nd_range& range, const launch_limits& limits) {
  const auto& size = range.global_size;
  if (!limits.zero_global_size_is_allowed)
    for (std::uint64_t d = 0; d < range.work_dim; ++d)
      if (size[d] == 0)
        throw std::logic_error("Global size " + text_of(range, size) + " must not be 0 in any dimension.");
  const std::uint64_t largest = limits.address_bits == 32 ? UINT32_MAX : UINT64_MAX;
  for (std::uint64_t d = 0; d < range.work_dim; ++d)
    if (size[d] > largest || range.global_offset[d] > largest - size[d])
      throw std::logic_error("Global offset " + text_of(range, range.global_offset) + " and global size " +
                             text_of(range, size) + " would overflow the global ids of the device.");
}

// For a local size that is not left to the device. The zeros come first: what follows divides by each.
void check_local_size(const nd_range& range, const launch_limits& limits) {
  const auto& size = range.local_size;
  for (std::uint64_t d = 0; d < range.work_dim; ++d)
    if (size[d] == 0)
      throw std::logic_error("Local size " + text_of(range, size) +
                             " must be 0 in all dimensions or in none.");
  if (const auto& largest = limits.work_item_sizes)
    for (std::uint64_t d = 0; d < range.work_dim; ++d)
      if (size[d] > (*largest)[d])
        throw std::logic_error("Local size " + text_of(range, size) + " would exceed the maximum of " +
                               text_of(range, *largest) + " work-items of the device.");
  if (limits.work_group_size && work_items_of_group(range) > *limits.work_group_size)
    throw std::logic_error("Local size " + text_of(range, size) + " has more work-items than the " +
                           std::to_string(*limits.work_group_size) +
                           " that a work-group of the kernel can have.");
  if (limits.local_size_must_divide)
    for (std::uint64_t d = 0; d < range.work_dim; ++d)
      if (range.global_size[d] % size[d] != 0)
        throw std::logic_error("Local size " + text_of(range, size) + " must divide the global size " +
                               text_of(range, range.global_size) + " in every dimension.");
}

// First of all, since the other checks go by the work dimension.
void check_work_dimension(const nd_range& range, bool has_global_offset) {
  if (!has_global_offset && range.global_offset != size_triple{})
    throw std::logic_error("OpenCL 1.0 supports an offset of (0,0,0) only.");
  if (range.work_dim < 1 || range.work_dim > 3)
    throw std::logic_error("Work dimension must be 1, 2, or 3.");
}

// A device that does not tell the number of parameters judges by itself, as for every limit that is absent.
void check_argument_count(std::uint64_t count, const launch_limits& limits) {
  if (limits.argument_count && count != *limits.argument_count)
    throw std::logic_error("Kernel must have " + std::to_string(*limits.argument_count) + " arguments, but " +
                           std::to_string(count) + " were provided.");
}

void check_sizes(const nd_range& range, const launch_limits& limits) {
  check_global_size(range, limits);
  const auto& size = range.local_size;
  if (is_zero_everywhere(range, size)) // the device chooses
    return;
  if (const auto& fixed = limits.compile_work_group_size)
    for (std::uint64_t d = 0; d < range.work_dim; ++d)
      if (size[d] != (*fixed)[d])
        throw std::logic_error("Local size " + text_of(range, size) + " must be the size " +
                               text_of(range, *fixed) + " that was fixed when the kernel was compiled.");
  check_local_size(range, limits);
}

std::string in_bytes(std::uint64_t count) {
  return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

// "1 or 4 or 8 bytes": the sizes are powers of two, and `sizes` is their sum.
std::string list_sizes(unsigned sizes) {
  std::string list;
  for (unsigned size = 1; size <= sizes; size *= 2)
    if ((sizes & size) != 0)
      list += (list.empty() ? "" : " or ") + (size * 2 > sizes ? in_bytes(size) : std::to_string(size));
  return list;
}

// Null for a parameter that some argument fits.
const char* unservable(parameter_kind kind) {
  switch (kind) {
  case parameter_kind::image:
    return "an image";
  case parameter_kind::sampler:
    return "a sampler";
  case parameter_kind::device_queue:
    return "a device queue";
  case parameter_kind::other_value:
    return "a value of a size that no data type has";
  default:
    return nullptr;
  }
}

// A parameter that takes values of all sizes has not told its own.
std::string wanted(const kernel_parameter& parameter) {
  switch (parameter.kind) {
  case parameter_kind::memory:
    return "a memory object";
  case parameter_kind::local_memory:
    return "local memory";
  default:
    return parameter.accepted == all_value_sizes ? "a value" : "a value of " + list_sizes(parameter.accepted);
  }
}

// The argument in words, for a refusal.
std::string describe(const kernel_argument& argument) {
  if (const auto* value = std::get_if<kernel_argument_pod_value>(&argument))
    return std::string("a value of type ") + data_type_name(value->type) + " with " +
           in_bytes(element_size(value->type));
  if (const auto* local = std::get_if<kernel_argument_local_memory>(&argument))
    return "local memory of " + in_bytes(element_size(local->type) * local->num_elements);
  if (const auto* memory = std::get_if<kernel_argument_typed_library_memory_array>(&argument))
    return std::string("a memory object of type ") + data_type_name((*memory)->get_type());
  return "a null argument";
}

// The checks of the arguments, one by one in their order. A launch with many arguments spends much of its own time here.
class argument_checks {
public:
  argument_checks(const library_kernel& kernel, const launch_limits& limits,
                  const std::shared_ptr<library_device>& device)
      : kernel_(kernel), limits_(limits), device_(device) {}

  void check(const kernel_argument& argument) {
    if (const auto* value = std::get_if<kernel_argument_pod_value>(&argument))
      check_form(argument, element_size(value->type));
    else if (const auto* memory = std::get_if<kernel_argument_typed_library_memory_array>(&argument))
      check_memory(argument, **memory);
    else if (const auto* local = std::get_if<kernel_argument_local_memory>(&argument))
      check_local_memory(argument, *local);
    else
      check_form(argument, kernel_parameter::memory_or_null);
    ++index_;
  }

private:
  std::string place() const {
    return "Argument " + std::to_string(index_) + " of kernel " + kernel_.get_name();
  }

  // By what the parameter takes, if that is told. `form` is the place of the argument in the set kernel_parameter::accepted.
  void check_form(const kernel_argument& argument, std::uint64_t form) const {
    if (index_ < limits_.parameters.size() && (limits_.parameters[index_].accepted & form) == 0)
      refuse_form(argument, limits_.parameters[index_]);
  }

  [[noreturn]] void refuse_form(const kernel_argument& argument, const kernel_parameter& parameter) const {
    if (const char* const thing = unservable(parameter.kind))
      throw std::logic_error(place() + " is " + thing + ", which no argument can be.");
    throw std::logic_error(place() + " must be " + wanted(parameter) + ", but " + describe(argument) +
                           " was provided.");
  }

  void check_elements(const char* kind, std::uint64_t count) const {
    if (count == 0)
      throw std::logic_error(std::string(kind) + " argument " + std::to_string(index_) +
                             " of the kernel must not have 0 elements.");
  }

  void check_memory(const kernel_argument& argument, library_memory& memory) const {
    const memory_state& state = memory.get_state();
    check_form(argument, kernel_parameter::memory_or_null);
    check_elements("Memory", memory.get_num_elements());
    if (state.is_on(device_))
      return;
    if (const auto& block = state.get_host_block())
      static_cast<void>(block->get_read_pointer(0)); // an allocation that failed left no storage
    check_allocation(memory);
  }

  // For a memory object that is not on the device yet.
  void check_allocation(const library_memory& memory) const {
    const std::uint64_t bytes = memory.get_size_in_bytes();
    if (limits_.allocation_bytes && bytes > *limits_.allocation_bytes)
      throw std::logic_error(place() + " is a memory object of " + in_bytes(bytes) +
                             ", but the device can allocate at most " + in_bytes(*limits_.allocation_bytes) +
                             " for one.");
  }

  // More bytes than can be counted fit on no device.
  void check_local_memory(const kernel_argument& argument, const kernel_argument_local_memory& local) {
    check_elements("Local memory", local.num_elements);
    std::uint64_t bytes = 0;
    if (__builtin_mul_overflow(element_size(local.type), local.num_elements, &bytes) ||
        __builtin_add_overflow(local_bytes_, bytes, &local_bytes_))
      throw std::logic_error(
          "Local memory arguments of the kernel would overflow what can be counted in bytes.");
    check_form(argument, kernel_parameter::local_memory);
    if (limits_.local_memory_bytes && local_bytes_ > *limits_.local_memory_bytes)
      throw std::logic_error("Local memory arguments of " + std::to_string(local_bytes_) +
                             " bytes would overflow the " + std::to_string(*limits_.local_memory_bytes) +
                             " bytes of local memory of the device.");
  }

  const library_kernel& kernel_;
  const launch_limits& limits_;
  const std::shared_ptr<library_device>& device_;
  std::size_t index_ = 0;
  std::uint64_t local_bytes_ = 0; // so far
};

} // namespace

nd_range check_launch(const logical_ir::kernel& launch, const std::shared_ptr<library_device>& device) {
  const launch_limits& limits = launch.kernel_object->get_launch_limits();
  nd_range range = launch.range;
  check_work_dimension(range, limits.has_global_offset);
  if (limits.compile_work_group_size && is_zero_everywhere(range, range.local_size))
    range.local_size = *limits.compile_work_group_size;
  check_argument_count(launch.arguments.arguments.size(), limits);
  argument_checks checks(*launch.kernel_object, limits, device);
  for (const kernel_argument& argument : launch.arguments.arguments)
    checks.check(argument);
  check_sizes(range, limits);
  return range;
}

} // namespace oryn::tarva::library
