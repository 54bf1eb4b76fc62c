#include "ir/launch_checks.h"

#include "memory/library_memory.h"

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

} // namespace

void check_work_dimension(const nd_range& range, bool has_global_offset) {
  if (!has_global_offset && range.global_offset != size_triple{})
    throw std::logic_error("OpenCL 1.0 supports an offset of (0,0,0) only.");
  if (range.work_dim < 1 || range.work_dim > 3)
    throw std::logic_error("Work dimension must be 1, 2, or 3.");
}

void check_argument_count(std::uint64_t count, const launch_limits& limits) {
  if (limits.argument_count && count != *limits.argument_count)
    throw std::logic_error("Kernel must have " + std::to_string(*limits.argument_count) + " arguments, but " +
                           std::to_string(count) + " were provided.");
}

void check_local_memory(std::uint64_t bytes, const launch_limits& limits) {
  if (limits.local_memory_bytes && bytes > *limits.local_memory_bytes)
    throw std::logic_error("Local memory arguments of " + std::to_string(bytes) +
                           " bytes would overflow the " + std::to_string(*limits.local_memory_bytes) +
                           " bytes of local memory of the device.");
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

nd_range with_fixed_local_size(const nd_range& range, const launch_limits& limits) {
  nd_range result = range;
  if (limits.compile_work_group_size && is_zero_everywhere(range, range.local_size))
    result.local_size = *limits.compile_work_group_size;
  return result;
}

namespace {

std::string in_bytes(std::uint64_t count) {
  return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

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

std::string to_string(const argument_place& place) {
  return "Argument " + std::to_string(place.index) + " of kernel " + place.kernel.get_name();
}

} // namespace

std::string describe(const kernel_argument_nullptr&) {
  return "a null argument";
}

std::string describe(const kernel_argument_typed_library_memory_array& memory) {
  return std::string("a memory object of type ") + data_type_name(memory.get_memory()->get_type());
}

std::string describe(const kernel_argument_local_memory& local) {
  return "local memory of " + in_bytes(element_size(local.get_type()) * local.get_num_elements());
}

std::string describe(const kernel_argument_pod_value& value) {
  return std::string("a value of type ") + data_type_name(value.get_type()) + " with " +
         in_bytes(element_size(value.get_type()));
}

void refuse_argument(const argument_place& place, const kernel_parameter& parameter,
                     const std::string& given) {
  if (const char* const thing = unservable(parameter.kind))
    throw std::logic_error(to_string(place) + " is " + thing + ", which no argument can be.");
  throw std::logic_error(to_string(place) + " must be " + wanted(parameter) + ", but " + given +
                         " was provided.");
}

void check_allocation(const argument_place& place, const library_memory& memory,
                      const launch_limits& limits) {
  const std::uint64_t bytes = memory.get_size_in_bytes();
  if (limits.allocation_bytes && bytes > *limits.allocation_bytes)
    throw std::logic_error(to_string(place) + " is a memory object of " + in_bytes(bytes) +
                           ", but the device can allocate at most " + in_bytes(*limits.allocation_bytes) +
                           " for one.");
}

} // namespace oryn::tarva::library
