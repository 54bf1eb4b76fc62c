// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The lowering of a launch: the movement of its memory objects to the kernel's device.
#include "ir/launch_checks.h"
#include "memory/library_memory.h"
#include "objects/library_program.h"
#include "scheduler/lowering.h"

namespace oryn::tarva::library {

// An object that is two arguments is moved at the first and found there at the second. Up to the loop nothing has changed.
void lowering::lower(const logical_ir::kernel& operation) {
  const std::shared_ptr<library_device> device = operation.kernel_object->get_program()->get_device();
  const nd_range range = check_launch(operation, device);
  std::vector<kernel_argument_typed_device_memory_array> replacement_blocks;
  replacement_blocks.reserve(operation.arguments.arguments.size());
  std::vector<physical_pointer> predecessors_of_kernel;
  for (const kernel_argument& argument : operation.arguments.arguments)
    if (const auto* memory = std::get_if<kernel_argument_typed_library_memory_array>(&argument)) {
      memory_state& state = (*memory)->get_state();
      if (!state.is_on(device))
        predecessors_of_kernel.push_back(move_to(device, *memory, state));
      replacement_blocks.push_back(state.get_device_block().get());
    }
  const physical_pointer launch =
      add<physical_ir::kernel>(device, operation, range, std::move(replacement_blocks));
  for (const auto& predecessor : predecessors_of_kernel)
    graph_.insert_edge(predecessor, launch);
}

// Yields the physical operation that the launch must wait for.
lowering::physical_pointer lowering::move_to(const std::shared_ptr<library_device>& device,
                                             const std::shared_ptr<library_memory>& memory,
                                             memory_state& state) {
  return state.is_on_host() ? move_from_host(device, memory, state)
                            : move_between_devices(device, memory, state);
}

// Allocate, copy, free on the host; if the device has the other byte order, that of the content is reversed before the copy.
lowering::physical_pointer lowering::move_from_host(const std::shared_ptr<library_device>& device,
                                                    const std::shared_ptr<library_memory>& memory,
                                                    memory_state& state) {
  using namespace physical_ir;
  const bool keep_order = state.is_between_devices();
  const bool change_order = !keep_order && state.is_little_endian() != device->is_little_endian();
  const std::uint64_t count = memory->get_num_elements();
  const std::shared_ptr<host_memory> from = state.get_host_block();
  const auto to = std::make_shared<device_memory>(device);
  block_move move{.memory = memory, .before = state, .destination = to};

  const auto allocation = add<allocate_device_memory>(to, memory->get_type(), count);
  if (change_order)
    move.conversion = add<convert_endianness_host>(device, from);
  const auto copy = add<copy_host_to_device>(host_to_device_copy{from, 0, to, 0, count});
  const auto release = add<free_host_memory>(device, from, copy);
  if (change_order)
    graph_.insert_edge(move.conversion, copy);
  add_chain({allocation, copy, release});

  move.arrival = copy;
  moves_.push_back(std::move(move));
  state.set_device_block(to);
  if (!keep_order)
    state.set_little_endian(device->is_little_endian());
  return release;
}

// Through a block on the host. No edge may run between devices: a release and an acquire link the two chains.
lowering::physical_pointer lowering::move_between_devices(const std::shared_ptr<library_device>& device,
                                                          const std::shared_ptr<library_memory>& memory,
                                                          memory_state& state) {
  using namespace physical_ir;
  const std::shared_ptr<device_memory> from = state.get_device_block();
  const std::shared_ptr<library_device>& holder = from->get_device();
  const std::uint64_t count = memory->get_num_elements();
  const auto staging = std::make_shared<host_memory>();
  const auto to = std::make_shared<device_memory>(device);
  const std::uint64_t id = ++last_sync_id_;
  block_move move{.memory = memory, .before = state, .destination = to, .staging = staging};

  const auto staging_allocation = add<allocate_host_memory>(holder, staging, memory->get_type(), count);
  const auto stage = add<copy_device_to_host>(device_to_host_copy{from, 0, staging, 0, count});
  const auto hand_over = add<synchronize_device_to_device_release>(holder, device, id);
  add_chain({staging_allocation, stage, hand_over, add<free_device_memory>(from, stage)});

  const auto allocation = add<allocate_device_memory>(to, from->get_type(), from->get_size());
  const auto take_over = add<synchronize_device_to_device_acquire>(holder, device, id);
  const auto copy = add<copy_host_to_device>(host_to_device_copy{staging, 0, to, 0, count});
  add_chain({allocation, take_over, copy, add<free_host_memory>(device, staging, copy)});

  move.staged = stage;
  move.arrival = copy;
  moves_.push_back(std::move(move));
  state.set_device_block(to);
  return copy;
}

} // namespace oryn::tarva::library
