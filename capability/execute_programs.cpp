#include "capability/build_options.h"
#include "capability/device_binary.h"
#include "capability/executor.h"
#include "capability/spirv_module.h"

#include <cstring>
#include <mutex>

namespace qv {
namespace {

template <typename Record>
bool refuse(Record& record, cl_int status) {
  record.result = nullptr;
  record.status = status;
  return true;
}

// True if the binaries were refused. All binaries of a program are for devices of one implementation.
bool refuse_harmful_binaries(const quirks& known, create_program_with_binary_record& record) {
  if (record.num_devices == 0 || record.device_list == nullptr || record.lengths == nullptr ||
      record.binaries == nullptr)
    return refuse(record, CL_INVALID_VALUE);
  if (lacks_devices(record.device_list, record.num_devices))
    return refuse(record, CL_INVALID_DEVICE);
  for (cl_uint i = 0; i < record.num_devices; ++i) {
    if (record.lengths[i] == 0 || record.binaries[i] == nullptr)
      return refuse(record, CL_INVALID_VALUE);
    if (is_harmless_binary(known, record.binaries[i], record.lengths[i]))
      continue;
    if (record.binary_status != nullptr)
      std::fill_n(record.binary_status, record.num_devices, CL_INVALID_BINARY);
    return refuse(record, CL_INVALID_BINARY);
  }
  return false;
}

// The program that was made to find out whether one can be made.
bool give_kept_program(const root_device& device, create_program_with_builtin_kernels_record& record) {
  if (device.kept == nullptr || record.num_devices != 1 || record.device_list == nullptr ||
      record.device_list[0] != device.id)
    return false;
  record.result =
      device.kept->take_builtin_program(static_cast<cl_context>(record.context), record.kernel_names);
  record.status = CL_SUCCESS;
  return record.result != nullptr;
}

// The loader's entry points, which are the same for all platforms.
std::mutex loader_lock;
opencl_functions loader;

// What is given out for clCreateProgramWithILKHR: that is called without this library.
cl_program CL_API_CALL create_program_with_checked_il(cl_context context, const void* il, std::size_t length,
                                                      cl_int* status) {
  opencl_functions cl;
  {
    const std::lock_guard guard(loader_lock);
    cl = loader;
  }
  if (is_harmless_module(cl, context, il, length))
    return cl.create_program_with_il(context, il, length, status);
  if (status != nullptr)
    *status = CL_INVALID_VALUE;
  return nullptr;
}

} // namespace

void create_program_with_source(const root_device& device, create_program_with_source_record& record) {
  if (record.count == 0 || lacks_entries(record.strings, record.count)) {
    refuse(record, CL_INVALID_VALUE);
    return;
  }
  // OpenCL's own prototype wants strings that it could write to, and leaves them alone.
  create_or_refuse(record, device.cl.create_program_with_source, static_cast<cl_context>(record.context),
                   record.count, const_cast<const char**>(record.strings), record.lengths);
}

void create_program_with_binary(const root_device& device, create_program_with_binary_record& record) {
  if (refuse_harmful_binaries(device.quirks, record))
    return;
  create_or_refuse(record, device.cl.create_program_with_binary, static_cast<cl_context>(record.context),
                   record.num_devices, device_array(record.device_list), record.lengths,
                   const_cast<const unsigned char**>(record.binaries), record.binary_status);
}

void create_program_with_builtin_kernels(const root_device& device,
                                         create_program_with_builtin_kernels_record& record) {
  // Some implementations end the process when there is no name.
  if (record.kernel_names == nullptr || record.kernel_names[0] == '\0') {
    refuse(record, CL_INVALID_VALUE);
    return;
  }
  if (lacks_devices(record.device_list, record.num_devices)) {
    refuse(record, CL_INVALID_DEVICE);
    return;
  }
  if (device.quirks.crashes_on_builtin_kernels) {
    refuse(record, CL_INVALID_OPERATION);
    return;
  }
  if (give_kept_program(device, record))
    return;
  create_or_refuse(record, device.cl.create_program_with_builtin_kernels,
                   static_cast<cl_context>(record.context), record.num_devices,
                   device_array(record.device_list), record.kernel_names);
}

void create_program_with_il(const root_device& device, create_program_with_il_record& record) {
  // Some compilers end the process over a module that is cut short, or too new.
  if (!is_harmless_module(device.cl, static_cast<cl_context>(record.context), record.il, record.length)) {
    refuse(record, CL_INVALID_VALUE);
    return;
  }
  create_or_refuse(record, device.cl.create_program_with_il, static_cast<cl_context>(record.context),
                   record.il, record.length);
}

void set_program_specialization_constant(const root_device& device,
                                         set_program_specialization_constant_record& record) {
  record.status =
      call_or_refuse(device.cl.set_program_specialization_constant, static_cast<cl_program>(record.program),
                     record.spec_id, record.spec_size, record.spec_value);
}

void get_extension_function_address(const root_device& device,
                                    get_extension_function_address_for_platform_record& record) {
  const auto function = device.cl.get_extension_function_address;
  record.result = nullptr;
  if (function == nullptr || record.platform == nullptr || record.func_name == nullptr)
    return;
  record.result = function(static_cast<cl_platform_id>(record.platform), record.func_name);
  // A platform of 2.1 or later has the same as an entry point of its own.
  if (record.result != nullptr && device.cl.create_program_with_il != nullptr &&
      std::strcmp(record.func_name, "clCreateProgramWithILKHR") == 0) {
    const std::lock_guard guard(loader_lock);
    loader = device.cl;
    record.result = reinterpret_cast<void*>(&create_program_with_checked_il);
  }
}

void build_program(const root_device& device, build_program_record& record) {
  if (lacks_devices(record.device_list, record.num_devices)) {
    record.status = CL_INVALID_DEVICE;
    return;
  }
  if (record.options != nullptr && !are_harmless_options(device.quirks, record.options)) {
    record.status = CL_INVALID_BUILD_OPTIONS;
    return;
  }
  static std::mutex one_at_a_time;
  std::unique_lock guard(one_at_a_time, std::defer_lock);
  if (device.quirks.builds_are_not_thread_safe)
    guard.lock();
  using opencl_callback = void(CL_CALLBACK*)(cl_program, void*);
  record.status = call_or_refuse(device.cl.build_program, static_cast<cl_program>(record.program),
                                 record.num_devices, device_array(record.device_list), record.options,
                                 reinterpret_cast<opencl_callback>(record.pfn_notify), record.user_data);
}

} // namespace qv
