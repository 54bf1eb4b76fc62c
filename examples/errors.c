/* SPDX-FileCopyrightText: 2026 TARVA developers */
/* SPDX-License-Identifier: MIT */

/* What failures look like: a request that makes no sense, a program that does not build, and a read whose work
 * fails. Each error object is asked for its message, and for the errors behind it. */
#include <inttypes.h>
#include <stdio.h>
#include <string.h>
#include <tarva_abi.h>

/* The value of a property of the error, or NULL. `*owner` receives the property that holds it. */
static const void* value_of(tarva_abi_property_s* root, const char* name, tarva_abi_property_s** owner) {
  tarva_abi_error_s* second = NULL;
  if (tarva_abi_get_child_property_by_name(NULL, root, name, owner, &second) == TARVA_ABI_OK)
    return (*owner)->data;
  tarva_abi_free_error(NULL, second);
  return NULL;
}

static void print_one(tarva_abi_error_s* error) {
  tarva_abi_property_s *root = NULL, *type = NULL, *message = NULL;
  tarva_abi_error_s* second = NULL;
  if (tarva_abi_get_error_root_property(NULL, error, &root, &second) != TARVA_ABI_OK) {
    tarva_abi_free_error(NULL, second);
    return;
  }
  const uint64_t* number = value_of(root, "EXCEPTION_TYPE", &type);
  const char* const* words = value_of(root, "EXCEPTION_MESSAGE", &message);
  printf("  type %" PRIu64 ": %s\n", number != NULL ? *number : 0, words != NULL ? *words : "?");
  tarva_abi_free_property(NULL, message);
  tarva_abi_free_property(NULL, type);
  tarva_abi_free_property(NULL, root);
}

/* Prints how a call ended, and gives up the error object with all behind it. */
static void print_outcome(const char* doing, tarva_abi_result result, tarva_abi_error_s* error) {
  printf("%s: result %" PRId64 "\n", doing, result);
  while (error != NULL) {
    tarva_abi_error_s *nested = NULL, *second = NULL;
    print_one(error);
    if (tarva_abi_get_nested_error(NULL, error, &nested, &second) != TARVA_ABI_OK)
      tarva_abi_free_error(NULL, second);
    tarva_abi_free_error(NULL, error);
    error = nested;
  }
}

static void build_badly(tarva_abi_device_s* device) {
  static const char source[] = "kernel void broken(global int* data) { data[0] = unknown; }";
  tarva_abi_build_result_s* built = NULL;
  tarva_abi_error_s* error = NULL;
  const tarva_abi_result result = tarva_abi_load_device_ir(
      NULL, device, NULL, TARVA_ABI_IR_SOURCE_1_0, source, strlen(source), "", "broken", &built, &error);
  print_outcome("a program that does not build", result, result == TARVA_ABI_OK ? NULL : error);
  if (result != TARVA_ABI_OK)
    return;
  printf("  success %" PRIu64 ", log: %s\n", built->success,
         built->build_log != NULL ? built->build_log : "");
  tarva_abi_release_program(NULL, built->program);
  tarva_abi_free_build_result(NULL, built);
}

int main(void) {
  tarva_abi_device_array_s* devices = NULL;
  tarva_abi_memory_s* memory = NULL;
  tarva_abi_future_s* future = NULL;
  tarva_abi_error_s *error = NULL, *failure = NULL;
  tarva_abi_result result = tarva_abi_get_devices(NULL, &devices, &error);
  if (result != TARVA_ABI_OK || devices->count == 0) {
    print_outcome("listing the devices, of which there have to be some", result, error);
    return 1;
  }

  error = NULL;
  result = tarva_abi_memory_allocate_typed(NULL, "", TARVA_ABI_TYPE_NONE, 4, &memory, &error);
  print_outcome("memory of no type", result, error);

  build_badly(devices->devices[0]);

  /* The call is accepted; that the range is too long is what the future tells. */
  float numbers[8];
  long code = TARVA_ABI_OK;
  if (tarva_abi_memory_allocate_typed(NULL, "", TARVA_ABI_TYPE_FLOAT, 4, &memory, &error) != TARVA_ABI_OK ||
      tarva_abi_async_read_memory(NULL, memory, 0, 8, numbers, &future, &error) != TARVA_ABI_OK ||
      tarva_abi_wait_future(NULL, future, &code, &failure, &error) != TARVA_ABI_OK)
    return 1;
  print_outcome("a read beyond the end", code, failure);

  tarva_abi_release_memory(NULL, memory);
  for (uint64_t i = 0; i < devices->count; ++i)
    tarva_abi_release_device(NULL, devices->devices[i]);
  tarva_abi_free_device_array(NULL, devices);
  return code == TARVA_ABI_LOGIC_FAILURE ? 0 : 1;
}
