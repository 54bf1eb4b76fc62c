#include "capability/executor.h"
#include "capability/utf8.h"

namespace qv {
namespace {

// An argument with a null value that is neither memory nor local memory, as far as the implementation tells.
bool is_null_value(const root_device& device, const set_kernel_arg_record& record) {
  cl_kernel_arg_address_qualifier qualifier = CL_KERNEL_ARG_ADDRESS_GLOBAL;
  const cl_int status = call_or_refuse(device.cl.get_kernel_arg_info, static_cast<cl_kernel>(record.kernel),
                                       record.arg_index, cl_kernel_arg_info{CL_KERNEL_ARG_ADDRESS_QUALIFIER},
                                       sizeof qualifier, &qualifier, static_cast<std::size_t*>(nullptr));
  return status == CL_SUCCESS && qualifier == CL_KERNEL_ARG_ADDRESS_PRIVATE;
}

// The status for an argument without value that would end the process, else CL_SUCCESS.
cl_int check_null_argument(const root_device& device, const set_kernel_arg_record& record) {
  if (device.quirks.asserts_on_large_local_arguments && record.arg_size > device.local_memory_size)
    return CL_OUT_OF_RESOURCES;
  if (device.quirks.reads_null_value_arguments && is_null_value(device, record))
    return CL_INVALID_ARG_VALUE;
  return CL_SUCCESS;
}

} // namespace

void create_kernel(const root_device& device, create_kernel_record& record) {
  if (record.kernel_name == nullptr) {
    record.result = nullptr;
    record.status = CL_INVALID_VALUE;
    return;
  }
  if (device.quirks.needs_utf8 && !is_utf8(record.kernel_name)) {
    record.result = nullptr;
    record.status = CL_INVALID_KERNEL_NAME;
    return;
  }
  create_or_refuse(record, device.cl.create_kernel, static_cast<cl_program>(record.program),
                   record.kernel_name);
}

void create_kernels_in_program(const root_device& device, create_kernels_in_program_record& record) {
  record.status = call_or_refuse(device.cl.create_kernels_in_program, static_cast<cl_program>(record.program),
                                 record.num_kernels, reinterpret_cast<cl_kernel*>(record.kernels),
                                 record.num_kernels_ret);
}

void set_kernel_arg(const root_device& device, set_kernel_arg_record& record) {
  if (record.arg_value == nullptr) {
    record.status = check_null_argument(device, record);
    if (record.status != CL_SUCCESS)
      return;
  }
  record.status = call_or_refuse(device.cl.set_kernel_arg, static_cast<cl_kernel>(record.kernel),
                                 record.arg_index, record.arg_size, record.arg_value);
}

} // namespace qv
