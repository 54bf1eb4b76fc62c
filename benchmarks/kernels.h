// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The kernels that both sides launch.
#pragma once

#include <string>

namespace benchmarks {

inline std::string kernel_name(int arguments) {
  return "take_" + std::to_string(arguments);
}

// A kernel that does nothing with its arguments, which are buffers and numbers in turn.
inline std::string kernel_source(int arguments) {
  std::string source = "kernel void " + kernel_name(arguments) + "(";
  for (int i = 0; i < arguments; ++i)
    source += std::string(i == 0 ? "" : ", ") + (i % 2 == 0 ? "global int* a" : "int a") + std::to_string(i);
  return source + ") {}\n";
}

} // namespace benchmarks
