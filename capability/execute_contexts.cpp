// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Contexts, queues and buffers.
//
// They are made of what was kept from trying the device where that will do, and counted here where OpenCL could refuse to
// count. Queues are objects of this library; contexts and buffers are OpenCL's own.
#include "capability/executor.h"
#include "capability/kept_objects.h"
#include "capability/kernels.h"
#include "capability/queues.h"

#include <unordered_map>
#include <utility>

namespace qv {
namespace {

// What a queue of the host's may have; the other bits are for queues of the device's own.
constexpr cl_command_queue_properties host_queue_bits =
    CL_QUEUE_OUT_OF_ORDER_EXEC_MODE_ENABLE | CL_QUEUE_PROFILING_ENABLE;

// The value of CL_QUEUE_PROPERTIES in a zero-terminated list of names and values. Without it a queue has no bits.
cl_command_queue_properties queue_bits(const std::uint64_t* properties) {
  for (; properties != nullptr && properties[0] != 0; properties += 2)
    if (properties[0] == CL_QUEUE_PROPERTIES)
      return properties[1];
  return 0;
}

// Whether a list asks for nothing but CL_QUEUE_PROPERTIES.
bool has_bits_alone(const std::uint64_t* properties) {
  return properties == nullptr || properties[0] == 0 ||
         (properties[0] == CL_QUEUE_PROPERTIES && properties[2] == 0);
}

// Gives out what was kept from trying the device, if anything was.
template <class Record, class Object>
bool give(Record& record, Object* kept) {
  record.result = kept;
  record.status = CL_SUCCESS;
  return kept != nullptr;
}

// A context can be given only as it was made: for the one device, without properties. Errors go to whoever asks for it.
bool give_kept_context(const root_device& device, create_context_record& record) {
  const bool is_for_device = record.properties == nullptr && record.num_devices == 1 &&
                             record.devices != nullptr && record.devices[0] == device.id;
  const bool is_valid = record.pfn_notify != nullptr || record.user_data == nullptr;
  return device.kept != nullptr && is_for_device && is_valid &&
         give(record, device.kept->take_context(record.pfn_notify, record.user_data));
}

// A queue of the host's; nothing but what OpenCL itself would make. The kept ones are of kinds that on-device queues are not.
template <class Record>
bool give_kept_queue(const root_device& device, Record& record, cl_command_queue_properties bits) {
  return device.kept != nullptr && record.device == device.id &&
         give(record, device.kept->take_queue(static_cast<cl_context>(record.context), bits));
}

// What a capability of 2.x asks for, in terms of the device as it is: a platform may lack the function, a device the queues,
// or both, though it is offered as 2.x. The status is that of the last way that was tried.
void make_queue(const root_device& device, create_command_queue_with_properties_record& record) {
  const auto context = static_cast<cl_context>(record.context);
  const auto id = static_cast<cl_device_id>(record.device);
  cl_command_queue_properties bits = queue_bits(record.properties);
  const bool for_device = (bits & CL_QUEUE_ON_DEVICE) != 0;

  if (has_bits_alone(record.properties) && give_kept_queue(device, record, bits))
    return;
  if (device.cl.create_command_queue_with_properties != nullptr &&
      (!for_device || device.has_device_queues)) {
    create_or_refuse(record, device.cl.create_command_queue_with_properties, context, id, record.properties);
    if (record.status == CL_SUCCESS || (bits & CL_QUEUE_ON_DEVICE_DEFAULT) == 0)
      return;
  }
  // An on-device queue is always out of order; the plain one that stands in for it is not, since not every
  // device has such queues. A device that lacks only the default one works without it.
  bits &= for_device ? CL_QUEUE_PROFILING_ENABLE : host_queue_bits;
  if (give_kept_queue(device, record, bits))
    return;
  create_or_refuse(record, device.cl.create_command_queue, context, id, bits);
}

// Further references to contexts, counted here so that OpenCL cannot refuse them. The map is there as long as it holds any,
// so that nothing of it is left at the end.
oryn::mutex contexts_lock;
std::unordered_map<void*, std::size_t>* more_references TARVA_GUARDED_BY(contexts_lock) = nullptr;

// True if there was one beyond OpenCL's. Unknown contexts have none, so that OpenCL judges them.
bool drop_further_reference(void* context) {
  const oryn::lock_guard guard(contexts_lock);
  if (more_references == nullptr)
    return false;
  const auto found = more_references->find(context);
  if (found == more_references->end())
    return false;
  if (--found->second == 0)
    more_references->erase(found);
  if (more_references->empty())
    delete std::exchange(more_references, nullptr);
  return true;
}

} // namespace

// Null entries among the devices crash some implementations; all else that may be wrong is OpenCL's to tell.
void create_context(const root_device& device, create_context_record& record) {
  if (lacks_devices(record.devices, record.num_devices)) {
    refuse(record, CL_INVALID_DEVICE);
    return;
  }
  if (give_kept_context(device, record))
    return;
  create_or_refuse(record, device.cl.create_context,
                   reinterpret_cast<const cl_context_properties*>(record.properties), record.num_devices,
                   device_array(record.devices), record.pfn_notify, record.user_data);
}

void retain_context(const root_device&, object_record& record) {
  record.status = record.object == nullptr ? CL_INVALID_CONTEXT : CL_SUCCESS;
  if (record.object == nullptr)
    return;
  const oryn::lock_guard guard(contexts_lock);
  if (more_references == nullptr)
    more_references = new std::unordered_map<void*, std::size_t>;
  ++(*more_references)[record.object];
}

cl_uint references_of_context(void* context) {
  const oryn::lock_guard guard(contexts_lock);
  const bool has_more = more_references != nullptr && more_references->count(context) != 0;
  return 1 + (has_more ? static_cast<cl_uint>(more_references->at(context)) : 0);
}

void release_context(const root_device& device, object_record& record) {
  record.status = drop_further_reference(record.object)
                      ? CL_SUCCESS
                      : call_or_refuse(device.cl.release_context, static_cast<cl_context>(record.object));
}

void create_command_queue(const root_device& device, create_command_queue_record& record) {
  if (!give_kept_queue(device, record, record.properties))
    create_or_refuse(record, device.cl.create_command_queue, static_cast<cl_context>(record.context),
                     static_cast<cl_device_id>(record.device), record.properties);
  wrap_created<queue_object>(record, device.cl.release_command_queue);
}

void create_command_queue_with_properties(const root_device& device,
                                          create_command_queue_with_properties_record& record) {
  make_queue(device, record);
  wrap_created<queue_object>(record, device.cl.release_command_queue);
}

// A buffer that cannot be remembered could not be used as an argument, so it is as if OpenCL had no memory.
void create_buffer(const root_device& device, create_buffer_record& record) {
  create_or_refuse(record, device.cl.create_buffer, static_cast<cl_context>(record.context), record.flags,
                   record.size, record.host_ptr);
  if (record.status != CL_SUCCESS || add_live_buffer(static_cast<cl_mem>(record.result)))
    return;
  static_cast<void>(call_or_refuse(device.cl.release_mem_object, static_cast<cl_mem>(record.result)));
  refuse(record, CL_OUT_OF_HOST_MEMORY);
}

// The buffer is dead before OpenCL releases it: from then on another thread may be given its address for a new one.
void release_mem_object(const root_device& device, object_record& record) {
  auto* const buffer = static_cast<cl_mem>(record.object);
  if (buffer != nullptr) {
    remove_live_buffer(buffer);
    kernel_object::drop_spares_with(device.cl, buffer);
  }
  record.status = call_or_refuse(device.cl.release_mem_object, buffer);
}

} // namespace qv
