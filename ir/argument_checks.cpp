#include "ir/argument_checks.h"

#include "memory/library_memory.h"

#include <stdexcept>

namespace oryn::tarva::library {

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
const char* unservable(kernel_parameter::kind kind) {
  switch (kind) {
  case kernel_parameter::kind::image:
    return "an image";
  case kernel_parameter::kind::sampler:
    return "a sampler";
  case kernel_parameter::kind::device_queue:
    return "a device queue";
  case kernel_parameter::kind::other_value:
    return "a value of a size that no data type has";
  default:
    return nullptr;
  }
}

std::string wanted(const kernel_parameter& parameter) {
  switch (parameter.of) {
  case kernel_parameter::kind::memory:
    return "a memory object";
  case kernel_parameter::kind::local_memory:
    return "local memory";
  default:
    return parameter.fitting == all_value_sizes ? "a value" : "a value of " + list_sizes(parameter.fitting);
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
  if (const char* const thing = unservable(parameter.of))
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
