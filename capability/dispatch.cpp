#include "capability/dispatch.h"

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

template <operation Op, void (*Function)(const root_device&, record<Op>&)>
constexpr command_entry perform(bool releases = false) {
  const executor run = [](const root_device& device, void* block) {
    auto& fields = *static_cast<record<Op>*>(block);
    try {
      Function(device, fields);
    } catch (...) {
      fail<Op>(fields);
    }
  };
  return {Op, {run, releases}};
}

using op = operation;
constexpr bool is_release = true;

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
    perform<op::release_command_queue, release_command_queue>(is_release),
    perform<op::release_context, release_context>(is_release),
    perform<op::release_device, count_device>(is_release),
    perform<op::release_event, release_event>(is_release),
    perform<op::release_kernel, release_kernel>(is_release),
    perform<op::release_mem_object, release_mem_object>(is_release),
    perform<op::release_program, release_program>(is_release),
    perform<op::retain_context, retain_context>(),
    perform<op::retain_device, count_device>(),
    perform<op::retain_event, retain_event>(),
    perform<op::retain_program, retain_program>(),
    perform<op::set_kernel_arg, set_kernel_arg>(),
    perform<op::set_program_specialization_constant, set_program_specialization_constant>(),
};
static_assert(entries.size() == operation_count);

constexpr std::array<command_array, capability_count> arrange_by_number() {
  std::array<command_array, capability_count> commands{};
  for (std::uint32_t capability = 1; capability <= capability_count; ++capability)
    for (const command_entry& entry : entries)
      if (const std::uint64_t number = command_number(entry.op, capability); number != 0)
        commands[capability - 1][number] = entry.performer;
  return commands;
}

constexpr std::array<command_array, capability_count> commands_by_number = arrange_by_number();

} // namespace

const command_array& commands_of_capability(std::uint32_t capability) {
  return commands_by_number[capability - 1];
}

} // namespace qv
