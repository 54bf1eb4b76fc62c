# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""The sum of two vectors, with which introductions to OpenCL begin:   python3 vector_addition.py [file for the result]

vector_addition.cpp is the same in C++.
"""

import sys

import numpy as np

import tarva

SOURCE = """
    kernel void add(global const float* a, global const float* b, global float* sum, uint count) {
      const uint i = get_global_id(0);
      if (i < count)
        sum[i] = a[i] + b[i];
    }"""
COUNT = 100_000

a = np.arange(COUNT, dtype=np.float32) * np.float32(0.5)
b = np.arange(COUNT, 0, -1, dtype=np.float32)

add = tarva.best_device().build(SOURCE).add.takes(tarva.Array, tarva.Array, tarva.Array, np.uint32)
total = tarva.Array(COUNT, np.float32)
add(COUNT, tarva.Array(a), tarva.Array(b), total, COUNT)

result = np.asarray(total)
if len(sys.argv) > 1:
    result.tofile(sys.argv[1])
if not np.array_equal(result, a + b):
    sys.exit(f"{result.size} numbers, which are WRONG.")
print(f"{result.size} numbers, as on the host.")
