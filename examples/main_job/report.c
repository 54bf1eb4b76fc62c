/* SPDX-FileCopyrightText: 2026 TARVA developers */
/* SPDX-License-Identifier: MIT */

#define _POSIX_C_SOURCE 200809L
#include "report.h"

#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

static const char* first_string(const tarva_abi_property_s* property) {
  if (property->data_type != TARVA_ABI_TYPE_STRING || property->element_count == 0)
    return "(not told)";
  return ((const char* const*)property->data)[0];
}

static void print_error(tarva_abi_error_s* error) {
  tarva_abi_property_s *root = NULL, *message = NULL;
  tarva_abi_error_s* second_error = NULL;
  if (tarva_abi_get_error_root_property(NULL, error, &root, &second_error) == TARVA_ABI_OK &&
      tarva_abi_get_child_property_by_name(NULL, root, "EXCEPTION_MESSAGE", &message, &second_error) ==
          TARVA_ABI_OK)
    fprintf(stderr, "  %s\n", first_string(message));
  tarva_abi_free_property(NULL, message);
  tarva_abi_free_property(NULL, root);
  tarva_abi_free_error(NULL, second_error);
}

void require(tarva_abi_result result, tarva_abi_error_s* error, const char* doing) {
  if (result == TARVA_ABI_OK)
    return;
  fprintf(stderr, "%s failed with result %" PRId64 ".\n", doing, result);
  while (error != NULL) {
    tarva_abi_error_s *nested = NULL, *second_error = NULL;
    print_error(error);
    if (tarva_abi_get_nested_error(NULL, error, &nested, &second_error) != TARVA_ABI_OK)
      tarva_abi_free_error(NULL, second_error);
    tarva_abi_free_error(NULL, error);
    error = nested;
  }
  exit(1);
}

void* allocate_or_stop(uint64_t bytes) {
  void* block = malloc(bytes);
  if (block == NULL) {
    fprintf(stderr, "Out of memory.\n");
    exit(1);
  }
  return block;
}

tarva_abi_property_s* child_property(tarva_abi_property_s* parent, const char* name) {
  tarva_abi_property_s* child = NULL;
  tarva_abi_error_s* error = NULL;
  require(tarva_abi_get_child_property_by_name(NULL, parent, name, &child, &error), error, name);
  return child;
}

static void print_device(uint64_t number, tarva_abi_device_s* device) {
  tarva_abi_property_s* root = NULL;
  tarva_abi_error_s* error = NULL;
  require(tarva_abi_get_device_root_property(NULL, device, &root, &error), error, "Reading a device");
  tarva_abi_property_s* summary = child_property(root, "FRIENDLY_SUMMARY");
  tarva_abi_property_s* opencl = child_property(root, "OPENCL");
  tarva_abi_property_s* version = child_property(opencl, "CL_DEVICE_VERSION");
  tarva_abi_property_s* driver = child_property(opencl, "CL_DRIVER_VERSION");

  printf("  %" PRIu64 ". %s\n", number, first_string(summary));
  printf("     reports \"%s\", driver \"%s\"\n", first_string(version), first_string(driver));

  tarva_abi_free_property(NULL, driver);
  tarva_abi_free_property(NULL, version);
  tarva_abi_free_property(NULL, opencl);
  tarva_abi_free_property(NULL, summary);
  tarva_abi_free_property(NULL, root);
}

void print_devices(const tarva_abi_device_array_s* devices) {
  printf("%" PRIu64 " OpenCL device%s:\n", devices->count, devices->count == 1 ? "" : "s");
  for (uint64_t i = 0; i < devices->count; ++i)
    print_device(i, devices->devices[i]);
}

double now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return (double)time.tv_sec + 1e-9 * (double)time.tv_nsec;
}

double print_step(const char* what, double start) {
  const double end = now();
  printf("  %-40s %9.2f ms\n", what, 1e3 * (end - start));
  fflush(stdout);
  return end;
}
