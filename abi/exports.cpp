#include "abi/frames.h"

using namespace oryn::tarva::library;

// None of these starts the library.

uint64_t tarva_abi_get_abi_version(void) {
  return 0;
}

uint64_t tarva_abi_get_library_version(void) {
  return 0;
}

// What the caller passes as `reserved` is never read.

tarva_abi_result tarva_abi_get_devices(void*, tarva_abi_device_array_s** out_devices,
                                       tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_get_devices>(out_error, out_devices);
}

tarva_abi_result tarva_abi_get_device_root_property(void*, tarva_abi_device_s* device,
                                                    tarva_abi_property_s** out_property,
                                                    tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_get_device_root_property>(out_error, device,
                                                                                out_property);
}

tarva_abi_result tarva_abi_get_builtin_program(void*, tarva_abi_device_s* device,
                                               tarva_abi_program_s** out_program,
                                               tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_get_builtin_program>(out_error, device, out_program);
}

tarva_abi_result tarva_abi_check_device_ir_support(void*, tarva_abi_device_s* device,
                                                   tarva_abi_ir_header_s* ir_header,
                                                   tarva_abi_ir_type ir_type, const void* data,
                                                   uint64_t data_size, const char* options,
                                                   uint64_t* out_supported, tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_check_device_ir_support>(
      out_error, device, ir_header, ir_type, data, data_size, options, out_supported);
}

tarva_abi_result tarva_abi_load_device_ir(void*, tarva_abi_device_s* device, tarva_abi_ir_header_s* ir_header,
                                          tarva_abi_ir_type ir_type, const void* data, uint64_t data_size,
                                          const char* options, const char* user_label,
                                          tarva_abi_build_result_s** out_result,
                                          tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_load_device_ir>(
      out_error, device, ir_header, ir_type, data, data_size, options, user_label, out_result);
}

tarva_abi_result tarva_abi_get_program_root_property(void*, tarva_abi_program_s* program,
                                                     tarva_abi_property_s** out_property,
                                                     tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_get_program_root_property>(out_error, program,
                                                                                 out_property);
}

tarva_abi_result tarva_abi_get_kernel(void*, tarva_abi_program_s* program, const char* kernel_name,
                                      tarva_abi_kernel_s** out_kernel, tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_get_kernel>(out_error, program, kernel_name,
                                                                  out_kernel);
}

tarva_abi_result tarva_abi_get_kernel_root_property(void*, tarva_abi_kernel_s* kernel,
                                                    tarva_abi_property_s** out_property,
                                                    tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_get_kernel_root_property>(out_error, kernel,
                                                                                out_property);
}

tarva_abi_result tarva_abi_kernel_call(void*, tarva_abi_kernel_s* kernel,
                                       const tarva_abi_kernel_argument_s* arguments, uint64_t argument_count,
                                       const tarva_abi_launch_range_s* launch_range,
                                       tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_kernel_call>(out_error, kernel, arguments,
                                                                   argument_count, launch_range);
}

tarva_abi_result tarva_abi_memory_allocate_typed(void*, const char* user_label, tarva_abi_data_type type,
                                                 uint64_t count, tarva_abi_memory_s** out_memory,
                                                 tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_memory_allocate_typed>(out_error, user_label, type,
                                                                             count, out_memory);
}

tarva_abi_result tarva_abi_get_memory_root_property(void*, tarva_abi_memory_s* memory,
                                                    tarva_abi_property_s** out_property,
                                                    tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_get_memory_root_property>(out_error, memory,
                                                                                out_property);
}

tarva_abi_result tarva_abi_fill_memory(void*, tarva_abi_memory_s* memory, const void* value,
                                       uint64_t start_position, uint64_t count,
                                       tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_fill_memory>(out_error, memory, value, start_position,
                                                                   count);
}

tarva_abi_result tarva_abi_copy_memory(void*, tarva_abi_memory_s* src, uint64_t src_start_position,
                                       tarva_abi_memory_s* dest, uint64_t dest_start_position, uint64_t count,
                                       tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_copy_memory>(out_error, src, src_start_position, dest,
                                                                   dest_start_position, count);
}

tarva_abi_result tarva_abi_async_read_memory(void*, tarva_abi_memory_s* memory, uint64_t src_start_position,
                                             uint64_t count, void* dest, tarva_abi_future_s** out_future,
                                             tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_async_read_memory>(
      out_error, memory, src_start_position, count, dest, out_future);
}

