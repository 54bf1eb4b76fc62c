/* SPDX-FileCopyrightText: 2026 TARVA developers */
/* SPDX-License-Identifier: MIT */

/* y = a * x + y on the first device, in C. saxpy.cpp is the same in C++. */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tarva_abi.h>

#define COUNT 1000

static const char source[] = "kernel void saxpy(float a, global const float* x, global float* y) {\n"
                             "  size_t i = get_global_id(0);\n"
                             "  y[i] = a * x[i] + y[i];\n"
                             "}\n";

/* Ends the program if a call has failed. errors.c shows how to ask the error object what happened. */
static void check(tarva_abi_result result, const char* doing) {
  if (result != TARVA_ABI_OK) {
    fprintf(stderr, "%s failed with result %" PRId64 ".\n", doing, result);
    exit(1);
  }
}

static void wait_for(tarva_abi_future_s* future, const char* doing) {
  long code = TARVA_ABI_OK;
  tarva_abi_error_s* error = NULL;
  check(tarva_abi_wait_future(NULL, future, &code, NULL, &error), "Waiting");
  check(code, doing);
}

static tarva_abi_memory_s* make_memory(const float* content) {
  tarva_abi_memory_s* memory = NULL;
  tarva_abi_future_s* future = NULL;
  tarva_abi_error_s* error = NULL;
  check(tarva_abi_memory_allocate_typed(NULL, "", TARVA_ABI_TYPE_FLOAT, COUNT, &memory, &error),
        "Allocating");
  check(tarva_abi_async_write_memory(NULL, memory, 0, COUNT, content, &future, &error), "Writing");
  wait_for(future, "Writing");
  return memory;
}

static tarva_abi_kernel_s* make_kernel(tarva_abi_device_s* device) {
  tarva_abi_build_result_s* built = NULL;
  tarva_abi_kernel_s* kernel = NULL;
  tarva_abi_error_s* error = NULL;
  check(tarva_abi_load_device_ir(NULL, device, NULL, TARVA_ABI_IR_SOURCE_1_0, source, strlen(source), "", "",
                                 &built, &error),
        "Building");
  if (!built->success) {
    fprintf(stderr, "%s\n", built->build_log != NULL ? built->build_log : "The program does not build.");
    exit(1);
  }
  check(tarva_abi_get_kernel(NULL, built->program, "saxpy", &kernel, &error), "Taking the kernel");
  tarva_abi_release_program(NULL, built->program); /* the kernel keeps it alive */
  tarva_abi_free_build_result(NULL, built);
  return kernel;
}

int main(void) {
  tarva_abi_device_array_s* devices = NULL;
  tarva_abi_future_s* future = NULL;
  tarva_abi_error_s* error = NULL;
  check(tarva_abi_get_devices(NULL, &devices, &error), "Listing the devices");
  if (devices->count == 0) {
    fprintf(stderr, "The machine has no OpenCL device.\n");
    return 1;
  }

  float x[COUNT], y[COUNT];
  for (int i = 0; i < COUNT; ++i) {
    x[i] = (float)i;
    y[i] = 1.0f;
  }
  const float a = 3.0f;
  tarva_abi_kernel_s* saxpy = make_kernel(devices->devices[0]);
  tarva_abi_memory_s *on_x = make_memory(x), *on_y = make_memory(y);
  const tarva_abi_kernel_argument_s arguments[] = {
      {TARVA_ABI_ARGUMENT_VALUE, TARVA_ABI_TYPE_FLOAT, (uintptr_t)&a},
      {TARVA_ABI_ARGUMENT_MEMORY, (uintptr_t)on_x, 0},
      {TARVA_ABI_ARGUMENT_MEMORY, (uintptr_t)on_y, 0},
  };
  /* One dimension of COUNT work-items, in groups of the device's choice. */
  const tarva_abi_launch_range_s range = {TARVA_ABI_LAUNCH_EXPLICIT, {1, 0, 0, 0, COUNT, 1, 1, 0, 0, 0}};
  check(tarva_abi_kernel_call(NULL, saxpy, arguments, 3, &range, &error), "Launching");
  check(tarva_abi_async_read_memory(NULL, on_y, 0, COUNT, y, &future, &error), "Reading");
  wait_for(future, "Reading");
  printf("3 * %d + 1 = %g\n", COUNT - 1, y[COUNT - 1]);

  tarva_abi_release_memory(NULL, on_y);
  tarva_abi_release_memory(NULL, on_x);
  tarva_abi_release_kernel(NULL, saxpy);
  for (uint64_t i = 0; i < devices->count; ++i)
    tarva_abi_release_device(NULL, devices->devices[i]);
  tarva_abi_free_device_array(NULL, devices);
  return y[COUNT - 1] == 3.0f * (COUNT - 1) + 1.0f ? 0 : 1;
}
