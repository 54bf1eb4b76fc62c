# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""The product of two matrices, of which each work-group keeps a tile in local memory:

    python3 matrix_product.py [file for the result]

matrix_product.cpp is the same in C++.
"""

import sys

import numpy as np

import tarva

SOURCE = """
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
  }"""
ROWS, INNER, COLUMNS, TILE = 96, 160, 128, 8

# Whole numbers, so that sums are the same in any order.
a = (np.arange(ROWS * INNER) * 7 % 11).astype(np.float32).reshape(ROWS, INNER)
b = (np.arange(INNER * COLUMNS) * 5 % 11).astype(np.float32).reshape(INNER, COLUMNS)

program = tarva.best_device().build(SOURCE, f"-D TILE={TILE}")
multiply = program.multiply.takes(tarva.Array, tarva.Array, tarva.Array, np.int32)
product = tarva.Array((ROWS, COLUMNS), np.float32)
multiply((COLUMNS, ROWS), tarva.Array(a), tarva.Array(b), product, INNER, group=(TILE, TILE))

result = np.asarray(product)
if len(sys.argv) > 1:
    result.tofile(sys.argv[1])
if not np.array_equal(result, a @ b):
    sys.exit(f"{result.size} numbers, which are WRONG.")
print(f"{result.size} numbers, as on the host.")
