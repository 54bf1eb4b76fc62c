/* As much of the interface as the C++ layer needs to launch and to transfer, doing nothing; and a read that fails with
 * an error behind an error. */
#include "stub_interface.h"

#include <stddef.h>

struct tarva_abi_memory_s {
  tarva_abi_object_kind kind;
};
struct tarva_abi_error_s {
  int depth;
};

static struct tarva_abi_memory_s only_memory;
static struct tarva_abi_error_s errors[] = {{0}, {1}};
static tarva_abi_property_s roots[2], types[2], messages[2];
static const uint64_t type_values[] = {7, 4};
static const char* const message_values[] = {"the outer one", "the inner one"};
static int next_read_fails;
static int freed_errors;
static int ended_futures;

void stub_fail_next_read(void) {
  next_read_fails = 1;
}
int stub_freed_errors(void) {
  return freed_errors;
}
int stub_ended_futures(void) {
  return ended_futures;
}

tarva_abi_result tarva_abi_memory_allocate_typed(void* reserved, const char* label, tarva_abi_data_type type,
                                                 uint64_t count, tarva_abi_memory_s** out_memory,
                                                 tarva_abi_error_s** out_error) {
  (void)reserved, (void)label, (void)type, (void)count, (void)out_error;
  *out_memory = &only_memory;
  return TARVA_ABI_OK;
}
/* Never called, but named by the debug information that clang writes of types that have these as arguments. */
void tarva_abi_retain_kernel(void* reserved, tarva_abi_kernel_s* kernel) {
  (void)reserved, (void)kernel;
}
void tarva_abi_retain_memory(void* reserved, tarva_abi_memory_s* memory) {
  (void)reserved, (void)memory;
}
void tarva_abi_release_memory(void* reserved, tarva_abi_memory_s* memory) {
  (void)reserved, (void)memory;
}

tarva_abi_result tarva_abi_kernel_call(void* reserved, tarva_abi_kernel_s* kernel,
                                       const tarva_abi_kernel_argument_s* arguments, uint64_t argument_count,
                                       const tarva_abi_launch_range_s* range, tarva_abi_error_s** out_error) {
  (void)reserved, (void)kernel, (void)arguments, (void)argument_count, (void)range, (void)out_error;
  return TARVA_ABI_OK;
}
tarva_abi_result tarva_abi_fill_memory(void* reserved, tarva_abi_memory_s* memory, const void* value,
                                       uint64_t start, uint64_t count, tarva_abi_error_s** out_error) {
  (void)reserved, (void)memory, (void)value, (void)start, (void)count, (void)out_error;
  return TARVA_ABI_OK;
}
tarva_abi_result tarva_abi_copy_memory(void* reserved, tarva_abi_memory_s* src, uint64_t src_start,
                                       tarva_abi_memory_s* dest, uint64_t dest_start, uint64_t count,
                                       tarva_abi_error_s** out_error) {
  (void)reserved, (void)src, (void)src_start, (void)dest, (void)dest_start, (void)count, (void)out_error;
  return TARVA_ABI_OK;
}
tarva_abi_result tarva_abi_async_read_memory(void* reserved, tarva_abi_memory_s* memory, uint64_t start,
                                             uint64_t count, void* dest, tarva_abi_future_s** out_future,
                                             tarva_abi_error_s** out_error) {
  (void)reserved, (void)start, (void)count, (void)dest;
  if (next_read_fails) {
    next_read_fails = 0;
    *out_error = &errors[0];
    return TARVA_ABI_RUNTIME_FAILURE;
  }
  *out_future = (tarva_abi_future_s*)memory;
  return TARVA_ABI_OK;
}
tarva_abi_result tarva_abi_async_write_memory(void* reserved, tarva_abi_memory_s* memory, uint64_t start,
                                              uint64_t count, const void* src,
                                              tarva_abi_future_s** out_future,
                                              tarva_abi_error_s** out_error) {
  (void)reserved, (void)start, (void)count, (void)src, (void)out_error;
  *out_future = (tarva_abi_future_s*)memory;
  return TARVA_ABI_OK;
}
tarva_abi_result tarva_abi_wait_future(void* reserved, tarva_abi_future_s* future, long* code,
                                       tarva_abi_error_s** error, tarva_abi_error_s** out_error) {
  (void)reserved, (void)future, (void)error, (void)out_error;
  ++ended_futures;
  *code = TARVA_ABI_OK;
  return TARVA_ABI_OK;
}
void tarva_abi_abandon_future(void* reserved, tarva_abi_future_s* future) {
  (void)reserved, (void)future;
  ++ended_futures;
}

tarva_abi_result tarva_abi_get_error_root_property(void* reserved, tarva_abi_error_s* error,
                                                   tarva_abi_property_s** out_property,
                                                   tarva_abi_error_s** out_error) {
  (void)reserved, (void)out_error;
  *out_property = &roots[error->depth];
  return TARVA_ABI_OK;
}
tarva_abi_result tarva_abi_get_child_property_by_name(void* reserved, tarva_abi_property_s* parent,
                                                      const char* name, tarva_abi_property_s** out_property,
                                                      tarva_abi_error_s** out_error) {
  const ptrdiff_t depth = parent - roots;
  (void)reserved, (void)out_error;
  if (name[10] == 'T') { /* of EXCEPTION_TYPE */
    types[depth].data = &type_values[depth];
    *out_property = &types[depth];
  } else {
    messages[depth].data = &message_values[depth];
    *out_property = &messages[depth];
  }
  return TARVA_ABI_OK;
}
tarva_abi_result tarva_abi_get_nested_error(void* reserved, tarva_abi_error_s* error,
                                            tarva_abi_error_s** nested_error, tarva_abi_error_s** out_error) {
  (void)reserved, (void)out_error;
  *nested_error = error->depth == 0 ? &errors[1] : NULL;
  return TARVA_ABI_OK;
}
void tarva_abi_release_kernel(void* reserved, tarva_abi_kernel_s* kernel) {
  (void)reserved, (void)kernel;
}
void tarva_abi_free_property(void* reserved, tarva_abi_property_s* property) {
  (void)reserved, (void)property;
}
void tarva_abi_free_error(void* reserved, tarva_abi_error_s* error) {
  (void)reserved;
  if (error != NULL)
    ++freed_errors;
}
