#include "ir/launch_checks.h"

#include "memory/library_memory.h"

#include <stdexcept>
#include <string>

namespace oryn::tarva::library {

namespace {

// The text is made only when it is needed: a launch passes all of these checks.
template <class Message>
void refuse_if(bool fault, Message message) {
  if (fault)
    throw std::logic_error(message());
}

// The first `work_dim` entries count.
template <class Test>
bool any_dimension(const nd_range& range, Test test) {
  for (std::uint64_t dimension = 0; dimension < range.work_dim; ++dimension)
    if (test(dimension))
      return true;
  return false;
}

std::string text_of(const nd_range& range, const size_triple& sizes) {
  return to_string(sizes, range.work_dim);
}

bool leaves_local_size_to_device(const nd_range& range) {
  return !any_dimension(range, [&](auto d) { return range.local_size[d] != 0; });
}

std::uint64_t work_items_of_group(const nd_range& range) {
  std::uint64_t product = 1;
  for (std::uint64_t dimension = 0; dimension < range.work_dim; ++dimension)
    if (__builtin_mul_overflow(product, range.local_size[dimension], &product))
      return UINT64_MAX;
  return product;
}

void check_global_size(const nd_range& range, const launch_limits& limits) {
  const auto& size = range.global_size;
  refuse_if(!limits.zero_global_size_is_allowed && any_dimension(range, [&](auto d) { return size[d] == 0; }),
            [&] { return "Global size " + text_of(range, size) + " must not be 0 in any dimension."; });
  const std::uint64_t largest = limits.address_bits == 32 ? UINT32_MAX : UINT64_MAX;
  refuse_if(
      any_dimension(range,
                    [&](auto d) { return size[d] > largest || range.global_offset[d] > largest - size[d]; }),
      [&] {
        return "Global offset " + text_of(range, range.global_offset) + " and global size " +
               text_of(range, size) + " would overflow the global ids of the device.";
      });
}

void check_local_size(const nd_range& range, const launch_limits& limits) {
  const auto& size = range.local_size;
  refuse_if(any_dimension(range, [&](auto d) { return size[d] == 0; }), [&] {
    return "Local size " + text_of(range, size) + " must be 0 in all dimensions or in none.";
  });
  const auto& largest = limits.work_item_sizes;
  refuse_if(largest && any_dimension(range, [&](auto d) { return size[d] > (*largest)[d]; }), [&] {
    return "Local size " + text_of(range, size) + " would exceed the maximum of " +
           text_of(range, largest.value_or(size_triple{})) + " work-items of the device.";
  });
  const std::uint64_t items = work_items_of_group(range);
  refuse_if(limits.work_group_size && items > *limits.work_group_size, [&] {
    return "Local size " + text_of(range, size) + " has more work-items than the " +
           std::to_string(limits.work_group_size.value_or(0)) + " that a work-group of the kernel can have.";
  });
  refuse_if(limits.local_size_must_divide &&
                any_dimension(range, [&](auto d) { return range.global_size[d] % size[d] != 0; }),
            [&] {
              return "Local size " + text_of(range, size) + " must divide the global size " +
                     text_of(range, range.global_size) + " in every dimension.";
            });
}

} // namespace

void check_work_dimension(const nd_range& range, bool has_global_offset) {
  refuse_if(!has_global_offset && range.global_offset != size_triple{},
            [&] { return "OpenCL 1.0 supports an offset of (0,0,0) only."; });
  refuse_if(range.work_dim < 1 || range.work_dim > 3, [&] { return "Work dimension must be 1, 2, or 3."; });
}

void check_argument_count(std::uint64_t count, const launch_limits& limits) {
  refuse_if(limits.argument_count && count != *limits.argument_count, [&] {
    return "Kernel must have " + std::to_string(limits.argument_count.value_or(0)) + " arguments, but " +
           std::to_string(count) + " were provided.";
  });
}

void check_local_memory(std::uint64_t bytes, const launch_limits& limits) {
  refuse_if(limits.local_memory_bytes && bytes > *limits.local_memory_bytes, [&] {
    return "Local memory arguments of " + std::to_string(bytes) + " bytes would overflow the " +
           std::to_string(limits.local_memory_bytes.value_or(0)) + " bytes of local memory of the device.";
  });
}

void check_sizes(const nd_range& range, const launch_limits& limits) {
  check_global_size(range, limits);
  if (leaves_local_size_to_device(range))
    return;
  const auto& size = range.local_size;
  const auto& fixed = limits.compile_work_group_size;
  refuse_if(fixed && any_dimension(range, [&](auto d) { return size[d] != (*fixed)[d]; }), [&] {
    return "Local size " + text_of(range, size) + " must be the size " +
           text_of(range, fixed.value_or(size_triple{})) + " that was fixed when the kernel was compiled.";
  });
  check_local_size(range, limits);
}

nd_range with_fixed_local_size(const nd_range& range, const launch_limits& limits) {
  nd_range result = range;
  if (limits.compile_work_group_size && leaves_local_size_to_device(range))
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
