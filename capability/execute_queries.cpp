// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The questions that are answered without a kernel: to devices, contexts and programs. Most go to OpenCL as they are;
// what this library knows better it answers itself, in the form that OpenCL would.
#include "capability/executor.h"
#include "capability/kernels.h"

namespace qv {
namespace {

// A device that does not say whether it is available is taken not to be.
[[gnu::noinline]] void answer_for_silent_device(const root_device& device,
                                                get_device_info_record& record) noexcept {
  if (record.device != device.id || device.tells_availability || record.param_name != CL_DEVICE_AVAILABLE)
    return;
  const cl_bool is_available = CL_FALSE;
  answer(record, &is_available, sizeof is_available);
}

} // namespace

// What every start asks for was asked when the machine was looked at. Everything else is the device's to answer, whichever
// capability it is offered under.
void get_device_info(const root_device& device, get_device_info_record& record) noexcept {
  if (record.device == device.id) {
    if (const device_answers::answer* const known = device.answers.find(record.param_name)) {
      answer(record, known->bytes.c_str(), known->size);
      return;
    }
  }
  ask(record, device.cl.get_device_info, static_cast<cl_device_id>(record.device));
  if (record.status != CL_SUCCESS)
    answer_for_silent_device(device, record);
}

// The references are those of the host; OpenCL itself has one, whatever the implementation counts.
void get_context_info(const root_device& device, get_context_info_record& record) {
  if (record.param_name == CL_CONTEXT_REFERENCE_COUNT && record.context != nullptr) {
    const cl_uint references = references_of_context(record.context);
    answer(record, &references, sizeof references);
    return;
  }
  ask(record, device.cl.get_context_info, static_cast<cl_context>(record.context));
}

// References are counted here, and options may have been added to the caller's.
void get_program_info(const root_device& device, get_object_info_record& record) {
  const auto* const program = find_object<program_object>(record.object, record);
  if (program == nullptr)
    return;
  if (record.param_name == CL_PROGRAM_REFERENCE_COUNT) {
    const cl_uint references = program->references();
    answer(record, &references, sizeof references);
  } else if (record.param_name == CL_PROGRAM_BINARY_SIZES || record.param_name == CL_PROGRAM_BINARIES) {
    const oryn::lock_guard guard(program->binaries_lock());
    ask(record, device.cl.get_program_info, program->program);
  } else {
    ask(record, device.cl.get_program_info, program->program);
  }
}

void get_program_build_info(const root_device& device, get_object_device_info_record& record) {
  const auto* const program = find_object<program_object>(record.object, record);
  if (program == nullptr)
    return;
  std::optional<std::string> options;
  if (record.param_name == CL_PROGRAM_BUILD_OPTIONS)
    options = program->callers_options();
  if (options)
    answer(record, options->c_str(), options->size() + 1);
  else
    ask(record, device.cl.get_program_build_info, program->program, static_cast<cl_device_id>(record.device));
}

// What a caller asks of a handle first; it is the same device while that is lost.
void device_of_handle(const root_device& device, device_of_handle_record& record) {
  record.result = device.id;
}

// OpenCL counts sub-devices alone, and the devices here are none.
void retain_or_release_device(const root_device&, object_record& record) {
  record.status = record.object == nullptr ? CL_INVALID_DEVICE : CL_SUCCESS;
}

} // namespace qv
