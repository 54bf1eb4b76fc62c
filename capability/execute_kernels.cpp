// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Kernels, and the questions to them. What a kernel is, and what it remembers, is in kernels.h.
#include "capability/executor.h"
#include "capability/kernels.h"
#include "capability/opencl_queries.h"
#include "capability/program_checks.h"

#include <cstring>

namespace qv {
namespace {

// OpenCL's kernel, to be asked. One that could not be made is made anew for each question, since the refusal may have
// passed.
class kernel_to_ask {
public:
  kernel_to_ask(const root_device& device, const kernel_object& object)
      : cl_(device.cl), kernel_(object.kernel) {
    if (kernel_ == nullptr && object.program != nullptr)
      kernel_ = made_ =
          make_or_refuse(status_, cl_.create_kernel, object.program->program, object.name->c_str());
    else if (kernel_ == nullptr)
      status_ = object.failure();
  }
  kernel_to_ask(const kernel_to_ask&) = delete;
  kernel_to_ask& operator=(const kernel_to_ask&) = delete;
  ~kernel_to_ask() {
    if (made_ != nullptr)
      static_cast<void>(call_or_refuse(cl_.release_kernel, made_));
  }

  template <class Record, class Query, class... Objects>
  void ask(Record& record, Query query, Objects... about) const {
    record.status = status_;
    if (kernel_ != nullptr)
      qv::ask(record, query, kernel_, about...);
  }

private:
  const opencl_functions& cl_;
  cl_kernel kernel_;
  cl_kernel made_ = nullptr;
  cl_int status_ = CL_SUCCESS;
};

// Where an implementation tells less than what runs, the limit of the device is the true one.
void answer_largest_group(const root_device& device, get_object_device_info_record& record) {
  const std::size_t size = device_number(device.cl, device.id, CL_DEVICE_MAX_WORK_GROUP_SIZE).value_or(0);
  if (size != 0)
    answer(record, &size, sizeof size);
}

// Where the attributes alone tell a size that was fixed. An answer of another length than that of a size is left alone.
void complete_required_size(const root_device& device, const kernel_object& kernel,
                            get_object_device_info_record& record) {
  group_size told{};
  std::memcpy(&told, record.param_value, std::min(record.param_value_size, sizeof told));
  if (told != group_size{} || record.param_value_size < sizeof told)
    return;
  told = kernel.required_size(device.cl);
  std::memcpy(record.param_value, &told, sizeof told);
}

} // namespace

// What is not known of a program before it is built, OpenCL tells: such a name, or no build at all.
void create_kernel(const root_device& device, create_kernel_record& record) {
  record.result = nullptr;
  auto* const program = find_object<program_object>(record.program, record);
  if (program == nullptr)
    return;
  if (record.kernel_name == nullptr)
    record.status = CL_INVALID_VALUE;
  else if ((device.quirks.needs_utf8 && !is_utf8(record.kernel_name)) ||
           std::strlen(record.kernel_name) > device.quirks.longest_kernel_name)
    record.status = CL_INVALID_KERNEL_NAME;
  else
    record.result = kernel_object::make(device, *program, record.kernel_name, record.status);
}

// OpenCL writes its own kernels to the caller's array first; each is then replaced by an object of this library.
void create_kernels_in_program(const root_device& device, create_kernels_in_program_record& record) {
  auto* const program = find_object<program_object>(record.program, record);
  if (program == nullptr)
    return;
  cl_uint found = 0;
  record.status = call_or_refuse(device.cl.create_kernels_in_program, program->program, record.num_kernels,
                                 reinterpret_cast<cl_kernel*>(record.kernels), &found);
  if (record.status != CL_SUCCESS)
    return;
  if (record.num_kernels_ret != nullptr)
    *record.num_kernels_ret = found;
  if (record.kernels == nullptr)
    return;
  const std::uint32_t count = std::min(record.num_kernels, found);
  // All or none: who is told of a failure has no kernels to release.
  cl_int status = CL_SUCCESS;
  for (std::uint32_t i = 0; i < count; ++i) {
    record.kernels[i] =
        kernel_object::wrap(device, *program, static_cast<cl_kernel>(record.kernels[i]), status);
    if (status != CL_SUCCESS)
      record.status = status;
  }
  for (std::uint32_t i = 0; record.status != CL_SUCCESS && i < count; ++i)
    if (auto* const made = static_cast<kernel_object*>(record.kernels[i]))
      made->release(device.cl);
}

// All that there is to check, the kernel knows.
void set_kernel_arg(const root_device& device, set_kernel_arg_record& record) {
  if (auto* const kernel = find_object<kernel_object>(record.kernel, record))
    record.status = kernel->set_argument(device, record.arg_index, record.arg_size, record.arg_value);
}

// The program and the name of a kernel are known here, so that no launch can fail over these questions, and the program is
// told by the handle that the caller knows.
void get_kernel_info(const root_device& device, get_object_info_record& record) {
  const auto* const kernel = find_object<kernel_object>(record.object, record);
  if (kernel == nullptr)
    return;
  void* const program = kernel->program;
  const bool has_name = program != nullptr && !kernel->name->empty();
  if (record.param_name == CL_KERNEL_PROGRAM && program != nullptr)
    answer(record, &program, sizeof program);
  else if (record.param_name == CL_KERNEL_FUNCTION_NAME && has_name)
    answer(record, kernel->name->c_str(), kernel->name->size() + 1);
  else if (record.param_name == CL_KERNEL_ATTRIBUTES && device.quirks.tells_wrong_kernel_attributes)
    answer(record, "", 1);
  else
    kernel_to_ask(device, *kernel).ask(record, device.cl.get_kernel_info);
}

// An answer that an implementation gives wrongly is put right once it is there, so that refusals stay OpenCL's.
void get_kernel_work_group_info(const root_device& device, get_object_device_info_record& record) {
  const auto* const kernel = find_object<kernel_object>(record.object, record);
  if (kernel == nullptr)
    return;
  kernel_to_ask(device, *kernel)
      .ask(record, device.cl.get_kernel_work_group_info, static_cast<cl_device_id>(record.device));
  if (record.status != CL_SUCCESS || record.param_value == nullptr)
    return;
  if (record.param_name == CL_KERNEL_WORK_GROUP_SIZE && device.quirks.understates_group_sizes)
    answer_largest_group(device, record);
  if (record.param_name == CL_KERNEL_COMPILE_WORK_GROUP_SIZE && !device.quirks.tells_wrong_kernel_attributes)
    complete_required_size(device, *kernel, record);
}

} // namespace qv
