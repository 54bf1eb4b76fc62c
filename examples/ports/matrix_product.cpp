// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The product of two matrices, of which each work-group keeps a tile in local memory:   matrix_product [file for the result]
// matrix_product.py is the same in Python.
#include "result.h"

#include <tarva.hpp>

namespace {

const char* const source = R"(
  kernel void multiply(global const float* a, global const float* b, global float* product, int inner) {
    local float tile_a[TILE][TILE], tile_b[TILE][TILE];
    const int column = get_global_id(0), row = get_global_id(1), columns = get_global_size(0);
    const int x = get_local_id(0), y = get_local_id(1);
    float sum = 0;
    for (int first = 0; first < inner; first += TILE) {
      tile_a[y][x] = a[row * inner + first + x];
      tile_b[y][x] = b[(first + y) * columns + column];
      barrier(CLK_LOCAL_MEM_FENCE);
      for (int i = 0; i < TILE; ++i)
        sum += tile_a[y][i] * tile_b[i][x];
      barrier(CLK_LOCAL_MEM_FENCE);
    }
    product[row * columns + column] = sum;
  })";

// Whole numbers, so that sums are the same in any order.
std::vector<float> make_matrix(unsigned size, unsigned factor) {
  std::vector<float> result(size);
  for (unsigned i = 0; i < size; ++i)
    result[i] = static_cast<float>(i * factor % 11);
  return result;
}

std::vector<float> multiply_on_host(const std::vector<float>& a, const std::vector<float>& b, unsigned rows,
                                    unsigned inner, unsigned columns) {
  std::vector<float> product(rows * columns);
  for (unsigned row = 0; row < rows; ++row)
    for (unsigned i = 0; i < inner; ++i)
      for (unsigned column = 0; column < columns; ++column)
        product[row * columns + column] += a[row * inner + i] * b[i * columns + column];
  return product;
}

} // namespace

int main(int argc, char** argv) try {
  const unsigned rows = 96, inner = 160, columns = 128, tile = 8;
  const std::vector<float> a = make_matrix(rows * inner, 7), b = make_matrix(inner * columns, 5);

  using floats = tarva::memory<float>;
  const auto program = tarva::best_device().build(source, "-D TILE=" + std::to_string(tile));
  const auto multiply = program.kernel<floats, floats, floats, int>("multiply");
  const floats product(rows * columns);
  multiply(tarva::range::items(columns, rows).in_groups_of(tile, tile), floats(a), floats(b), product, inner);

  const std::vector<float> result = product.read();
  return finish(argc, argv, result, result == multiply_on_host(a, b, rows, inner, columns));
} catch (const std::exception& caught) {
  std::cerr << caught.what() << '\n';
  return 1;
}
