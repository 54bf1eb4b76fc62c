/* SPDX-FileCopyrightText: 2026 TARVA developers */
/* SPDX-License-Identifier: MIT */

/* The calls of the library that every piece of work makes. All of them end the process, with a message, if
 * they fail. */
#ifndef MAIN_JOB_WORK_H
#define MAIN_JOB_WORK_H

#include <stdint.h>
#include <tarva_abi.h>

/* Builds `source` for the device and takes the kernel `name` out of it. */
tarva_abi_kernel_s* load_kernel(tarva_abi_device_s* device, const char* source, const char* options,
                                const char* name);

tarva_abi_memory_s* allocate(const char* label, tarva_abi_data_type type, uint64_t count);

/* Write or read the first `count` elements, and wait until that is done. */
void write_memory(tarva_abi_memory_s* memory, const void* src, uint64_t count);
void read_memory(tarva_abi_memory_s* memory, void* dest, uint64_t count);

/* The three kinds of argument in use here. The value is read at the launch. */
tarva_abi_kernel_argument_s value_argument(tarva_abi_data_type type, const void* value);
tarva_abi_kernel_argument_s memory_argument(tarva_abi_memory_s* memory);
tarva_abi_kernel_argument_s local_memory_argument(tarva_abi_data_type type, uint64_t count);

void launch(tarva_abi_kernel_s* kernel, const tarva_abi_kernel_argument_s* arguments, uint64_t argument_count,
            const tarva_abi_launch_range_s* range);

/* The largest work-group that the device can run, in work-items. */
uint64_t max_work_group_size(tarva_abi_device_s* device);

/* The pieces of work. Each prints what it does and returns 1 if its result is right, else 0. */
int run_saxpy(tarva_abi_device_s* device);
int run_matrix_product(tarva_abi_device_s* device);
int run_mandelbrot(tarva_abi_device_s* device, const char* picture_path);

#endif
