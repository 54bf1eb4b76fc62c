// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The spans of OpenCL versions that parameters and properties exist in. The versions themselves are those of the
// access layer, which stands above and is not needed here: their numbers are enough.
#pragma once

#include <cstdint>
#include <limits>

namespace oryn::tarva::library {

// OpenCL versions by number, 1 for 1.0 to 6 for 2.2. 0 is an object that stands for nothing of OpenCL.
using version_number = std::uint32_t;

// Both ends belong to it.
struct version_range {
  version_number first;
  version_number last;

  constexpr bool contains(version_number version) const { return first <= version && version <= last; }
};

namespace version_ranges {

// What a version has the later ones have, too, until one drops it. So most ranges have no end.
inline constexpr version_number no_end = std::numeric_limits<version_number>::max();

inline constexpr version_range all = {1, no_end};
inline constexpr version_range from_1_1 = {2, no_end};
inline constexpr version_range from_1_2 = {3, no_end};
inline constexpr version_range from_2_0 = {4, no_end};
inline constexpr version_range from_2_1 = {5, no_end};
inline constexpr version_range until_1_2 = {1, 3};
inline constexpr version_range only_1_1 = {2, 2};
inline constexpr version_range from_1_1_to_1_2 = {2, 3};
inline constexpr version_range from_1_2_to_2_0 = {3, 4};
inline constexpr version_range with_or_without_opencl = {0, no_end};

} // namespace version_ranges

} // namespace oryn::tarva::library
