#include "capability/build_options.h"
#include "capability/device_binary.h"
#include "capability/executor.h"
#include "capability/il_extension.h"
#include "capability/kernels.h"
#include "capability/spirv_module.h"

#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>

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

// Puts an object of this library around the program that was made, if one was.
template <typename Record>
void wrap_program(const root_device& device, Record& record, bool is_from_source = false) {
  if (record.status != CL_SUCCESS)
    return;
  auto* const made = static_cast<cl_program>(record.result);
  record.result = new (std::nothrow) program_object(made, is_from_source);
  if (record.result != nullptr)
    return;
  static_cast<void>(call_or_refuse(device.cl.release_program, made));
  record.status = CL_OUT_OF_HOST_MEMORY;
}

// Tells the caller of a build that it has ended, by the caller's name of the program.
struct build_notification {
  program_callback notify;
  program_object* program;
  void* user_data;
};

void CL_CALLBACK notify_of_build(cl_program, void* user_data) {
  const std::unique_ptr<build_notification> owned(static_cast<build_notification*>(user_data));
  owned->notify(owned->program, owned->user_data);
}

// With the option in front, which a last one that lacks its value would swallow.
std::optional<std::string> completed_options(const root_device& device, const program_object& program,
                                             const char* options) {
  const char* const added = device.quirks.build_option;
  const std::string given = options == nullptr ? "" : options;
  if (added == nullptr || !program.is_from_source() || given.find(added) != std::string::npos)
    return std::nullopt;
  return given.empty() ? added : added + (' ' + given);
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
  wrap_program(device, record, true);
}

void create_program_with_binary(const root_device& device, create_program_with_binary_record& record) {
  if (refuse_harmful_binaries(device.quirks, record))
    return;
  create_or_refuse(record, device.cl.create_program_with_binary, static_cast<cl_context>(record.context),
                   record.num_devices, device_array(record.device_list), record.lengths,
                   const_cast<const unsigned char**>(record.binaries), record.binary_status);
  wrap_program(device, record);
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
  if (!give_kept_program(device, record))
    create_or_refuse(record, device.cl.create_program_with_builtin_kernels,
                     static_cast<cl_context>(record.context), record.num_devices,
                     device_array(record.device_list), record.kernel_names);
  wrap_program(device, record);
}

void create_program_with_il(const root_device& device, create_program_with_il_record& record) {
  // Some compilers end the process over a module that is cut short, or too new.
  if (!is_harmless_module(device.cl, static_cast<cl_context>(record.context), record.il, record.length)) {
    refuse(record, CL_INVALID_VALUE);
    return;
  }
  create_or_refuse(record, device.cl.create_program_with_il, static_cast<cl_context>(record.context),
                   record.il, record.length);
  wrap_program(device, record);
}

void set_program_specialization_constant(const root_device& device,
                                         set_program_specialization_constant_record& record) {
  const auto* const program = static_cast<const program_object*>(record.program);
  record.status = program == nullptr
                      ? CL_INVALID_PROGRAM
                      : call_or_refuse(device.cl.set_program_specialization_constant, program->program(),
                                       record.spec_id, record.spec_size, record.spec_value);
}

void get_extension_function_address(const root_device& device,
                                    get_extension_function_address_for_platform_record& record) {
  const auto function = device.cl.get_extension_function_address;
  record.result = nullptr;
  if (function == nullptr || record.platform == nullptr || record.func_name == nullptr)
    return;
  const auto platform = static_cast<cl_platform_id>(record.platform);
  record.result = function(platform, record.func_name);
  if (record.result == nullptr || std::strcmp(record.func_name, "clCreateProgramWithILKHR") != 0)
    return;
  // A platform of 2.1 or later has the same as an entry point of its own.
  void* const core = reinterpret_cast<void*>(device.cl.create_program_with_il);
  record.result = checked_il_function(device, platform, core != nullptr ? core : record.result);
}

void build_program(const root_device& device, build_program_record& record) {
  auto* const program = static_cast<program_object*>(record.program);
  if (program == nullptr) {
    record.status = CL_INVALID_PROGRAM;
    return;
  }
  if (lacks_devices(record.device_list, record.num_devices)) {
    record.status = CL_INVALID_DEVICE;
    return;
  }
  if (record.options != nullptr && !are_harmless_options(device.quirks, record.options)) {
    record.status = CL_INVALID_BUILD_OPTIONS;
    return;
  }
  const auto completed = completed_options(device, *program, record.options);
  std::unique_ptr<build_notification> notification;
  if (record.pfn_notify != nullptr)
    notification = std::make_unique<build_notification>(
        build_notification{record.pfn_notify, program, record.user_data});
  program->set_given_options(completed ? (record.options == nullptr ? "" : record.options) : nullptr);
  program->forget_kernels(device.cl);

  static std::mutex one_at_a_time;
  std::unique_lock guard(one_at_a_time, std::defer_lock);
  if (device.quirks.builds_are_not_thread_safe)
    guard.lock();
  const auto build = [&](const char* options) {
    return call_or_refuse(device.cl.build_program, program->program(), record.num_devices,
                          device_array(record.device_list), options,
                          notification ? &notify_of_build : nullptr, static_cast<void*>(notification.get()));
  };
  record.status = build(completed ? completed->c_str() : record.options);
  // Other versions of it may not know the option. Nobody is told twice.
  if (completed && record.status == CL_INVALID_BUILD_OPTIONS && !notification)
    record.status = build(record.options);
  // Whether the callback of a build that has failed at once is called is the implementation's secret: rather keep the few
  // bytes than free them under it.
  static_cast<void>(notification.release());
}

void retain_program(const root_device&, object_record& record) {
  auto* const program = static_cast<program_object*>(record.object);
  record.status = program == nullptr ? CL_INVALID_PROGRAM : CL_SUCCESS;
  if (program != nullptr)
    program->retain();
}

void release_program(const root_device& device, object_record& record) {
  auto* const program = static_cast<program_object*>(record.object);
  record.status = program == nullptr ? CL_INVALID_PROGRAM : program->release(device.cl);
}

} // namespace qv
