/* SPDX-FileCopyrightText: 2026 TARVA developers */
/* SPDX-License-Identifier: MIT */

/* The smallest useful program: one line for each OpenCL device of the machine. */
#include <stdio.h>
#include <tarva_abi.h>

int main(void) {
  tarva_abi_device_array_s* devices = NULL;
  tarva_abi_error_s* error = NULL;
  if (tarva_abi_get_devices(NULL, &devices, &error) != TARVA_ABI_OK)
    return 1;

  for (uint64_t i = 0; i < devices->count; ++i) {
    tarva_abi_property_s *root = NULL, *name = NULL;
    if (tarva_abi_get_device_root_property(NULL, devices->devices[i], &root, &error) != TARVA_ABI_OK ||
        tarva_abi_get_child_property_by_name(NULL, root, "FRIENDLY_SUMMARY", &name, &error) != TARVA_ABI_OK)
      return 1;
    puts(*(const char* const*)name->data);
    tarva_abi_free_property(NULL, name);
    tarva_abi_free_property(NULL, root);
    tarva_abi_release_device(NULL, devices->devices[i]);
  }
  tarva_abi_free_device_array(NULL, devices);
  return 0;
}
