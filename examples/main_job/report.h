/* SPDX-FileCopyrightText: 2026 TARVA developers */
/* SPDX-License-Identifier: MIT */

/* What the main job prints: properties, errors, and how long its steps took. */
#ifndef MAIN_JOB_REPORT_H
#define MAIN_JOB_REPORT_H

#include <stdint.h>
#include <tarva_abi.h>

/* Ends the process with status 1 if `result` is a failure, after printing `doing`, and the error with the
 * errors behind it. */
void require(tarva_abi_result result, tarva_abi_error_s* error, const char* doing);

/* malloc that ends the process with status 1 if there is no memory. */
void* allocate_or_stop(uint64_t bytes);

/* The child of `parent` with this name. */
tarva_abi_property_s* child_property(tarva_abi_property_s* parent, const char* name);

/* Prints one line for each device: its number, its name, and the OpenCL version that it reports. */
void print_devices(const tarva_abi_device_array_s* devices);

/* Seconds of a clock that never goes back. */
double now(void);

/* Prints that the step `what` took the time since `start`, and returns the present time. */
double print_step(const char* what, double start);

#endif
