# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""How often each byte occurs. Each work-group counts in local memory, and adds that up at the end:

    python3 histogram.py [file for the result]

histogram.cpp is the same in C++.
"""

import sys

import numpy as np

import tarva

SOURCE = """
  kernel void count_bytes(global const uchar* bytes, uint count, global uint* counts, local uint* part) {
    const uint id = get_local_id(0), size = get_local_size(0);
    for (uint i = id; i < 256; i += size)
      part[i] = 0;
    barrier(CLK_LOCAL_MEM_FENCE);
    for (uint i = get_global_id(0); i < count; i += get_global_size(0))
      atomic_inc(&part[bytes[i]]);
    barrier(CLK_LOCAL_MEM_FENCE);
    for (uint i = id; i < 256; i += size)
      atomic_add(&counts[i], part[i]);
  }"""
BINS = 256

data = (np.arange(1_000_003, dtype=np.uint32) * np.uint32(2654435761) >> 20).astype(np.uint8)

program = tarva.best_device().build(SOURCE)
count_bytes = program.count_bytes.takes(tarva.Array, np.uint32, tarva.Array, tarva.Local(np.uint32))
counts = tarva.Array(BINS, np.uint32)
counts.fill(0)
count_bytes(tarva.Range.groups_of(16, 64), tarva.Array(data), data.size, counts, local=BINS)

result = np.asarray(counts)
if len(sys.argv) > 1:
    result.tofile(sys.argv[1])
if not np.array_equal(result, np.bincount(data, minlength=BINS)):
    sys.exit(f"{result.size} numbers, which are WRONG.")
print(f"{result.size} numbers, as on the host.")
