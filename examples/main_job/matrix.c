/* SPDX-FileCopyrightText: 2026 TARVA developers */
/* SPDX-License-Identifier: MIT */

#include "report.h"
#include "work.h"

#include <float.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#define SIZE 512

/* Each group computes one tile of the result, for which it brings one tile of each factor after another into
 * local memory. */
static const char source[] =
    "kernel void product(global const float* a, global const float* b, global float* c, uint size,\n"
    "                    local float* tile_a, local float* tile_b) {\n"
    "  const uint tile = get_local_size(0);\n"
    "  const uint column = get_global_id(0), row = get_global_id(1);\n"
    "  const uint x = get_local_id(0), y = get_local_id(1);\n"
    "  float sum = 0.0f;\n"
    "  for (uint start = 0; start < size; start += tile) {\n"
    "    tile_a[y * tile + x] = a[row * size + start + x];\n"
    "    tile_b[y * tile + x] = b[(start + y) * size + column];\n"
    "    barrier(CLK_LOCAL_MEM_FENCE);\n"
    "    for (uint k = 0; k < tile; ++k)\n"
    "      sum += tile_a[y * tile + k] * tile_b[k * tile + x];\n"
    "    barrier(CLK_LOCAL_MEM_FENCE);\n"
    "  }\n"
    "  c[row * size + column] = sum;\n"
    "}\n";

static void make_input(float* a, float* b) {
  uint32_t state = 12345;
  for (int i = 0; i < SIZE * SIZE; ++i) {
    state = state * 1664525u + 1013904223u;
    a[i] = (float)(state >> 8) / (float)(1 << 24) - 0.5f;
    state = state * 1664525u + 1013904223u;
    b[i] = (float)(state >> 8) / (float)(1 << 24) - 0.5f;
  }
}

/* One row of the product in double precision, and the sums of the magnitudes of its terms. */
static void multiply_row(const float* a_row, const float* b, double* sums, double* magnitudes) {
  for (int j = 0; j < SIZE; ++j)
    sums[j] = magnitudes[j] = 0.0;
  for (int k = 0; k < SIZE; ++k)
    for (int j = 0; j < SIZE; ++j) {
      const double term = (double)a_row[k] * b[k * SIZE + j];
      sums[j] += term;
      magnitudes[j] += fabs(term);
    }
}

/* A sum of SIZE products in single precision is off by no more than SIZE roundings of the sum of magnitudes.
 * The return value is the largest deviation, as a part of that bound. */
static double largest_deviation(const float* a, const float* b, const float* c) {
  static double sums[SIZE], magnitudes[SIZE];
  double largest = 0.0;
  for (int i = 0; i < SIZE; ++i) {
    multiply_row(a + i * SIZE, b, sums, magnitudes);
    for (int j = 0; j < SIZE; ++j) {
      const double bound = SIZE * (FLT_EPSILON / 2) * magnitudes[j];
      const double deviation = fabs(c[i * SIZE + j] - sums[j]) / bound;
      /* Written so that a result that is no number counts as the worst. */
      if (!(deviation <= largest))
        largest = isnan(deviation) ? HUGE_VAL : deviation;
    }
  }
  return largest;
}

static uint64_t largest_tile(tarva_abi_device_s* device) {
  const uint64_t limit = max_work_group_size(device);
  uint64_t tile = 16;
  while (tile * tile > limit)
    tile /= 2;
  return tile;
}

int run_matrix_product(tarva_abi_device_s* device) {
  const uint64_t count = (uint64_t)SIZE * SIZE;
  const uint32_t size = SIZE;
  float* a = allocate_or_stop(count * sizeof(float));
  float* b = allocate_or_stop(count * sizeof(float));
  float* c = allocate_or_stop(count * sizeof(float));
  const uint64_t tile = largest_tile(device);
  printf("\nMatrix product of %d by %d, in tiles of %d by %d in local memory\n", SIZE, SIZE, (int)tile,
         (int)tile);
  make_input(a, b);
  double time = now();

  tarva_abi_kernel_s* kernel = load_kernel(device, source, "", "product");
  time = print_step("build the program", time);
  tarva_abi_memory_s* device_a = allocate("a", TARVA_ABI_TYPE_FLOAT, count);
  tarva_abi_memory_s* device_b = allocate("b", TARVA_ABI_TYPE_FLOAT, count);
  tarva_abi_memory_s* device_c = allocate("c", TARVA_ABI_TYPE_FLOAT, count);
  write_memory(device_a, a, count);
  write_memory(device_b, b, count);
  time = print_step("allocate a, b and c, write a and b", time);

  /* The dimensions, then offset, global size and local size. */
  const tarva_abi_launch_range_s range = {TARVA_ABI_LAUNCH_EXPLICIT,
                                          {2, 0, 0, 0, SIZE, SIZE, 1, tile, tile, 1}};
  const tarva_abi_kernel_argument_s arguments[] = {
      memory_argument(device_a),
      memory_argument(device_b),
      memory_argument(device_c),
      value_argument(TARVA_ABI_TYPE_UINT32, &size),
      local_memory_argument(TARVA_ABI_TYPE_FLOAT, tile * tile),
      local_memory_argument(TARVA_ABI_TYPE_FLOAT, tile * tile),
  };
  launch(kernel, arguments, 6, &range);
  time = print_step("launch, first time", time);
  launch(kernel, arguments, 6, &range);
  time = print_step("launch, second time", time);
  read_memory(device_c, c, count);
  time = print_step("read c", time);

  const double deviation = largest_deviation(a, b, c);
  time = print_step("compute and compare on the host", time);
  printf("  verified: the largest deviation from double precision is %.4f of what rounding allows\n",
         deviation);

  tarva_abi_release_memory(NULL, device_c);
  tarva_abi_release_memory(NULL, device_b);
  tarva_abi_release_memory(NULL, device_a);
  tarva_abi_release_kernel(NULL, kernel);
  free(c);
  free(b);
  free(a);
  return deviation <= 1.0;
}
