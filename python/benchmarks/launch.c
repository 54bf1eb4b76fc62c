/* SPDX-FileCopyrightText: 2026 TARVA developers */
/* SPDX-License-Identifier: MIT */

/* The time of a launch with three arguments from C, in nanoseconds: launch <launches> */
#define _POSIX_C_SOURCE 200809L
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tarva_abi.h>
#include <time.h>

static const char source[] = "kernel void three(float a, global float* x, global float* y) {}";

static tarva_abi_error_s* error = NULL;

static void check(tarva_abi_result result) {
  if (result != TARVA_ABI_OK) {
    fprintf(stderr, "a call failed with result %ld\n", (long)result);
    exit(1);
  }
}

static double now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return 1e9 * (double)time.tv_sec + (double)time.tv_nsec;
}

int main(int argc, char** argv) {
  const long launches = argc > 1 ? atol(argv[1]) : 10000;
  tarva_abi_device_array_s* devices = NULL;
  check(tarva_abi_get_devices(NULL, &devices, &error));
  tarva_abi_build_result_s* built = NULL;
  check(tarva_abi_load_device_ir(NULL, devices->devices[0], NULL, TARVA_ABI_IR_SOURCE_1_0, source,
                                 strlen(source), "", "", &built, &error));
  tarva_abi_kernel_s* kernel = NULL;
  check(tarva_abi_get_kernel(NULL, built->program, "three", &kernel, &error));
  tarva_abi_memory_s* memory = NULL;
  check(tarva_abi_memory_allocate_typed(NULL, "", TARVA_ABI_TYPE_FLOAT, 1000, &memory, &error));
  const float a = 3;
  const tarva_abi_kernel_argument_s arguments[] = {
      {TARVA_ABI_ARGUMENT_VALUE, TARVA_ABI_TYPE_FLOAT, (uintptr_t)&a},
      {TARVA_ABI_ARGUMENT_MEMORY, (uintptr_t)memory, 0},
      {TARVA_ABI_ARGUMENT_MEMORY, (uintptr_t)memory, 0},
  };
  const tarva_abi_launch_range_s range = {TARVA_ABI_LAUNCH_EXPLICIT, {1, 0, 0, 0, 1, 0, 0, 0, 0, 0}};
  double begin = 0;
  for (long i = -launches / 10; i < launches; ++i) { /* the first tenth is not counted */
    if (i == 0)
      begin = now();
    check(tarva_abi_kernel_call(NULL, kernel, arguments, 3, &range, &error));
  }
  printf("%.1f\n", (now() - begin) / (double)launches);
  return 0;
}
