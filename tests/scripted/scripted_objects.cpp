// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Devices, contexts, buffers, and what all kinds of object have in common: queries, retain and release.
#include "tests/scripted/scripted_machine.h"

namespace scripted {

namespace {

// Retains or releases.
template <class T, int Change>
std::int32_t count(session& now, qv::object_record& record) {
  if constexpr (std::is_same_v<T, device>) {
    now.world.find_device(record.object)->references += Change;
  } else {
    const auto found = now.world.find<T>(record.object);
    if constexpr (std::is_same_v<T, queue>)
      if (!found->pending.empty())
        now.world.complain("release of a queue with work that was never finished");
    if ((found->references += Change) == 0)
      now.world.objects.erase(record.object);
  }
  return 0;
}

std::int32_t device_of_handle(session& now, qv::device_of_handle_record& record) {
  record.result = &now.owner;
  return 0;
}

std::int32_t get_device_info(session& now, qv::get_device_info_record& record) {
  const device* found = now.world.find_device(record.device);
  const auto answer = device_info(*found, now.log.capability, record.param_name);
  return answer ? answer_query(*answer, record) : invalid_value;
}

std::int32_t create_context(session& now, qv::create_context_record& record) {
  if (record.num_devices != 1 || record.devices == nullptr || record.properties != nullptr)
    return invalid_value;
  if (now.world.find_device(record.devices[0]) != &now.owner)
    return invalid_device;
  const auto made = std::make_shared<context>();
  made->notify = record.pfn_notify;
  made->user_data = record.user_data;
  record.result = now.world.add(&now.owner, made);
  return 0;
}

std::int32_t get_context_info(session& now, qv::get_context_info_record& record) {
  const auto found = now.world.find<context>(record.context);
  constexpr std::uint32_t context_devices = 0x1081;
  return record.param_name == context_devices ? answer_query(value_answer(found->owner), record)
                                              : invalid_value;
}

std::int32_t create_buffer(session& now, qv::create_buffer_record& record) {
  const auto found = now.world.find<context>(record.context);
  if (record.flags != 1 || record.host_ptr != nullptr)
    return invalid_value;
  device& owner = *found->owner;
  std::uint64_t largest = 0;
  std::memcpy(&largest, device_info(owner, 1, 0x1010)->data(), sizeof largest);
  if (record.size == 0 || record.size > largest)
    return -61; // CL_INVALID_BUFFER_SIZE
  record.result = now.world.add(&owner, std::make_shared<buffer>(record.size));
  return 0;
}

using op = qv::operation;
constexpr handler_row handlers[] = {
    {op::device_of_handle, typed<&device_of_handle>::handle},
    {op::get_device_info, typed<&get_device_info>::handle},
    {op::create_context, typed<&create_context>::handle},
    {op::get_context_info, typed<&get_context_info>::handle},
    {op::create_buffer, typed<&create_buffer>::handle},
    {op::retain_context, typed<&count<context, 1>>::handle},
    {op::retain_device, typed<&count<device, 1>>::handle},
    {op::retain_event, typed<&count<event, 1>>::handle},
    {op::retain_program, typed<&count<program, 1>>::handle},
    {op::release_command_queue, typed<&count<queue, -1>>::handle},
    {op::release_context, typed<&count<context, -1>>::handle},
    {op::release_device, typed<&count<device, -1>>::handle},
    {op::release_event, typed<&count<event, -1>>::handle},
    {op::release_kernel, typed<&count<kernel, -1>>::handle},
    {op::release_mem_object, typed<&count<buffer, -1>>::handle},
    {op::release_program, typed<&count<program, -1>>::handle},
};

} // namespace

const std::span<const handler_row> object_handlers = handlers;

} // namespace scripted
