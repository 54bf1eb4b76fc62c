// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The six functions, and the road from a command's number to its handler.
#include "tests/scripted/scripted_machine.h"

#pragma GCC visibility push(default)
#include "capability/qv.h"
#pragma GCC visibility pop

using scripted::machine;

namespace scripted {

namespace {

constexpr std::uint64_t first_root = 0x100, first_node = 0x200; // never valid addresses

std::int32_t write_list(const std::vector<std::uint64_t>& list, std::uint64_t count, std::uint64_t* array,
                        std::uint64_t* out_count) {
  if (const auto broken = machine::get().take_plan(way::transport, {}))
    return broken->value;
  for (std::size_t i = 0; i < std::min<std::size_t>(count, list.size()); ++i)
    array[i] = list[i];
  const auto lie = machine::get().take_plan(way::size, {});
  *out_count = lie ? wrong_size<std::uint64_t>(lie->value) : list.size();
  return 0;
}

// What could not be finished is never done, since nobody keeps the memory that it works on.
void give_up_work(machine& world, std::int32_t code, const qv::object_record& record) {
  const auto found = world.objects.find(record.object);
  if ((code != QV_OK || record.status != 0) && found != world.objects.end())
    if (auto* const unfinished = dynamic_cast<queue*>(found->second.get()))
      unfinished->pending.clear();
}

} // namespace

bool is_opencl() {
  return false;
}

} // namespace scripted

std::uint64_t qv_version() {
  return machine::get().version;
}

std::int32_t qv_get_root_devices(std::uint64_t count, std::uint64_t* array, std::uint64_t* out_count,
                                 std::uint64_t /*reserved*/) {
  const scripted::visit inside;
  const std::lock_guard guard(machine::get().lock);
  std::vector<std::uint64_t> roots;
  for (const auto& device : machine::get().devices)
    roots.push_back(scripted::first_root + device.index);
  return scripted::write_list(roots, count, array, out_count);
}

std::int32_t qv_find_capability_nodes(std::uint64_t root, std::uint64_t capability_id, std::uint64_t count,
                                      std::uint64_t* array, std::uint64_t* out_count,
                                      std::uint64_t /*reserved*/) {
  const scripted::visit inside;
  const std::lock_guard guard(machine::get().lock);
  std::vector<std::uint64_t> nodes;
  if (root - scripted::first_root >= machine::get().devices.size())
    return QV_UNRECOVERABLE_ERROR;
  for (const std::uint32_t capability :
       machine::get().devices[root - scripted::first_root].options.capabilities)
    if (capability == capability_id)
      nodes.push_back(scripted::first_node + capability);
  return scripted::write_list(nodes, count, array, out_count);
}

std::int32_t qv_create_call_handle(std::uint64_t root, std::uint64_t node, qv_call_handle** out_handle,
                                   std::uint64_t /*reserved*/) {
  const scripted::visit inside;
  const std::lock_guard guard(machine::get().lock);
  if (const auto broken = machine::get().take_plan(scripted::way::transport, {}))
    return broken->value;
  if (root - scripted::first_root >= machine::get().devices.size() || node <= scripted::first_node)
    return QV_UNRECOVERABLE_ERROR;
  auto& device = machine::get().devices[root - scripted::first_root];
  *out_handle = new qv_call_handle{&device, static_cast<std::uint32_t>(node - scripted::first_node)};
  machine::get().call_handles.insert(*out_handle);
  return QV_OK;
}

std::int32_t qv_close_call_handle(qv_call_handle* handle) {
  const scripted::visit inside;
  const std::lock_guard guard(machine::get().lock);
  if (machine::get().call_handles.erase(handle) == 0) {
    machine::get().complain("closing of a call handle that is not open");
    return QV_UNRECOVERABLE_ERROR;
  }
  delete handle;
  return QV_OK;
}

std::int32_t qv_call_capability(qv_call_handle* handle, std::uint64_t command_id, void* record,
                                std::uint64_t /*reserved*/) {
  const scripted::visit inside;
  machine& world = machine::get();
  std::unique_lock lock(world.lock);
  if (world.call_handles.count(handle) == 0) {
    world.complain("command on a call handle that is not open");
    return QV_UNRECOVERABLE_ERROR;
  }
  for (const qv::command_row& row : qv::command_table) {
    if (command_id == 0 || row.numbers[handle->capability - 1] != command_id)
      continue;
    scripted::call_record log{row.op, handle->capability, handle->owner->index, std::this_thread::get_id()};
    scripted::session now{world, *handle->owner, lock, log};
    const std::int32_t code = scripted::perform(now, row.op, record);
    if (row.op == qv::operation::finish)
      scripted::give_up_work(world, code, *static_cast<qv::object_record*>(record));
    world.calls.push_back(log);
    return code;
  }
  world.complain("unknown command " + std::to_string(command_id));
  return QV_INVALID_COMMAND_ID;
}
