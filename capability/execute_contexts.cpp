#include "capability/executor.h"

namespace qv {
namespace {

constexpr cl_command_queue_properties host_queue_bits =
    CL_QUEUE_OUT_OF_ORDER_EXEC_MODE_ENABLE | CL_QUEUE_PROFILING_ENABLE;

// The value of CL_QUEUE_PROPERTIES in a zero-terminated list of names and values.
cl_command_queue_properties queue_bits(const std::uint64_t* properties) {
  for (; properties != nullptr && properties[0] != 0; properties += 2)
    if (properties[0] == CL_QUEUE_PROPERTIES)
      return properties[1];
  return 0;
}

} // namespace

void create_context(const root_device& device, create_context_record& record) {
  create_or_refuse(record, device.cl.create_context,
                   reinterpret_cast<const cl_context_properties*>(record.properties), record.num_devices,
                   device_array(record.devices), record.pfn_notify, record.user_data);
}

void create_command_queue(const root_device& device, create_command_queue_record& record) {
  create_or_refuse(record, device.cl.create_command_queue, static_cast<cl_context>(record.context),
                   static_cast<cl_device_id>(record.device), record.properties);
}

void create_command_queue_with_properties(const root_device& device,
                                          create_command_queue_with_properties_record& record) {
  const auto context = static_cast<cl_context>(record.context);
  const auto id = static_cast<cl_device_id>(record.device);
  cl_command_queue_properties bits = queue_bits(record.properties);
  const bool for_device = (bits & CL_QUEUE_ON_DEVICE) != 0;

  if (device.cl.create_command_queue_with_properties != nullptr &&
      (!for_device || device.has_device_queues)) {
    create_or_refuse(record, device.cl.create_command_queue_with_properties, context, id, record.properties);
    return;
  }
  // An on-device queue is always out of order; the plain one that stands in for it is not, since not every
  // device has such queues.
  bits &= for_device ? CL_QUEUE_PROFILING_ENABLE : host_queue_bits;
  create_or_refuse(record, device.cl.create_command_queue, context, id, bits);
}

void create_buffer(const root_device& device, create_buffer_record& record) {
  create_or_refuse(record, device.cl.create_buffer, static_cast<cl_context>(record.context), record.flags,
                   record.size, record.host_ptr);
}

} // namespace qv
