// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The exported functions for devices, programs, and kernels up to their launch, and the versions of the library.
#include "abi/entry_point.h"
#include "objects/intermediate_representation.h"
#include "objects/library_device.h"
#include "objects/library_program.h"

#include <cstdlib>
#include <memory>
#include <vector>

using namespace oryn::tarva::library;

namespace {

static_assert(has_words<tarva_abi_device_array_s>(2));
static_assert(offsetof(tarva_abi_device_array_s, devices) == 1 * word);
static_assert(has_words<tarva_abi_build_result_s>(3));
static_assert(offsetof(tarva_abi_build_result_s, build_log) == 1 * word);
static_assert(has_words<tarva_abi_specialization_constant_s>(3));
static_assert(offsetof(tarva_abi_specialization_constant_s, value) == 2 * word);
static_assert(has_words<tarva_abi_ir_header_s>(3));
static_assert(offsetof(tarva_abi_ir_header_s, constants) == 1 * word);
static_assert(TARVA_ABI_IR_SOURCE_1_0 == 1 && TARVA_ABI_IR_SPIR_V == 8 && TARVA_ABI_IR_DEVICE_BINARY == 9);
static_assert(TARVA_ABI_IR_HEADER_SPECIALIZATION_CONSTANTS == 2);

// NULL stands for no data, whatever the size says.
std::vector<std::uint8_t> copy_data(const void* data, std::uint64_t size) {
  if (!data || size == 0)
    return {};
  require_countable<std::uint8_t>(size, "bytes of data");
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  return std::vector<std::uint8_t>(bytes, bytes + size);
}

// Unlike a label, options must be given; an empty string is enough.
std::string copy_options(const char* options) {
  if (!options)
    throw std::logic_error("Attempting to make a string of the options, but the options argument is NULL.");
  return options;
}

// The constants copy their values, so the caller's arrays are not needed after the call.
std::shared_ptr<const ir_header> make_constant_array(const tarva_abi_ir_header_s& header) {
  if (!header.constants && header.count != 0)
    throw std::logic_error(
        "Attempting to read specialization constants, but the array of constants is NULL.");
  require_countable<spirv_specialization_constant>(header.count, "specialization constants");
  std::vector<spirv_specialization_constant> constants;
  constants.reserve(header.count);
  for (std::uint64_t index = 0; index < header.count; ++index) {
    const tarva_abi_specialization_constant_s& each = header.constants[index];
    constants.emplace_back(each.id, to_data_type(each.data_type), each.value);
  }
  return std::make_shared<spirv_specialization_constant_array>(std::move(constants));
}

// NULL means the same as a record without content.
std::shared_ptr<const ir_header> make_ir_header(const tarva_abi_ir_header_s* header) {
  if (!header || header->kind == TARVA_ABI_IR_HEADER_EMPTY)
    return std::make_shared<empty_ir_header>();
  if (header->kind == TARVA_ABI_IR_HEADER_SPECIALIZATION_CONSTANTS)
    return make_constant_array(*header);
  throw std::logic_error("Unknown IR header type.");
}

// The caller's description of a program, checked and copied in the order of the members.
struct ir_arguments {
  ir_arguments(const tarva_abi_ir_header_s* header_record, tarva_abi_ir_type ir_type, const void* ir_data,
               std::uint64_t data_size, const char* build_options)
      : data(copy_data(ir_data, data_size)), options(copy_options(build_options)), type(to_ir_type(ir_type)),
        header(make_ir_header(header_record)) {}

  std::vector<std::uint8_t> data;
  std::string options;
  std::uint64_t type;
  std::shared_ptr<const ir_header> header;
};

// Each part frees itself if a later one cannot be made. The handle is made last but for what cannot fail.
tarva_abi_build_result_s* make_build_result(abi_bridge& bridge, build_result built) {
  auto result = allocate_records<tarva_abi_build_result_s>();
  record_ptr<char> log(built.log.empty() ? nullptr : copy_string(built.log));
  result->program = bridge.make_handle<tarva_abi_program_s>(std::move(built.program));
  result->build_log = log.release();
  result->success = built.success ? 1 : 0;
  return result.release();
}

} // namespace

// The versions: these two take no reserved argument and do not start the library.

uint64_t tarva_abi_get_abi_version(void) {
  return 0;
}

uint64_t tarva_abi_get_library_version(void) {
  return 0;
}

// Devices. Each call makes new handles, also for devices that have some.

tarva_abi_result tarva_abi_get_devices(void*, tarva_abi_device_array_s** out_devices,
                                       tarva_abi_error_s** out_error) {
  return call_with_result(out_error, [&](tarva_singleton& library) {
    require(out_devices,
            "tarva_abi_get_devices: devices argument is NULL, but expected a memory location to return "
            "the device array.");
    *out_devices = library.bridge.make_device_array(library.get_devices());
  });
}

tarva_abi_result tarva_abi_get_device_root_property(void*, tarva_abi_device_s* device,
                                                    tarva_abi_property_s** out_property,
                                                    tarva_abi_error_s** out_error) {
  return get_root_property(
      out_error, device, out_property,
      "tarva_abi_get_device_root_property: property argument is NULL, but expected a memory location to write the result property.");
}

void tarva_abi_retain_device(void*, tarva_abi_device_s* device) {
  call_without_result([&](tarva_singleton& library) { library.bridge.retain(device); });
}

void tarva_abi_release_device(void*, tarva_abi_device_s* device) {
  call_without_result([&](tarva_singleton& library) { library.bridge.release(device); });
}

