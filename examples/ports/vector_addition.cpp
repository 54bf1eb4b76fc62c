// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The sum of two vectors, with which introductions to OpenCL begin:   vector_addition [file for the result]
// vector_addition.py is the same in Python.
#include "result.h"

#include <tarva.hpp>

int main(int argc, char** argv) try {
  const std::uint32_t count = 100'000;
  std::vector<float> a(count), b(count), expected(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    a[i] = 0.5F * static_cast<float>(i);
    b[i] = static_cast<float>(count - i);
    expected[i] = a[i] + b[i];
  }

  using floats = tarva::memory<float>;
  const auto program = tarva::best_device().build(R"(
    kernel void add(global const float* a, global const float* b, global float* sum, uint count) {
      const uint i = get_global_id(0);
      if (i < count)
        sum[i] = a[i] + b[i];
    })");
  const auto add = program.kernel<floats, floats, floats, std::uint32_t>("add");
  const floats sum(count);
  add(tarva::range::items(count), floats(a), floats(b), sum, count);

  const std::vector<float> result = sum.read();
  return finish(argc, argv, result, result == expected);
} catch (const std::exception& caught) {
  std::cerr << caught.what() << '\n';
  return 1;
}
