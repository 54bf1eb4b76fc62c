/* SPDX-FileCopyrightText: 2026 TARVA developers */
/* SPDX-License-Identifier: MIT */

/* Loads the library by its name at run time, uses it, and lets it go.  load <liboryn-tarva.so.0> */
#include <dlfcn.h>
#include <stdio.h>
#include <tarva_abi.h>

typedef tarva_abi_result (*get_devices_function)(void*, tarva_abi_device_array_s**, tarva_abi_error_s**);
typedef void (*release_function)(void*, tarva_abi_device_s*);
typedef void (*free_function)(void*, tarva_abi_device_array_s*);

int main(int argc, char** argv) {
  void* library = argc > 1 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
  if (library == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  get_devices_function get_devices = NULL;
  release_function release_device = NULL;
  free_function free_array = NULL;
  *(void**)&get_devices = dlsym(library, "tarva_abi_get_devices");
  *(void**)&release_device = dlsym(library, "tarva_abi_release_device");
  *(void**)&free_array = dlsym(library, "tarva_abi_free_device_array");
  if (get_devices == NULL || release_device == NULL || free_array == NULL)
    return 1;

  tarva_abi_device_array_s* devices = NULL;
  tarva_abi_error_s* error = NULL;
  if (get_devices(NULL, &devices, &error) != TARVA_ABI_OK || devices->count == 0)
    return 1;
  for (uint64_t i = 0; i < devices->count; ++i)
    release_device(NULL, devices->devices[i]);
  free_array(NULL, devices);
  return dlclose(library);
}