// The handles in the array are the caller's, and stay alive.
void tarva_abi_free_device_array(void*, tarva_abi_device_array_s* array) {
  call_without_result([&](tarva_singleton&) {
    if (!array)
      return;
    std::free(array->devices);
    std::free(array);
  });
}

// Programs. A program keeps its device alive, so their handles may be given up in any order.

tarva_abi_result tarva_abi_get_builtin_program(void*, tarva_abi_device_s* device,
                                               tarva_abi_program_s** out_program,
                                               tarva_abi_error_s** out_error) {
  return call_with_result(out_error, [&](tarva_singleton& library) {
    require(
        out_program,
        "tarva_abi_get_builtin_program: program argument is NULL, but expected a memory location to write the "
        "result program.");
    abi_bridge& bridge = library.bridge;
    *out_program =
        bridge.make_handle<tarva_abi_program_s>(bridge.get_library_object(device)->get_builtin_program());
  });
}

// That a device cannot take the program is an answer, not a failure.
tarva_abi_result tarva_abi_check_device_ir_support(void*, tarva_abi_device_s* device,
                                                   tarva_abi_ir_header_s* ir_header,
                                                   tarva_abi_ir_type ir_type, const void* data,
                                                   uint64_t data_size, const char* options,
                                                   uint64_t* out_supported, tarva_abi_error_s** out_error) {
  return call_with_result(out_error, [&](tarva_singleton& library) {
    require(out_supported,
            "tarva_abi_check_device_ir_support : supported argument is NULL, but should point to a "
            "valid memory location to return a result.");
    const auto library_device = library.bridge.get_library_object(device);
    const ir_arguments ir(ir_header, ir_type, data, data_size, options);
    *out_supported = library_device->is_ir_supported(ir.header, ir.type, ir.data, ir.options) ? 1 : 0;
  });
}

// Neither is a failed build: the caller gets an empty program, and the log that says why.
tarva_abi_result tarva_abi_load_device_ir(void*, tarva_abi_device_s* device, tarva_abi_ir_header_s* ir_header,
                                          tarva_abi_ir_type ir_type, const void* data, uint64_t data_size,
                                          const char* options, const char* user_label,
                                          tarva_abi_build_result_s** out_result,
                                          tarva_abi_error_s** out_error) {
  return call_with_result(out_error, [&](tarva_singleton& library) {
    require(out_result,
            "tarva_abi_load_device_ir : result argument is NULL, but should point to a valid memory "
            "location to return the build result.");
    const auto library_device = library.bridge.get_library_object(device);
    const std::string label = user_label ? user_label : "";
    const ir_arguments ir(ir_header, ir_type, data, data_size, options);
    const use_of_compiler use;
    *out_result = make_build_result(library.bridge,
                                    library_device->load_ir(ir.header, ir.type, ir.data, ir.options, label));
  });
}

tarva_abi_result tarva_abi_get_program_root_property(void*, tarva_abi_program_s* program,
                                                     tarva_abi_property_s** out_property,
                                                     tarva_abi_error_s** out_error) {
  return get_root_property(
      out_error, program, out_property,
      "tarva_abi_get_program_root_property: property argument is NULL, but expected a memory location to write the result property.");
}

void tarva_abi_retain_program(void*, tarva_abi_program_s* program) {
  call_without_result([&](tarva_singleton& library) { library.bridge.retain(program); });
}

void tarva_abi_release_program(void*, tarva_abi_program_s* program) {
  call_without_result([&](tarva_singleton& library) { library.bridge.release(program); });
}

// So does the handle of the program.
void tarva_abi_free_build_result(void*, tarva_abi_build_result_s* result) {
  call_without_result([&](tarva_singleton&) {
    if (!result)
      return;
    std::free(const_cast<char*>(result->build_log));
    std::free(result);
  });
}

// Kernels. Each call makes a new kernel object, which keeps its program alive.

tarva_abi_result tarva_abi_get_kernel(void*, tarva_abi_program_s* program, const char* kernel_name,
                                      tarva_abi_kernel_s** out_kernel, tarva_abi_error_s** out_error) {
  return call_with_result(out_error, [&](tarva_singleton& library) {
    require(out_kernel,
            "tarva_abi_get_kernel: kernel argument is NULL, but expected a memory location to write the "
            "result kernel.");
    require(kernel_name,
            "tarva_abi_get_kernel: kernel name argument is NULL, but expected a kernel name string to "
            "extract the kernel.");
    abi_bridge& bridge = library.bridge;
    *out_kernel =
        bridge.make_handle<tarva_abi_kernel_s>(bridge.get_library_object(program)->get_kernel(kernel_name));
  });
}

tarva_abi_result tarva_abi_get_kernel_root_property(void*, tarva_abi_kernel_s* kernel,
                                                    tarva_abi_property_s** out_property,
                                                    tarva_abi_error_s** out_error) {
  return get_root_property(
      out_error, kernel, out_property,
      "tarva_abi_get_kernel_root_property: property argument is NULL, but expected a memory location to write the result property.");
}

void tarva_abi_retain_kernel(void*, tarva_abi_kernel_s* kernel) {
  call_without_result([&](tarva_singleton& library) { library.bridge.retain(kernel); });
}

void tarva_abi_release_kernel(void*, tarva_abi_kernel_s* kernel) {
  call_without_result([&](tarva_singleton& library) { library.bridge.release(kernel); });
}
