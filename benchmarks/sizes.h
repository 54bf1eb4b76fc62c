// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The sizes at which memory is measured, and how many rounds each is worth.
#pragma once

#include <cstdint>

namespace benchmarks {

struct measured_size {
  std::uint64_t bytes;
  int rounds;
};

inline constexpr measured_size sizes[] = {{4, 2000}, {4096, 2000}, {1 << 20, 500}, {256 << 20, 12}};

} // namespace benchmarks
