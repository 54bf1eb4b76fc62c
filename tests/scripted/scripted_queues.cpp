// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Command queues, the commands that they take, and the events of those.
#include "tests/scripted/scripted_machine.h"

namespace scripted {

namespace {

void* make_queue(session& now, const context& parent, std::uint64_t properties) {
  constexpr std::uint64_t profiling = 2, on_device = 4;
  const auto made = std::make_shared<queue>();
  made->profiled = (properties & profiling) != 0;
  made->on_host = (properties & on_device) == 0;
  return now.world.add(parent.owner, made);
}

std::int32_t create_command_queue(session& now, qv::create_command_queue_record& record) {
  const auto parent = now.world.find<context>(record.context);
  now.log.numbers = {record.properties};
  if (now.world.find_device(record.device) != parent->owner)
    return invalid_device;
  record.result = make_queue(now, *parent, record.properties);
  return 0;
}

std::int32_t create_command_queue_with_properties(session& now,
                                                  qv::create_command_queue_with_properties_record& record) {
  const auto parent = now.world.find<context>(record.context);
  if (now.world.find_device(record.device) != parent->owner)
    return invalid_device;
  constexpr std::uint64_t queue_properties = 0x1093;
  std::uint64_t properties = 0;
  for (const std::uint64_t* entry = record.properties; entry != nullptr && *entry != 0; entry += 2) {
    now.log.numbers.insert(now.log.numbers.end(), {entry[0], entry[1]});
    if (entry[0] == queue_properties)
      properties = entry[1];
  }
  record.result = make_queue(now, *parent, properties);
  return 0;
}

std::int32_t finish(session& now, qv::object_record& record) {
  // The work runs without the lock, as it would on a device: a kernel may block, or call back.
  const auto pending = std::exchange(now.world.find<queue>(record.object)->pending, {});
  now.lock.unlock();
  for (const queue::command& command : pending)
    if (command.final_status == 0)
      command.run();
  now.lock.lock();
  for (const queue::command& command : pending)
    command.done->status = command.final_status;
  return 0;
}

template <class Record>
std::int32_t enqueue(session& now, Record& record, std::function<void()> run) {
  const auto target = now.world.find<queue>(record.command_queue);
  if (!target->on_host)
    return queue::invalid;
  if ((record.num_events_in_wait_list == 0) != (record.event_wait_list == nullptr))
    now.world.complain("a wait list of another length than is told");
  const auto failure = now.world.take_plan(way::event, now.log.operation);
  const auto made = std::make_shared<event>();
  made->profiled = target->profiled;
  if (record.event != nullptr)
    *record.event = now.world.add(target->owner, made);
  target->pending.push_back({std::move(run), made, failure ? failure->value : 0});
  return 0;
}

bool in_range(const buffer& target, std::size_t offset, std::size_t size) {
  return size != 0 && offset <= target.data.size() && size <= target.data.size() - offset;
}

template <bool Read>
std::int32_t transfer(session& now, qv::enqueue_transfer_buffer_record& record) {
  const auto found = now.world.find<buffer>(record.buffer);
  if (!in_range(*found, record.offset, record.size) || record.ptr == nullptr)
    return invalid_value;
  if (record.blocking != 0)
    now.world.complain("blocking transfer");
  return enqueue(now, record, [found, offset = record.offset, size = record.size, host = record.ptr] {
    unsigned char* device_side = found->data.data() + offset;
    Read ? std::memcpy(host, device_side, size) : std::memcpy(device_side, host, size);
  });
}

std::int32_t copy(session& now, qv::enqueue_copy_buffer_record& record) {
  const auto from = now.world.find<buffer>(record.src_buffer);
  const auto to = now.world.find<buffer>(record.dst_buffer);
  if (from->owner != to->owner)
    return invalid_context;
  if (!in_range(*from, record.src_offset, record.size) || !in_range(*to, record.dst_offset, record.size))
    return invalid_value;
  if (from == to && record.src_offset < record.dst_offset + record.size &&
      record.dst_offset < record.src_offset + record.size)
    return -8; // CL_MEM_COPY_OVERLAP
  return enqueue(now, record, [=, at = record.src_offset, target = record.dst_offset, size = record.size] {
    std::memcpy(to->data.data() + target, from->data.data() + at, size);
  });
}

std::int32_t fill(session& now, qv::enqueue_fill_buffer_record& record) {
  const auto found = now.world.find<buffer>(record.buffer);
  const std::size_t step = record.pattern_size;
  constexpr std::size_t largest_pattern = 128;
  if (record.pattern == nullptr || step == 0 || step > largest_pattern || (step & (step - 1)) != 0 ||
      record.offset % step != 0 || record.size % step != 0 || !in_range(*found, record.offset, record.size))
    return invalid_value;
  const auto* first = static_cast<const unsigned char*>(record.pattern);
  const bytes pattern(first, first + step);
  now.log.data = pattern;
  return enqueue(now, record, [=, start = record.offset, size = record.size] {
    for (std::size_t i = 0; i < size; ++i)
      found->data[start + i] = pattern[i % pattern.size()];
  });
}

// The first of CL_INVALID_WORK_DIMENSION, _GLOBAL_WORK_SIZE, _WORK_GROUP_SIZE, _WORK_ITEM_SIZE and
// _KERNEL_ARGS that fits, or 0.
std::int32_t check_launch(const session& now, const kernel& called, const kernel_run& wanted) {
  const bool chosen = std::all_of(wanted.local.begin(), wanted.local.begin() + wanted.work_dim,
                                  [](std::size_t size) { return size == 0; });
  const auto& required = called.description.required_size;
  std::size_t group = 1;
  for (std::uint32_t i = 0; i < wanted.work_dim; ++i) {
    if (wanted.global[i] == 0 && now.log.capability < 5)
      return -63;
    if (chosen)
      continue;
    if (wanted.local[i] == 0 || (now.log.capability < 4 && wanted.global[i] % wanted.local[i] != 0) ||
        (required[0] != 0 && wanted.local[i] != required[i]))
      return -54;
    group *= wanted.local[i];
  }
  if (group > now.owner.options.work_group_size)
    return -54;
  for (const kernel_argument& given : called.arguments)
    if (given.kind == argument_kind::unset)
      return -52;
  return 0;
}

std::int32_t launch_kernel(session& now, qv::enqueue_nd_range_kernel_record& record) {
  const auto found = now.world.find<kernel>(record.kernel);
  if (record.work_dim < 1 || record.work_dim > 3)
    return -53;
  kernel_run wanted{now.owner.options.little_endian, record.work_dim};
  const auto take = [&](const std::size_t* from, std::array<std::size_t, 3>& to) {
    if (from != nullptr)
      std::copy_n(from, record.work_dim, to.begin());
    now.log.numbers.insert(now.log.numbers.end(), to.begin(), to.end());
  };
  take(record.global_work_offset, wanted.offset);
  take(record.global_work_size, wanted.global);
  take(record.local_work_size, wanted.local);
  if (now.log.capability == 1 && record.global_work_offset != nullptr)
    return -56; // CL_INVALID_GLOBAL_OFFSET
  if (const std::int32_t status = check_launch(now, *found, wanted); status != 0)
    return status;
  wanted.arguments = found->arguments;
  wanted.constants = found->parent->constants;
  const auto body = now.world.kernels.find(found->description.name);
  auto function = body == now.world.kernels.end() ? kernel_function() : body->second;
  // The closure keeps the buffers, as OpenCL does until the command has ended.
  return enqueue(now, record, [function, wanted, buffers = found->buffers] {
    if (function)
      function(wanted);
  });
}

std::int32_t get_event_info(session& now, qv::get_object_info_record& record) {
  const auto found = now.world.find<event>(record.object);
  constexpr std::uint32_t execution_status = 0x11D3;
  return record.param_name == execution_status ? answer_query(value_answer(found->status), record)
                                               : invalid_value;
}

std::int32_t get_event_profiling_info(session& now, qv::get_object_info_record& record) {
  const auto found = now.world.find<event>(record.object);
  if (!found->profiled)
    return -7; // CL_PROFILING_INFO_NOT_AVAILABLE
  constexpr std::uint32_t profiling_start = 0x1282;
  return answer_query(value_answer(std::uint64_t{record.param_name == profiling_start ? 1000u : 1500u}),
                      record);
}

using op = qv::operation;
constexpr handler_row handlers[] = {
    {op::create_command_queue, typed<&create_command_queue>::handle},
    {op::create_command_queue_with_properties, typed<&create_command_queue_with_properties>::handle},
    {op::finish, typed<&finish>::handle},
    {op::enqueue_read_buffer, typed<&transfer<true>>::handle},
    {op::enqueue_write_buffer, typed<&transfer<false>>::handle},
    {op::enqueue_copy_buffer, typed<&copy>::handle},
    {op::enqueue_fill_buffer, typed<&fill>::handle},
    {op::enqueue_nd_range_kernel, typed<&launch_kernel>::handle},
    {op::get_event_info, typed<&get_event_info>::handle},
    {op::get_event_profiling_info, typed<&get_event_profiling_info>::handle},
};

} // namespace

const std::span<const handler_row> queue_handlers = handlers;

} // namespace scripted
