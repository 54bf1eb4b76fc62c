#include "capability/device_queries.h"
#include "capability/executor.h"

#include <cstring>

namespace qv {
namespace {

// Answers a query in OpenCL's way, with a value of `size` bytes.
template <typename Record>
void answer(Record& record, const void* value, std::size_t size) {
  if (record.param_value != nullptr) {
    if (record.param_value_size < size) {
      record.status = CL_INVALID_VALUE;
      return;
    }
    std::memcpy(record.param_value, value, size);
  }
  if (record.param_value_size_ret != nullptr)
    *record.param_value_size_ret = size;
  record.status = CL_SUCCESS;
}

// What a device must answer even if it knows nothing of it, because every start asks it.
void answer_for_device(const root_device& device, get_device_info_record& record) {
  constexpr cl_uint no_queue = 0;
  if (record.param_name == CL_DEVICE_QUEUE_ON_DEVICE_PREFERRED_SIZE)
    answer(record, &no_queue, sizeof no_queue);
  if (record.param_name == CL_DEVICE_BUILT_IN_KERNELS && device.version < opencl_version{1, 2})
    answer(record, "", 1);
}

void answer_largest_group(const root_device& device, get_object_device_info_record& record) {
  if (const std::size_t size = device_number(device.cl, device.id, CL_DEVICE_MAX_WORK_GROUP_SIZE); size != 0)
    answer(record, &size, sizeof size);
}

} // namespace

void get_device_info(const root_device& device, get_device_info_record& record) {
  const std::string* const text = record.device == device.id ? device.find_text(record.param_name) : nullptr;
  if (text != nullptr) {
    answer(record, text->c_str(), text->size() + 1);
    return;
  }
  record.status =
      call_or_refuse(device.cl.get_device_info, static_cast<cl_device_id>(record.device), record.param_name,
                     record.param_value_size, record.param_value, record.param_value_size_ret);
  if (record.status == CL_INVALID_VALUE)
    answer_for_device(device, record);
}

void get_context_info(const root_device& device, get_context_info_record& record) {
  record.status =
      call_or_refuse(device.cl.get_context_info, static_cast<cl_context>(record.context), record.param_name,
                     record.param_value_size, record.param_value, record.param_value_size_ret);
}

void get_kernel_info(const root_device& device, get_object_info_record& record) {
  if (device.quirks.kernel_attributes_dangle && record.param_name == CL_KERNEL_ATTRIBUTES &&
      record.object != nullptr) {
    answer(record, "", 1);
    return;
  }
  record.status =
      call_or_refuse(device.cl.get_kernel_info, static_cast<cl_kernel>(record.object), record.param_name,
                     record.param_value_size, record.param_value, record.param_value_size_ret);
}

void get_kernel_work_group_info(const root_device& device, get_object_device_info_record& record) {
  record.status = call_or_refuse(device.cl.get_kernel_work_group_info, static_cast<cl_kernel>(record.object),
                                 static_cast<cl_device_id>(record.device), record.param_name,
                                 record.param_value_size, record.param_value, record.param_value_size_ret);
  if (record.status == CL_SUCCESS && record.param_name == CL_KERNEL_WORK_GROUP_SIZE &&
      device.quirks.understates_group_sizes)
    answer_largest_group(device, record);
}

void device_of_handle(const root_device& device, device_of_handle_record& record) {
  record.result = device.id;
}

// The devices here are no sub-devices, which alone are counted; so a platform that has no counting needs
// none.
void retain_device(const root_device& device, object_record& record) {
  const auto function = device.cl.retain_device;
  record.status = function == nullptr ? CL_SUCCESS : function(static_cast<cl_device_id>(record.object));
}

void release_device(const root_device& device, object_record& record) {
  const auto function = device.cl.release_device;
  record.status = function == nullptr ? CL_SUCCESS : function(static_cast<cl_device_id>(record.object));
}

} // namespace qv
