// What is wrong with a launch.
#pragma once

#include "ir/nd_range.h"
#include "objects/kernel_arguments.h"
#include "objects/library_program.h"

#include <cstdint>
#include <string>

namespace oryn::tarva::library {

// The refusals of a launch that would fail, or worse, on the device. They run when it is lowered, before anything
// changes, and throw std::logic_error. All that they need of the kernel was read when it was made.

// First of all, since the other checks go by the work dimension.
void check_work_dimension(const nd_range& range, bool has_global_offset);
// A device that does not tell the number of parameters judges by itself, as for every limit that is absent.
void check_argument_count(std::uint64_t count, const launch_limits& limits);
// The bytes of all local memory arguments so far.
void check_local_memory(std::uint64_t bytes, const launch_limits& limits);
// The sizes of a range whose work dimension has been checked.
void check_sizes(const nd_range& range, const launch_limits& limits);

// The same range; where it leaves the local size to the device, and the compiler has fixed one, with that one.
nd_range with_fixed_local_size(const nd_range& range, const launch_limits& limits);

// The refusals of one argument of a launch, by what its parameter takes. All throw std::logic_error.

// For the text of a refusal.
struct argument_place {
  const library_kernel& kernel;
  std::uint64_t index;
};

// The place of an argument in the set kernel_parameter::accepted.
inline std::uint64_t form_of(const kernel_argument_nullptr&) {
  return kernel_parameter::memory_or_null;
}
inline std::uint64_t form_of(const kernel_argument_typed_library_memory_array&) {
  return kernel_parameter::memory_or_null;
}
inline std::uint64_t form_of(const kernel_argument_local_memory&) {
  return kernel_parameter::local_memory;
}
inline std::uint64_t form_of(const kernel_argument_pod_value& value) {
  return element_size(value.get_type());
}

// The argument in words, for a refusal.
std::string describe(const kernel_argument_nullptr&);
std::string describe(const kernel_argument_typed_library_memory_array& memory);
std::string describe(const kernel_argument_local_memory& local);
std::string describe(const kernel_argument_pod_value& value);

// Says what the parameter takes, and what was given.
[[noreturn]] void refuse_argument(const argument_place& place, const kernel_parameter& parameter,
                                  const std::string& given);

// Inlined, since a launch checks each of its arguments.
template <class Argument>
[[gnu::always_inline]] inline void check_argument(const library_kernel& kernel, std::uint64_t index,
                                                  const kernel_parameter& parameter, const Argument& given) {
  if (!parameter.accepts(form_of(given)))
    refuse_argument({kernel, index}, parameter, describe(given));
}

// For a memory object that is not on the device yet.
void check_allocation(const argument_place& place, const library_memory& memory, const launch_limits& limits);

} // namespace oryn::tarva::library
