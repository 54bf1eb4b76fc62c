#include "abi/argument_checks.h"
#include "abi/ir_arguments.h"
#include "abi/tarva_singleton.h"
#include "objects/library_device.h"
#include "objects/library_kernel.h"
#include "objects/library_program.h"

#include <cstdlib>

// Devices, programs, and how kernels are taken out of them.
namespace oryn::tarva::library {

void tarva_singleton::tarva_abi_get_devices(tarva_abi_device_array_s** out_devices) {
  require(out_devices,
          "tarva_abi_get_devices: devices argument is NULL, but expected a memory location to return "
          "the device array.");
  *out_devices = bridge_.make_device_array(devices_);
}

void tarva_singleton::tarva_abi_get_builtin_program(tarva_abi_device_s* device,
                                                    tarva_abi_program_s** out_program) {
  require(
      out_program,
      "tarva_abi_get_builtin_program: program argument is NULL, but expected a memory location to write the "
      "result program.");
  *out_program =
      bridge_.make_handle<tarva_abi_program_s>(bridge_.get_library_object(device)->get_builtin_program());
}

void tarva_singleton::tarva_abi_check_device_ir_support(tarva_abi_device_s* device,
                                                        const tarva_abi_ir_header_s* ir_header,
                                                        tarva_abi_ir_type ir_type, const void* data,
                                                        std::uint64_t data_size, const char* options,
                                                        std::uint64_t* out_supported) {
  require(out_supported,
          "tarva_abi_check_device_ir_support : supported argument is NULL, but should point to a "
          "valid memory location to return a result.");
  const auto library_device = bridge_.get_library_object(device);
  const ir_arguments ir(ir_header, ir_type, data, data_size, options);
  *out_supported = library_device->is_ir_supported(ir.header, ir.type, ir.data, ir.options) ? 1 : 0;
}

void tarva_singleton::tarva_abi_load_device_ir(tarva_abi_device_s* device,
                                               const tarva_abi_ir_header_s* ir_header,
                                               tarva_abi_ir_type ir_type, const void* data,
                                               std::uint64_t data_size, const char* options,
                                               const char* user_label,
                                               tarva_abi_build_result_s** out_result) {
  require(out_result,
          "tarva_abi_load_device_ir : result argument is NULL, but should point to a valid memory "
          "location to return the build result.");
  const auto library_device = bridge_.get_library_object(device);
  const std::string label = user_label ? user_label : "";
  const ir_arguments ir(ir_header, ir_type, data, data_size, options);
  const use_of_compiler use(*this);
  build_result built = library_device->load_ir(ir.header, ir.type, ir.data, ir.options, label);

  auto result = allocate_records<tarva_abi_build_result_s>();
  record_ptr<char> log(built.log.empty() ? nullptr : copy_string(built.log));
  result->program = bridge_.make_handle<tarva_abi_program_s>(std::move(built.program));
  result->build_log = log.release();
  result->success = built.success ? 1 : 0;
  *out_result = result.release();
}

void tarva_singleton::tarva_abi_free_device_array(tarva_abi_device_array_s* array) {
  if (!array)
    return;
  std::free(array->devices);
  std::free(array);
}

void tarva_singleton::tarva_abi_free_build_result(tarva_abi_build_result_s* result) {
  if (!result)
    return;
  std::free(const_cast<char*>(result->build_log));
  std::free(result);
}

void tarva_singleton::tarva_abi_get_kernel(tarva_abi_program_s* program, const char* kernel_name,
                                           tarva_abi_kernel_s** out_kernel) {
  require(out_kernel,
          "tarva_abi_get_kernel: kernel argument is NULL, but expected a memory location to write the "
          "result kernel.");
  require(kernel_name,
          "tarva_abi_get_kernel: kernel name argument is NULL, but expected a kernel name string to "
          "extract the kernel.");
  *out_kernel =
      bridge_.make_handle<tarva_abi_kernel_s>(bridge_.get_library_object(program)->get_kernel(kernel_name));
}

void tarva_singleton::tarva_abi_retain_device(tarva_abi_device_s* device) {
  bridge_.retain(device);
}
void tarva_singleton::tarva_abi_retain_program(tarva_abi_program_s* program) {
  bridge_.retain(program);
}
void tarva_singleton::tarva_abi_retain_kernel(tarva_abi_kernel_s* kernel) {
  bridge_.retain(kernel);
}

void tarva_singleton::tarva_abi_release_device(tarva_abi_device_s* device) {
  bridge_.release(device);
}
void tarva_singleton::tarva_abi_release_program(tarva_abi_program_s* program) {
  bridge_.release(program);
}
void tarva_singleton::tarva_abi_release_kernel(tarva_abi_kernel_s* kernel) {
  bridge_.release(kernel);
}

} // namespace oryn::tarva::library
