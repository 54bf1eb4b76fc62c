// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Versions of OpenCL as platforms and devices tell them, and the capabilities that stand for them.
//
// Plain values and functions of text: any thread may call them, nothing is kept, and only the callers take memory.
#pragma once

#include "capability/commands.h"

#include <array>
#include <bitset>
#include <charconv>
#include <compare>
#include <cstdint>
#include <optional>
#include <string_view>

namespace qv {

struct opencl_version {
  std::uint32_t major = 0;
  std::uint32_t minor = 0;

  auto operator<=>(const opencl_version&) const = default; // NOLINT(modernize-use-nullptr): none here
};

// The version of capability 1, 2 and so on. Another version of OpenCL begins with an entry here.
inline constexpr std::array<opencl_version, capability_count> capability_versions{
    {{1, 0}, {1, 1}, {1, 2}, {2, 0}, {2, 1}, {2, 2}}};

// Bit n stands for capability n, 1 to 6; bit 0 is never set, so that a capability is its own place.
using capability_set = std::bitset<capability_count + 1>;

// The capability of exactly this version, or 0 if there is none, as for 3.0.
constexpr std::uint32_t capability_of_version(opencl_version version) {
  for (std::uint32_t i = 0; i < capability_count; ++i)
    if (capability_versions[i] == version)
      return i + 1;
  return 0;
}

// Reads "major.minor" from the front of `text`, and drops from it what was read. Nothing is dropped if there is no version.
inline std::optional<opencl_version> take_version(std::string_view& text) {
  const char* const end = text.data() + text.size();
  opencl_version version;
  const auto major = std::from_chars(text.data(), end, version.major);
  if (major.ec != std::errc() || major.ptr == end || *major.ptr != '.')
    return std::nullopt;
  const auto minor = std::from_chars(major.ptr + 1, end, version.minor);
  if (minor.ec != std::errc())
    return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(minor.ptr - text.data()));
  return version;
}

// The version in a text such as "OpenCL 1.2 ...", as platforms and devices report it. What follows the number is the
// vendor's and may be anything.
inline std::optional<opencl_version> parse_reported_version(std::string_view text) {
  constexpr std::string_view prefix = "OpenCL ";
  if (text.substr(0, prefix.size()) != prefix)
    return std::nullopt;
  text.remove_prefix(prefix.size());
  return take_version(text);
}

} // namespace qv
