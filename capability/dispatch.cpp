// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Two tables: the executors by the number of their command, which the compiler makes, and the slots of call handles. A command
// looks into both and takes no lock. With them, the two exported functions that look into them alone.
#include "capability/dispatch.h"

#include "base/native_thread.h"
#include "base/thread_annotations.h"
#include "capability/kernels.h"
#include "capability/queues.h"

#include <atomic>

namespace qv {
namespace {

struct command_entry {
  operation op;
  command performer;
};

// Without memory the command has failed, and has not been out of reach.
template <operation Op>
void fail(record<Op>& fields) {
  if constexpr (requires { fields.result; })
    fields.result = nullptr;
  if constexpr (requires { fields.status; })
    fields.status = status_of_exception();
}

// Nothing that an executor throws leaves here.
template <operation Op, void (*Function)(const root_device&, record<Op>&)>
void perform_guarded(const root_device& device, void* block) noexcept {
  auto& fields = *static_cast<record<Op>*>(block);
  try {
    Function(device, fields);
  } catch (...) {
    fail<Op>(fields);
  }
}

template <operation Op, void (*Function)(const root_device&, record<Op>&)>
constexpr command_entry perform(bool releases = false) {
  return {Op, {perform_guarded<Op, Function>, releases}};
}

using op = operation;
constexpr bool is_release = true; // may be left out at the end of the process

constexpr std::array entries{
    perform<op::build_program, build_program>(),
    perform<op::create_buffer, create_buffer>(),
    perform<op::create_command_queue, create_command_queue>(),
    perform<op::create_command_queue_with_properties, create_command_queue_with_properties>(),
    perform<op::create_context, create_context>(),
    perform<op::create_kernels_in_program, create_kernels_in_program>(),
    perform<op::create_kernel, create_kernel>(),
    perform<op::create_program_with_binary, create_program_with_binary>(),
    perform<op::create_program_with_builtin_kernels, create_program_with_builtin_kernels>(),
    perform<op::create_program_with_source, create_program_with_source>(),
    perform<op::create_program_with_il, create_program_with_il>(),
    perform<op::enqueue_copy_buffer, enqueue_copy_buffer>(),
    perform<op::enqueue_fill_buffer, enqueue_fill_buffer>(),
    perform<op::enqueue_nd_range_kernel, enqueue_nd_range_kernel>(),
    perform<op::enqueue_read_buffer, enqueue_read_buffer>(),
    perform<op::enqueue_write_buffer, enqueue_write_buffer>(),
    perform<op::finish, finish>(),
    perform<op::device_of_handle, device_of_handle>(),
    perform<op::get_context_info, get_context_info>(),
    perform<op::get_device_info, get_device_info>(),
    perform<op::get_event_info, get_event_info>(),
    perform<op::get_event_profiling_info, get_event_profiling_info>(),
    perform<op::get_extension_function_address_for_platform, get_extension_function_address>(),
    perform<op::get_kernel_info, get_kernel_info>(),
    perform<op::get_kernel_work_group_info, get_kernel_work_group_info>(),
    perform<op::get_program_build_info, get_program_build_info>(),
    perform<op::get_program_info, get_program_info>(),
    perform<op::release_command_queue, release_object<queue_object>>(is_release),
    perform<op::release_context, release_context>(is_release),
    perform<op::release_device, retain_or_release_device>(is_release),
    perform<op::release_event, release_object<event_object>>(is_release),
    perform<op::release_kernel, release_object<kernel_object>>(is_release),
    perform<op::release_mem_object, release_mem_object>(is_release),
    perform<op::release_program, release_object<program_object>>(is_release),
    perform<op::retain_context, retain_context>(),
    perform<op::retain_device, retain_or_release_device>(),
    perform<op::retain_event, retain_object<event_object>>(),
    perform<op::retain_program, retain_object<program_object>>(),
    perform<op::set_kernel_arg, set_kernel_arg>(),
    perform<op::set_program_specialization_constant, set_program_specialization_constant>(),
};
static_assert(entries.size() == operation_count);

// All numbers of all capabilities, worked out by the compiler: a command costs a look into an array.
constexpr std::array<command_array, capability_count> arrange_by_number() {
  std::array<command_array, capability_count> commands{};
  for (std::uint32_t capability = 1; capability <= capability_count; ++capability)
    for (const command_entry& entry : entries)
      if (const std::uint64_t number = command_number(entry.op, capability); number != 0)
        commands[capability - 1][number] = entry.performer;
  return commands;
}

constexpr std::array<command_array, capability_count> commands_by_number = arrange_by_number();

// The low bits of a handle are the place of its slot, the others the generation of the slot, so that none is ever given out
// twice.
constexpr std::size_t slot_count = 4096;
constexpr unsigned index_bits = 12;
static_assert(slot_count == std::size_t{1} << index_bits);

struct slot {
  // Grows by one at each opening and closing; odd while open. Released after the binding was written, and acquired before it
  // is read, so that a command needs no lock to find it.
  std::atomic<std::uint64_t> generation{0};
  binding bound;
};

// Plain static storage: handles can be looked up before the first constructor and after the last destructor.
std::array<slot, slot_count> slots;
oryn::mutex slots_lock;
std::size_t next_slot TARVA_GUARDED_BY(slots_lock) = 0;
std::atomic<std::size_t> open_count{0};

qv_call_handle* make_handle(std::size_t index, std::uint64_t generation) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): it is only ever compared
  return reinterpret_cast<qv_call_handle*>(generation << index_bits | index);
}

