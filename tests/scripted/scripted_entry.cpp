// The six functions, and the road from a command's number to its handler.
#include "tests/scripted/scripted_machine.h"

#pragma GCC visibility push(default)
#include "capability/qv.h"
#pragma GCC visibility pop

using scripted::machine;

namespace scripted {

namespace {

thread_local int depth = 0;
struct visit {
  visit() { ++depth; }
  visit(const visit&) = delete;
  visit& operator=(const visit&) = delete;
  ~visit() { --depth; }
};

constexpr std::uint64_t first_root = 0x100, first_node = 0x200; // never valid addresses

std::int32_t write_list(const std::vector<std::uint64_t>& list, std::uint64_t count, std::uint64_t* array,
                        std::uint64_t* out_count) {
  for (std::size_t i = 0; i < std::min<std::size_t>(count, list.size()); ++i)
    array[i] = list[i];
  *out_count = list.size();
  return 0;
}

// Performs the operation on its record and returns the transport code.
std::int32_t perform(session& now, qv::operation operation, void* record) {
  if (const auto planned = now.world.take_plan(way::action, operation)) {
    now.lock.unlock();
    planned->run();
    now.lock.lock();
  }
  if (const auto failure = now.world.take_plan(way::transport, operation))
    return failure->value;
  const auto failure = now.world.take_plan(way::status, operation);
  for (const auto& handlers : {object_handlers, queue_handlers, program_handlers})
    for (const handler_row& row : handlers)
      if (row.operation == operation) {
        row.run(now, record, failure ? std::optional(failure->value) : std::nullopt);
        return 0;
      }
  now.world.complain("a command that is not simulated");
  return QV_INVALID_COMMAND_ID;
}

} // namespace

bool is_inside() {
  return depth != 0;
}

bool is_release(qv::operation operation) {
  using enum qv::operation;
  const auto all = {release_command_queue, release_context,    release_device, release_event,
                    release_kernel,        release_mem_object, release_program};
  return std::find(all.begin(), all.end(), operation) != all.end();
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
  for (const std::uint32_t capability :
       machine::get().devices.at(root - scripted::first_root).options.capabilities)
    if (capability == capability_id)
      nodes.push_back(scripted::first_node + capability);
  return scripted::write_list(nodes, count, array, out_count);
}

std::int32_t qv_create_call_handle(std::uint64_t root, std::uint64_t node, qv_call_handle** out_handle,
                                   std::uint64_t /*reserved*/) {
  const scripted::visit inside;
  const std::lock_guard guard(machine::get().lock);
  auto& device = machine::get().devices.at(root - scripted::first_root);
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
    world.calls.push_back(log);
    return code;
  }
  world.complain("unknown command " + std::to_string(command_id));
  return QV_INVALID_COMMAND_ID;
}
