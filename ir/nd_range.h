// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The extent of a kernel launch.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace oryn::tarva::library {

// What a launch is over: made by the exported function, checked by the lowering, told to OpenCL. In work-items. Of each
// triple the first `work_dim` entries count. A local size of all zeros lets the device choose.
struct nd_range {
  std::uint64_t work_dim = 0;
  std::array<std::uint64_t, 3> global_offset{};
  std::array<std::uint64_t, 3> global_size{};
  std::array<std::uint64_t, 3> local_size{};
};

// The forms that log lines and refusals have.

inline std::string join(const std::array<std::uint64_t, 3>& triple) {
  return std::to_string(triple[0]) + ", " + std::to_string(triple[1]) + ", " + std::to_string(triple[2]);
}

// The first `work_dim` entries.
inline std::string to_string(const std::array<std::uint64_t, 3>& triple, std::uint64_t work_dim) {
  std::string text = "(";
  for (std::size_t dimension = 0; dimension == 0 || dimension < work_dim; ++dimension) {
    text += dimension == 0 ? "" : ", ";
    text += std::to_string(triple[dimension]);
  }
  return text + ")";
}

inline std::string to_string(const nd_range& range) {
  return "work_dim=" + std::to_string(range.work_dim) + ", global_offset=(" + join(range.global_offset) +
         "), global_size=(" + join(range.global_size) + "), local_size=(" + join(range.local_size) + ")";
}

} // namespace oryn::tarva::library
