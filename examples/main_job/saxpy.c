/* SPDX-FileCopyrightText: 2026 TARVA developers */
/* SPDX-License-Identifier: MIT */

#include "report.h"
#include "work.h"

#include <inttypes.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#define COUNT ((uint64_t)16 << 20)

static const char source[] = "kernel void saxpy(float a, global const float* x, global float* y) {\n"
                             "  const size_t i = get_global_id(0);\n"
                             "  y[i] = a * x[i] + y[i];\n"
                             "}\n";

static void make_input(float* x, float* y) {
  for (uint64_t i = 0; i < COUNT; ++i) {
    x[i] = sinf(0.001f * (float)i);
    y[i] = 1.0f / (1.0f + (float)(i % 1000));
  }
}

/* A device may round the product before it adds, or not: these are the only two right answers. */
static uint64_t count_wrong(float a, const float* x, const float* y, const float* result) {
  uint64_t wrong = 0;
  for (uint64_t i = 0; i < COUNT; ++i) {
    const float product = a * x[i];
    if (result[i] != product + y[i] && result[i] != fmaf(a, x[i], y[i]))
      ++wrong;
  }
  return wrong;
}

int run_saxpy(tarva_abi_device_s* device) {
  const float a = 2.7182818f;
  float* x = allocate_or_stop(COUNT * sizeof(float));
  float* y = allocate_or_stop(COUNT * sizeof(float));
  float* result = allocate_or_stop(COUNT * sizeof(float));
  printf("\nSAXPY, y = a * x + y, over %" PRIu64 " elements\n", COUNT);
  double time = now();

  make_input(x, y);
  time = print_step("make the input on the host", time);
  tarva_abi_kernel_s* kernel = load_kernel(device, source, "", "saxpy");
  time = print_step("build the program", time);
  tarva_abi_memory_s* device_x = allocate("x", TARVA_ABI_TYPE_FLOAT, COUNT);
  tarva_abi_memory_s* device_y = allocate("y", TARVA_ABI_TYPE_FLOAT, COUNT);
  write_memory(device_x, x, COUNT);
  write_memory(device_y, y, COUNT);
  time = print_step("allocate and write x and y", time);

  /* Word 1: one dimension; word 2: groups in it; word 3: work-items in a group. */
  const uint64_t group = max_work_group_size(device) >= 256 ? 256 : 1;
  const tarva_abi_launch_range_s range = {TARVA_ABI_LAUNCH_GROUPS_SIZED, {1, COUNT / group, group, 1, 1}};
  const tarva_abi_kernel_argument_s arguments[] = {value_argument(TARVA_ABI_TYPE_FLOAT, &a),
                                                   memory_argument(device_x), memory_argument(device_y)};
  launch(kernel, arguments, 3, &range);
  time = print_step("launch (moves x and y to the device)", time);
  read_memory(device_y, result, COUNT);
  time = print_step("read y", time);

  const uint64_t wrong = count_wrong(a, x, y, result);
  time = print_step("compute and compare on the host", time);
  printf("  verified: %" PRIu64 " of %" PRIu64
         " elements are right to the last bit, with the product rounded or "
         "fused\n",
         COUNT - wrong, COUNT);

  tarva_abi_release_memory(NULL, device_y);
  tarva_abi_release_memory(NULL, device_x);
  tarva_abi_release_kernel(NULL, kernel);
  free(result);
  free(y);
  free(x);
  return wrong == 0;
}
