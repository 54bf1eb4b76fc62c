#pragma once

#include "ir/nd_range.h"
#include "objects/library_kernel.h"

namespace oryn::tarva::library {

// The refusals of a launch that would fail, or worse, on the device. All throw std::logic_error.

void check_work_dimension(const nd_range& range, bool has_global_offset);
void check_argument_count(std::uint64_t count, const launch_limits& limits);
void check_local_memory(std::uint64_t bytes, const launch_limits& limits);
// The sizes of a range whose work dimension has been checked.
void check_sizes(const nd_range& range, const launch_limits& limits);

// The same range; where it leaves the local size to the device, and the compiler has fixed one, with that one.
nd_range with_fixed_local_size(const nd_range& range, const launch_limits& limits);

} // namespace oryn::tarva::library
