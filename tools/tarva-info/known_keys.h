// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What the tool knows about the keys of a device's tree beyond what the library tells: where people look for
// them, and what their numbers count.
#pragma once

#include <span>
#include <string_view>

namespace tarva_info {

enum class section {
  identity,
  programs,
  compute,
  vectors,
  floating_point,
  memory,
  images,
  queues,
  shared,
  other
};

enum class unit { none, bytes, bits, megahertz, nanoseconds, pixels, list };

struct known_key {
  std::string_view key;
  std::string_view parent;
  section group = section::other;
  unit counted = unit::none; // `list`: more than one value, by its nature
};

std::span<const known_key> all_known_keys();

// For a key that is not known: one of its own that says nothing.
known_key find_known_key(std::string_view key);

std::string_view title_of(section group);

} // namespace tarva_info
