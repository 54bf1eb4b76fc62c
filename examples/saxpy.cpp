// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include <iostream>
#include <tarva.hpp>

int main() {
  const auto program = tarva::best_device().build(R"(
    kernel void saxpy(float a, global const float* x, global float* y) {
      y[get_global_id(0)] += a * x[get_global_id(0)];
    })");
  const auto saxpy = program.kernel<float, tarva::memory<float>, tarva::memory<float>>("saxpy");
  const tarva::memory x(std::vector<float>(1000, 2)), y(std::vector<float>(1000, 1));
  saxpy(tarva::range::items(1000), 3, x, y);
  const std::vector<float> result = y.read();
  std::cout << "3 * 2 + 1 = " << result.back() << '\n';
  return result == std::vector<float>(1000, 7) ? 0 : 1;
}
