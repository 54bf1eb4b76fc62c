// As much of the interface as the C++ layer needs to launch and to transfer, doing nothing.
#include <cstdint>
#include <tarva_abi.h>

struct tarva_abi_memory_s {};

int ended_futures = 0;

namespace {

tarva_abi_memory_s only_memory;

tarva_abi_result make_future(tarva_abi_future_s** out_future) {
  *out_future = reinterpret_cast<tarva_abi_future_s*>(&only_memory);
  return TARVA_ABI_OK;
}

} // namespace

tarva_abi_result tarva_abi_memory_allocate_typed(void*, const char*, tarva_abi_data_type, uint64_t,
                                                 tarva_abi_memory_s** out_memory, tarva_abi_error_s**) {
  *out_memory = &only_memory;
  return TARVA_ABI_OK;
}
#define DOES_NOTHING(name, ...)                                                                              \
  tarva_abi_result name(void*, __VA_ARGS__, tarva_abi_error_s**) {                                           \
    return TARVA_ABI_OK;                                                                                     \
  }
DOES_NOTHING(tarva_abi_kernel_call, tarva_abi_kernel_s*, const tarva_abi_kernel_argument_s*, uint64_t,
             const tarva_abi_launch_range_s*)
// Never called, but named by the debug information that clang writes of types that have these as arguments.
DOES_NOTHING(tarva_abi_get_kernel_root_property, tarva_abi_kernel_s*, tarva_abi_property_s**)
DOES_NOTHING(tarva_abi_get_memory_root_property, tarva_abi_memory_s*, tarva_abi_property_s**)
void tarva_abi_retain_kernel(void*, tarva_abi_kernel_s*) {}
void tarva_abi_retain_memory(void*, tarva_abi_memory_s*) {}
void tarva_abi_release_kernel(void*, tarva_abi_kernel_s*) {}
void tarva_abi_release_memory(void*, tarva_abi_memory_s*) {}

tarva_abi_result tarva_abi_async_read_memory(void*, tarva_abi_memory_s*, uint64_t, uint64_t, void*,
                                             tarva_abi_future_s** out_future, tarva_abi_error_s**) {
  return make_future(out_future);
}
tarva_abi_result tarva_abi_async_write_memory(void*, tarva_abi_memory_s*, uint64_t, uint64_t, const void*,
                                              tarva_abi_future_s** out_future, tarva_abi_error_s**) {
  return make_future(out_future);
}
tarva_abi_result tarva_abi_wait_future(void*, tarva_abi_future_s*, long* code, tarva_abi_error_s**,
                                       tarva_abi_error_s**) {
  ++ended_futures;
  *code = TARVA_ABI_OK;
  return TARVA_ABI_OK;
}
void tarva_abi_abandon_future(void*, tarva_abi_future_s*) {
  ++ended_futures;
}
// Never called, but asked for by what tells of failures.
DOES_NOTHING(tarva_abi_get_error_root_property, tarva_abi_error_s*, tarva_abi_property_s**)
DOES_NOTHING(tarva_abi_get_child_property_by_name, tarva_abi_property_s*, const char*, tarva_abi_property_s**)
DOES_NOTHING(tarva_abi_get_nested_error, tarva_abi_error_s*, tarva_abi_error_s**)
void tarva_abi_free_property(void*, tarva_abi_property_s*) {}
void tarva_abi_free_error(void*, tarva_abi_error_s*) {}
