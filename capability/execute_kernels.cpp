#include "capability/executor.h"
#include "capability/kernels.h"
#include "capability/utf8.h"

#include <algorithm>

namespace qv {

void create_kernel(const root_device& device, create_kernel_record& record) {
  auto* const program = static_cast<program_object*>(record.program);
  record.result = nullptr;
  if (program == nullptr)
    record.status = CL_INVALID_PROGRAM;
  else if (record.kernel_name == nullptr)
    record.status = CL_INVALID_VALUE;
  else if (device.quirks.needs_utf8 && !is_utf8(record.kernel_name))
    record.status = CL_INVALID_KERNEL_NAME;
  else
    record.result = kernel_object::make(device, *program, record.kernel_name, record.status);
}

void create_kernels_in_program(const root_device& device, create_kernels_in_program_record& record) {
  auto* const program = static_cast<program_object*>(record.program);
  if (program == nullptr) {
    record.status = CL_INVALID_PROGRAM;
    return;
  }
  cl_uint found = 0;
  record.status = call_or_refuse(device.cl.create_kernels_in_program, program->program(), record.num_kernels,
                                 reinterpret_cast<cl_kernel*>(record.kernels), &found);
  if (record.status != CL_SUCCESS)
    return;
  if (record.num_kernels_ret != nullptr)
    *record.num_kernels_ret = found;
  if (record.kernels == nullptr)
    return;
  const std::uint32_t count = std::min(record.num_kernels, found);
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

void release_kernel(const root_device& device, object_record& record) {
  auto* const kernel = static_cast<kernel_object*>(record.object);
  record.status = kernel == nullptr ? CL_INVALID_KERNEL : kernel->release(device.cl);
}

void set_kernel_arg(const root_device& device, set_kernel_arg_record& record) {
  auto* const kernel = static_cast<kernel_object*>(record.kernel);
  record.status = kernel == nullptr
                      ? CL_INVALID_KERNEL
                      : kernel->set_argument(device, record.arg_index, record.arg_size, record.arg_value);
}

} // namespace qv
