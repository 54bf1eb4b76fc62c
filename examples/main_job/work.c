/* SPDX-FileCopyrightText: 2026 TARVA developers */
/* SPDX-License-Identifier: MIT */

#include "work.h"

#include "report.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

tarva_abi_kernel_s* load_kernel(tarva_abi_device_s* device, const char* source, const char* options,
                                const char* name) {
  tarva_abi_build_result_s* result = NULL;
  tarva_abi_kernel_s* kernel = NULL;
  tarva_abi_error_s* error = NULL;
  /* Every device takes source text of OpenCL 1.0. */
  require(tarva_abi_load_device_ir(NULL, device, NULL, TARVA_ABI_IR_SOURCE_1_0, source, strlen(source),
                                   options, name, &result, &error),
          error, "Loading a program");
  if (!result->success) {
    fprintf(stderr, "The program of %s does not build:\n%s\n", name,
            result->build_log ? result->build_log : "");
    exit(1);
  }
  require(tarva_abi_get_kernel(NULL, result->program, name, &kernel, &error), error, "Taking out a kernel");
  /* The kernel keeps the program alive. */
  tarva_abi_release_program(NULL, result->program);
  tarva_abi_free_build_result(NULL, result);
  return kernel;
}

tarva_abi_memory_s* allocate(const char* label, tarva_abi_data_type type, uint64_t count) {
  tarva_abi_memory_s* memory = NULL;
  tarva_abi_error_s* error = NULL;
  require(tarva_abi_memory_allocate_typed(NULL, label, type, count, &memory, &error), error,
          "Allocating memory");
  return memory;
}

static void wait_for(tarva_abi_future_s* future, const char* doing) {
  long code = TARVA_ABI_OK;
  tarva_abi_error_s *failure = NULL, *error = NULL;
  require(tarva_abi_wait_future(NULL, future, &code, &failure, &error), error, "Waiting");
  require(code, failure, doing);
}

void write_memory(tarva_abi_memory_s* memory, const void* src, uint64_t count) {
  tarva_abi_future_s* future = NULL;
  tarva_abi_error_s* error = NULL;
  require(tarva_abi_async_write_memory(NULL, memory, 0, count, src, &future, &error), error,
          "Writing memory");
  wait_for(future, "Writing memory");
}

void read_memory(tarva_abi_memory_s* memory, void* dest, uint64_t count) {
  tarva_abi_future_s* future = NULL;
  tarva_abi_error_s* error = NULL;
  require(tarva_abi_async_read_memory(NULL, memory, 0, count, dest, &future, &error), error,
          "Reading memory");
  wait_for(future, "Reading memory");
}

tarva_abi_kernel_argument_s value_argument(tarva_abi_data_type type, const void* value) {
  const tarva_abi_kernel_argument_s argument = {TARVA_ABI_ARGUMENT_VALUE, type, (uintptr_t)value};
  return argument;
}

tarva_abi_kernel_argument_s memory_argument(tarva_abi_memory_s* memory) {
  const tarva_abi_kernel_argument_s argument = {TARVA_ABI_ARGUMENT_MEMORY, (uintptr_t)memory, 0};
  return argument;
}

tarva_abi_kernel_argument_s local_memory_argument(tarva_abi_data_type type, uint64_t count) {
  const tarva_abi_kernel_argument_s argument = {TARVA_ABI_ARGUMENT_LOCAL_MEMORY, type, count};
  return argument;
}

void launch(tarva_abi_kernel_s* kernel, const tarva_abi_kernel_argument_s* arguments, uint64_t argument_count,
            const tarva_abi_launch_range_s* range) {
  tarva_abi_error_s* error = NULL;
  require(tarva_abi_kernel_call(NULL, kernel, arguments, argument_count, range, &error), error,
          "Launching a kernel");
}

uint64_t max_work_group_size(tarva_abi_device_s* device) {
  tarva_abi_property_s* root = NULL;
  tarva_abi_error_s* error = NULL;
  require(tarva_abi_get_device_root_property(NULL, device, &root, &error), error, "Reading a device");
  tarva_abi_property_s* opencl = child_property(root, "OPENCL");
  tarva_abi_property_s* property = child_property(opencl, "CL_DEVICE_MAX_WORK_GROUP_SIZE");
  const uint64_t size = property->element_count == 1 ? *(const uint64_t*)property->data : 1;
  tarva_abi_free_property(NULL, property);
  tarva_abi_free_property(NULL, opencl);
  tarva_abi_free_property(NULL, root);
  return size;
}