slot* find_slot(qv_call_handle* handle) noexcept {
  const auto value = reinterpret_cast<std::uintptr_t>(handle);
  const std::uint64_t generation = value >> index_bits;
  slot& candidate = slots[value & (slot_count - 1)];
  const bool open = generation % 2 == 1 && candidate.generation.load(std::memory_order_acquire) == generation;
  return open ? &candidate : nullptr;
}

// For a device that may be lost, or whose implementation must not be called on this thread any more. Kept out of the way of the
// commands that know no such trouble.
[[gnu::noinline]] std::int32_t perform_with_care(const root_device& asked, const command& performer,
                                                 void* record) noexcept {
  const root_device& device = device_or_stand_in(asked);
  if (!device.quirks.uses_ended_thread_locals || !thread_locals_have_ended()) {
    performer.run(device, record);
    return QV_OK;
  }
  // The process is ending, perhaps with the dynamic loader's lock held, when another thread would wait for ever. What is not
  // released now, the system releases soon.
  if (performer.releases) {
    static_cast<object_record*>(record)->status = CL_SUCCESS;
    return QV_OK;
  }
  try {
    oryn::native_thread("qv-late-call", [&] { performer.run(device, record); }).join();
    return QV_OK;
  } catch (...) {
    return QV_UNRECOVERABLE_ERROR;
  }
}

} // namespace

qv_call_handle* open_call_handle(const binding& bound) {
  const oryn::lock_guard guard(slots_lock);
  for (std::size_t tried = 0; tried < slot_count; ++tried) {
    const std::size_t index = next_slot;
    next_slot = (next_slot + 1) % slot_count;
    slot& candidate = slots[index];
    const std::uint64_t generation = candidate.generation.load(std::memory_order_relaxed) + 1;
    if (generation % 2 == 0)
      continue; // open
    candidate.bound = bound;
    candidate.generation.store(generation, std::memory_order_release);
    ++open_count;
    return make_handle(index, generation);
  }
  return nullptr;
}

bool any_call_handle_open() noexcept {
  return open_count != 0;
}

const command_array& commands_of_capability(std::uint32_t capability) {
  return commands_by_number[capability - 1];
}

} // namespace qv

using namespace qv;

int32_t qv_close_call_handle(qv_call_handle* handle) {
  if (handle == nullptr)
    return QV_OK;
  try {
    const oryn::lock_guard guard(slots_lock);
    slot* const open = find_slot(handle);
    if (open == nullptr)
      return QV_UNRECOVERABLE_ERROR;
    open->generation.fetch_add(1, std::memory_order_release);
    --open_count;
    return QV_OK;
  } catch (...) {
    return QV_UNRECOVERABLE_ERROR;
  }
}

// Takes no lock. A command that has failed is a success here; its record tells.
int32_t qv_call_capability(qv_call_handle* handle, uint64_t command_id, void* record, uint64_t) {
  const slot* const open = find_slot(handle);
  if (open == nullptr)
    return QV_UNRECOVERABLE_ERROR;
  const binding& bound = open->bound;
  if (command_id >= bound.commands->size())
    return QV_INVALID_COMMAND_ID;
  const command& performer = (*bound.commands)[command_id];
  if (performer.run == nullptr)
    return QV_INVALID_COMMAND_ID;
  if (record == nullptr)
    return QV_UNRECOVERABLE_ERROR;

  const root_device& device = *bound.device;
  if (is_suspected(device) || device.quirks.uses_ended_thread_locals)
    return perform_with_care(device, performer, record);
  performer.run(device, record);
  return QV_OK;
}
