// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Kernels of a SPIR-V module whose specialisation constants 1 to 5 have these values unless they are set.
int __attribute__((overloadable)) __spirv_SpecConstant(int id, int value);
uchar __attribute__((overloadable)) __spirv_SpecConstant(int id, uchar value);
long __attribute__((overloadable)) __spirv_SpecConstant(int id, long value);
float __attribute__((overloadable)) __spirv_SpecConstant(int id, float value);
bool __attribute__((overloadable)) __spirv_SpecConstant(int id, bool value);

kernel void constants(global long* out) {
  out[0] = __spirv_SpecConstant(1, 10);
  out[1] = __spirv_SpecConstant(2, (uchar)20);
  out[2] = __spirv_SpecConstant(3, 30L);
  out[3] = (long)__spirv_SpecConstant(4, 40.0f);
  out[4] = __spirv_SpecConstant(5, false);
}
