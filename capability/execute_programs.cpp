// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Programs: made of source, binaries, built-in kernels or SPIR-V, and built.
//
// Compilers run in the process of the host, so nothing reaches one that is known to end it. Programs that are given out are
// objects of this library.
#include "capability/executor.h"
#include "capability/kept_objects.h"
#include "capability/kernels.h"
#include "capability/program_checks.h"

#include <memory>
#include <optional>
#include <string>

namespace qv {
namespace {

// CL_SUCCESS, or why OpenCL is not to see these binaries. All binaries of a program are for devices of one implementation.
cl_int check_binaries(const quirks& known, const create_program_with_binary_record& record) {
  if (record.num_devices == 0 || record.device_list == nullptr || record.lengths == nullptr ||
      record.binaries == nullptr)
    return CL_INVALID_VALUE;
  if (lacks_devices(record.device_list, record.num_devices))
    return CL_INVALID_DEVICE;
  for (cl_uint i = 0; i < record.num_devices; ++i) {
    if (record.lengths[i] == 0 || record.binaries[i] == nullptr)
      return CL_INVALID_VALUE;
    if (!is_harmless_binary(known, record.binaries[i], record.lengths[i]))
      return CL_INVALID_BINARY;
  }
  return CL_SUCCESS;
}

// The program that was made to find out whether one can be made, if it is for this device alone and has all the kernels.
bool give_kept_program(const root_device& device, create_program_with_builtin_kernels_record& record) {
  if (device.kept == nullptr || record.num_devices != 1 || record.device_list == nullptr ||
      record.device_list[0] != device.id)
    return false;
  record.result =
      device.kept->take_builtin_program(static_cast<cl_context>(record.context), record.kernel_names);
  record.status = CL_SUCCESS;
  return record.result != nullptr;
}

// Tells the caller of a build that it has ended, by the caller's name of the program.
struct build_notification {
  program_callback notify;
  program_object* program;
  void* user_data;
};

// What was allocated for the callback goes with its one call.
void CL_CALLBACK notify_of_build(cl_program, void* user_data) {
  const std::unique_ptr<build_notification> owned(static_cast<build_notification*>(user_data));
  owned->notify(owned->program, owned->user_data);
}

// The options with that of the implementation's quirks, if it has one. In front, since a last option that lacks its value
// would swallow it. Nothing if the caller's will do.
std::optional<std::string> completed_options(const root_device& device, const program_object& program,
                                             const char* options) {
  const char* const added = device.quirks.build_option;
  const std::string given = options == nullptr ? "" : options;
  if (added == nullptr || !program.is_from_source || given.find(added) != std::string::npos)
    return std::nullopt;
  return given.empty() ? added : added + (' ' + given);
}

// Why a build must not reach OpenCL, or CL_SUCCESS.
cl_int check_build(const quirks& known, const build_program_record& record) {
  if (lacks_devices(record.device_list, record.num_devices))
    return CL_INVALID_DEVICE;
  return record.options == nullptr || are_harmless_options(known, record.options) ? CL_SUCCESS
                                                                                  : CL_INVALID_BUILD_OPTIONS;
}

// Has OpenCL build the program, and again without the option that was added, if it was refused: other versions of the
// implementation may not know it. A caller with a callback is not told twice, so there the refusal stays.
cl_int build_with_options(const root_device& device, const build_program_record& record, cl_program program,
                          const char* completed, build_notification* notification) {
  const auto build = [&](const char* options) {
    return call_or_refuse(
        device.cl.build_program, program, record.num_devices, device_array(record.device_list), options,
        notification == nullptr ? nullptr : &notify_of_build, static_cast<void*>(notification));
  };
  const cl_int status = build(completed == nullptr ? record.options : completed);
  const bool is_refused = completed != nullptr && status == CL_INVALID_BUILD_OPTIONS;
  return is_refused && notification == nullptr ? build(record.options) : status;
}

// For implementations that build one program at a time. The lock is held while OpenCL is called, and while it calls back, so
// every other lock of this library may be taken under it.
template <class Build>
cl_int build_alone(Build build) {
  static oryn::mutex one_at_a_time;
  const oryn::lock_guard guard(one_at_a_time);
  return build();
}

} // namespace

// Texts may be without a zero at the end where their lengths are given; OpenCL reads as much as it is told to.
void create_program_with_source(const root_device& device, create_program_with_source_record& record) {
  if (record.count == 0 || lacks_entries(record.strings, record.count)) {
    refuse(record, CL_INVALID_VALUE);
    return;
  }
  // OpenCL's own prototype wants strings that it could write to, and leaves them alone.
  create_or_refuse(record, device.cl.create_program_with_source, static_cast<cl_context>(record.context),
                   record.count, const_cast<const char**>(record.strings), record.lengths);
  wrap_created<program_object>(record, device.cl.release_program, true);
}

// The status of each binary is the caller's to look at only if there is an array for it. All have the one refusal here, since
// OpenCL has not looked at any.
void create_program_with_binary(const root_device& device, create_program_with_binary_record& record) {
  if (const cl_int status = check_binaries(device.quirks, record); status != CL_SUCCESS) {
    if (status == CL_INVALID_BINARY && record.binary_status != nullptr)
      std::fill_n(record.binary_status, record.num_devices, status);
    refuse(record, status);
    return;
  }
  create_or_refuse(record, device.cl.create_program_with_binary, static_cast<cl_context>(record.context),
                   record.num_devices, device_array(record.device_list), record.lengths,
                   const_cast<const unsigned char**>(record.binaries), record.binary_status);
  wrap_created<program_object>(record, device.cl.release_program, false);
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
  wrap_created<program_object>(record, device.cl.release_program, false);
}

void create_program_with_il(const root_device& device, create_program_with_il_record& record) {
  // Some compilers end the process over a module that is cut short, or too new.
  if (!is_harmless_module(device.cl, static_cast<cl_context>(record.context), record.il, record.length)) {
    refuse(record, CL_INVALID_VALUE);
    return;
  }
  create_or_refuse(record, device.cl.create_program_with_il, static_cast<cl_context>(record.context),
                   record.il, record.length);
  wrap_created<program_object>(record, device.cl.release_program, false);
}

// A program in its wrapper, and otherwise the call itself: OpenCL checks the size of the value against the constant's.
void set_program_specialization_constant(const root_device& device,
                                         set_program_specialization_constant_record& record) {
  if (const auto* const program = find_object<program_object>(record.program, record))
    record.status = call_or_refuse(device.cl.set_program_specialization_constant, program->program,
                                   record.spec_id, record.spec_size, record.spec_value);
}

// A program may be built again as long as no kernel of it is in use. Some implementations do not check that and crash later; and
// none knows that those kept here are not in use. The options are remembered before the build, as one with a callback may end
// on another thread before this returns.
void build_program(const root_device& device, build_program_record& record) {
  auto* const program = find_object<program_object>(record.program, record);
  if (program == nullptr)
    return;
  record.status = check_build(device.quirks, record);
  if (record.status != CL_SUCCESS)
    return;
  const auto completed = completed_options(device, *program, record.options);
  std::unique_ptr<build_notification> notification;
  if (record.pfn_notify != nullptr)
    notification = std::make_unique<build_notification>(
        build_notification{record.pfn_notify, program, record.user_data});
  if (!program->forget_kernels(device.cl)) {
    record.status = CL_INVALID_OPERATION;
    return;
  }
  const char* const callers = record.options == nullptr ? "" : record.options;
  program->set_callers_options(completed ? callers : nullptr);

  const auto build = [&] {
    return build_with_options(device, record, program->program, completed ? completed->c_str() : nullptr,
                              notification.get());
  };
  record.status = device.quirks.builds_are_not_thread_safe ? build_alone(build) : build();
  // Whether the callback of a build that has failed at once is called is the implementation's secret: rather keep the few
  // bytes than free them under it.
  static_cast<void>(notification.release());
}

} // namespace qv
