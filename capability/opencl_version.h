// OpenCL versions as devices tell them, and capabilities as callers name them.
#pragma once

#include "capability/commands.h"

#include <bitset>
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

// Bit n stands for capability n, 1 to 6; bit 0 is never set.
using capability_set = std::bitset<capability_count + 1>;

// Reads "major.minor" from the front of `text`, and drops from it what was read.
std::optional<opencl_version> take_version(std::string_view& text);

// The version in a text such as "OpenCL 1.2 ...", as platforms and devices report it.
std::optional<opencl_version> parse_reported_version(std::string_view text);

// The capability of exactly this version, or 0 if there is none.
std::uint32_t capability_of_version(opencl_version version);

// The capabilities in a list of versions such as "1.0, 1.2,2.0". Entries that name none are passed over.
capability_set parse_capability_list(std::string_view list);

} // namespace qv
