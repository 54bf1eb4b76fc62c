# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""What the tests share: a device, and a program with kernels of many sorts."""

import os
import subprocess
import sys

import pytest

import tarva

SOURCE = """
typedef struct { int whole; float part; } pair;
kernel void saxpy(float a, global const float* x, global float* y) { y[get_global_id(0)] += a * x[get_global_id(0)]; }
kernel void integers(char a, uchar b, short c, ushort d, int e, uint f, long g, ulong h, global long* out) {
  out[0] = a; out[1] = b; out[2] = c; out[3] = d; out[4] = e; out[5] = f; out[6] = g; out[7] = h;
}
kernel void vectors(float4 a, uchar2 b, float3 c, pair d, global float* out) {
  out[0] = a.w; out[1] = b.y; out[2] = c.z; out[3] = d.whole + d.part;
}
kernel void locals(global float* out, local float* row, int add, local int* one) {
  one[0] = add;
  row[get_local_id(0)] = get_local_id(0);
  barrier(CLK_LOCAL_MEM_FENCE);
  out[get_global_id(0)] = row[get_local_size(0) - 1 - get_local_id(0)] + one[0];
}
kernel void range(global ulong* out, global int* none) {
  out[0] = get_work_dim() + 10 * (none == 0);
  for (int d = 0; d < 2; ++d) {
    out[1 + d] = get_global_size(d); out[3 + d] = get_local_size(d); out[5 + d] = get_global_offset(d);
  }
}
"""


@pytest.fixture(scope="session")
def device() -> tarva.Device:
    try:
        return tarva.best_device()
    except tarva.NoDevice:
        pytest.skip("the machine has no OpenCL device")


@pytest.fixture()
def program(device: tarva.Device) -> tarva.Program:
    return device.build(SOURCE, label="tests.cl")


def run(code: str, **environment: str) -> subprocess.CompletedProcess[str]:
    """Runs code in a fresh interpreter."""
    return subprocess.run(
        [sys.executable, "-c", code], env={**os.environ, **environment}, capture_output=True, text=True, timeout=100
    )
