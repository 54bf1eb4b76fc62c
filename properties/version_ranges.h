#pragma once

#include "properties/catalogue.h"

// The spans of OpenCL versions that the catalogues speak of.
namespace oryn::tarva::library::version_ranges {

inline constexpr version_range all = {1, 6};
inline constexpr version_range from_1_1 = {2, 6};
inline constexpr version_range from_1_2 = {3, 6};
inline constexpr version_range from_2_0 = {4, 6};
inline constexpr version_range from_2_1 = {5, 6};
inline constexpr version_range until_1_2 = {1, 3};
inline constexpr version_range only_1_1 = {2, 2};
inline constexpr version_range from_1_1_to_1_2 = {2, 3};
inline constexpr version_range with_or_without_opencl = {0, 6};

} // namespace oryn::tarva::library::version_ranges