tarva_abi_result tarva_abi_async_write_memory(void*, tarva_abi_memory_s* memory, uint64_t dest_start_position,
                                              uint64_t count, const void* src,
                                              tarva_abi_future_s** out_future,
                                              tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_async_write_memory>(
      out_error, memory, dest_start_position, count, src, out_future);
}

tarva_abi_result tarva_abi_wait_future(void*, tarva_abi_future_s* future, long* future_error_code,
                                       tarva_abi_error_s** future_error, tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_wait_future>(out_error, future, future_error_code,
                                                                   future_error);
}

void tarva_abi_abandon_future(void*, tarva_abi_future_s* future) {
  call_without_result<&tarva_singleton::tarva_abi_abandon_future>(future);
}

tarva_abi_result tarva_abi_get_error_root_property(void*, tarva_abi_error_s* error,
                                                   tarva_abi_property_s** out_property,
                                                   tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_get_error_root_property>(out_error, error,
                                                                               out_property);
}

tarva_abi_result tarva_abi_get_nested_error(void*, tarva_abi_error_s* error, tarva_abi_error_s** nested_error,
                                            tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_get_nested_error>(out_error, error, nested_error);
}

tarva_abi_result tarva_abi_get_child_property_by_name(void*, tarva_abi_property_s* parent, const char* name,
                                                      tarva_abi_property_s** out_property,
                                                      tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_get_child_property_by_name>(out_error, parent, name,
                                                                                  out_property);
}

tarva_abi_result tarva_abi_get_all_children_properties(void*, tarva_abi_property_s* parent,
                                                       tarva_abi_property_array_s** out_properties,
                                                       tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_get_all_children_properties>(out_error, parent,
                                                                                   out_properties);
}

tarva_abi_result tarva_abi_get_property_tree_string(void*, tarva_abi_property_s* property,
                                                    const tarva_abi_tree_format_s* format, char** out_string,
                                                    tarva_abi_error_s** out_error) {
  return call_with_result<&tarva_singleton::tarva_abi_get_property_tree_string>(out_error, property, format,
                                                                                out_string);
}

void tarva_abi_retain_device(void*, tarva_abi_device_s* device) {
  call_without_result<&tarva_singleton::tarva_abi_retain_device>(device);
}

void tarva_abi_retain_program(void*, tarva_abi_program_s* program) {
  call_without_result<&tarva_singleton::tarva_abi_retain_program>(program);
}

void tarva_abi_retain_kernel(void*, tarva_abi_kernel_s* kernel) {
  call_without_result<&tarva_singleton::tarva_abi_retain_kernel>(kernel);
}

void tarva_abi_retain_memory(void*, tarva_abi_memory_s* memory) {
  call_without_result<&tarva_singleton::tarva_abi_retain_memory>(memory);
}

void tarva_abi_release_device(void*, tarva_abi_device_s* device) {
  call_without_result<&tarva_singleton::tarva_abi_release_device>(device);
}

void tarva_abi_release_program(void*, tarva_abi_program_s* program) {
  call_without_result<&tarva_singleton::tarva_abi_release_program>(program);
}

void tarva_abi_release_kernel(void*, tarva_abi_kernel_s* kernel) {
  call_without_result<&tarva_singleton::tarva_abi_release_kernel>(kernel);
}

void tarva_abi_release_memory(void*, tarva_abi_memory_s* memory) {
  call_without_result<&tarva_singleton::tarva_abi_release_memory>(memory);
}

void tarva_abi_free_error(void*, tarva_abi_error_s* error) {
  call_without_result<&tarva_singleton::tarva_abi_free_error>(error);
}

void tarva_abi_free_property(void*, tarva_abi_property_s* property) {
  call_without_result<&tarva_singleton::tarva_abi_free_property>(property);
}

void tarva_abi_free_device_array(void*, tarva_abi_device_array_s* array) {
  call_without_result<&tarva_singleton::tarva_abi_free_device_array>(array);
}

void tarva_abi_free_property_array(void*, tarva_abi_property_array_s* array) {
  call_without_result<&tarva_singleton::tarva_abi_free_property_array>(array);
}

void tarva_abi_free_build_result(void*, tarva_abi_build_result_s* result) {
  call_without_result<&tarva_singleton::tarva_abi_free_build_result>(result);
}

void tarva_abi_free_property_tree_string(void*, char* string) {
  call_without_result<&tarva_singleton::tarva_abi_free_property_tree_string>(string);
}
