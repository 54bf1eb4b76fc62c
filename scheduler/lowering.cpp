// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "scheduler/lowering.h"

#include "base/logging.h"
#include "memory/host_memory.h"
#include "memory/library_memory.h"
#include "memory/ranges.h"

#include <stdexcept>
#include <string>

namespace oryn::tarva::library {

namespace {

block_shape shape_of(const library_memory& memory) {
  return {memory.get_type(), memory.get_num_elements()};
}

bool overlap(std::uint64_t first, std::uint64_t second, std::uint64_t count) {
  return first < second ? second - first < count : first - second < count;
}

void check_copy(const logical_ir::copy_tarva_to_tarva& copy, bool host_only) {
  const auto check = host_only ? check_host_copy : check_device_copy;
  check(shape_of(*copy.get_src_memory()), copy.get_src_start_position(), shape_of(*copy.get_dest_memory()),
        copy.get_dest_start_position(), copy.get_count());
  if (copy.get_src_memory() == copy.get_dest_memory() &&
      overlap(copy.get_src_start_position(), copy.get_dest_start_position(), copy.get_count()))
    throw std::logic_error("Copy operation of " + std::to_string(copy.get_count()) +
                           " elements from position " + std::to_string(copy.get_src_start_position()) +
                           " to position " + std::to_string(copy.get_dest_start_position()) +
                           " of one memory object would overlap itself.");
}

// An object whose allocation has failed has no storage for OpenCL to read or write. A copy on the host finds that
// out by itself, as a fill, a read and a write do.
void check_storage(const memory_state& source, const memory_state& destination) {
  if (source.is_on_host() && destination.is_on_host())
    return;
  if (source.is_on_host() && !source.get_host_block()->has_storage())
    static_cast<void>(source.get_host_block()->get_read_pointer(0));
  if (destination.is_on_host() && !destination.get_host_block()->has_storage())
    static_cast<void>(destination.get_host_block()->get_write_pointer(0));
}

// The refusal of a read or write, which its future delivers; the caller's block always fits.
std::exception_ptr check_user_copy(const library_memory& memory, std::uint64_t start, std::uint64_t count,
                                   bool on_host, bool is_read) {
  const block_shape shape = shape_of(memory);
  const block_shape users = {shape.type, count};
  const auto check = on_host ? check_host_copy : check_device_copy;
  try {
    if (is_read)
      check(shape, start, users, 0, count);
    else
      check(users, 0, shape, start, count);
  } catch (const std::logic_error&) {
    return std::current_exception();
  }
  return {};
}

} // namespace

lowering::lowering(const std::shared_ptr<logical_ir::logical_operation>& operation,
                   const std::shared_ptr<library_device>& host_device, memory_table& table,
                   std::atomic<std::uint64_t>& last_sync_id)
    : operation_(operation), host_device_(host_device), table_(table), last_sync_id_(last_sync_id) {}

void lowering::add_chain(const std::vector<physical_pointer>& chain) {
  for (std::size_t i = 1; i < chain.size(); ++i)
    graph_.insert_edge(chain[i - 1], chain[i]);
}

// One object that cannot be settled must not keep the others from it.
void lowering::settle_after_failure() noexcept {
  if (freed_)
    free_block(*freed_);
  for (const block_move& move : moves_) {
    try {
      move.settle_after_failure();
    } catch (const std::exception& error) {
      log_error("Could not settle a memory object after a failed operation: {}", error.what());
    }
  }
}

void lowering::withdraw_allocation() {
  if (allocated_)
    free_block(table_.remove(allocated_));
}

const physical_graph& lowering::lower() {
  using kind = logical_ir::operation_kind;
  switch (operation_->kind) {
  case kind::allocate_memory:
    lower(static_cast<const logical_ir::allocate_memory&>(*operation_));
    break;
  case kind::free_memory:
    lower(static_cast<const logical_ir::free_memory&>(*operation_));
    break;
  case kind::fill:
    lower(static_cast<const logical_ir::fill&>(*operation_));
    break;
  case kind::kernel:
    lower(static_cast<const logical_ir::kernel&>(*operation_));
    break;
  case kind::copy_tarva_to_user:
    lower(static_cast<const logical_ir::copy_tarva_to_user&>(*operation_));
    break;
  case kind::copy_user_to_tarva:
    lower(static_cast<const logical_ir::copy_user_to_tarva&>(*operation_));
    break;
  case kind::copy_tarva_to_tarva:
    lower(static_cast<const logical_ir::copy_tarva_to_tarva&>(*operation_));
    break;
  }
  return graph_;
}

// Whether there is so much memory is found out when the work runs; what no process could hold is refused at once.
void lowering::lower(const logical_ir::allocate_memory& operation) {
  const auto& memory = operation.get_memory();
  if (exceeds_address_space(memory->get_type(), memory->get_num_elements()))
    throw std::logic_error("Memory allocation of " + std::to_string(memory->get_num_elements()) +
                           " elements of " + std::to_string(element_size(memory->get_type())) +
                           " bytes would overflow the address space.");
  auto block = std::make_shared<host_memory>();
  add_host_work<physical_ir::allocate_host_memory>(block, memory->get_type(), memory->get_num_elements());
  table_.add(memory).set_host_block(std::move(block));
  allocated_ = memory;
}

// The object leaves the table now. Should its work fail, `freed_` still has the block.
void lowering::lower(const logical_ir::free_memory& operation) {
  const memory_state& state = operation.get_memory()->get_state();
  if (state.is_on_device())
    add<physical_ir::free_device_memory>(state.get_device_block());
  else if (state.get_host_block()->has_storage())
    add_host_work<physical_ir::free_host_memory>(state.get_host_block());
  // Otherwise the object's allocation has failed, and there is nothing to free.
  freed_ = table_.remove(operation.get_memory());
}

// Where the content is decides the form of what follows; the object stays there.

void lowering::lower(const logical_ir::fill& operation) {
  const memory_state& state = operation.get_memory()->get_state();
  check_fill(operation.get_value(), operation.get_start_position(), operation.get_count(),
             shape_of(*operation.get_memory()));
  if (operation.get_count() == 0)
    return;
  if (state.is_on_host()) {
    std::vector<std::uint8_t> value = operation.get_value();
    if (!state.is_little_endian()) // half-way from a device of that order
      swap_endianness(value.data(), operation.get_memory()->get_type(), 0, 1);
    add_host_work<physical_ir::fill_on_host>(host_fill{
        state.get_host_block(), std::move(value), operation.get_start_position(), operation.get_count()});
  } else {
    add<physical_ir::fill_on_device>(device_fill{state.get_device_block(), operation.get_value(),
                                                 operation.get_start_position(), operation.get_count()});
  }
}

void lowering::lower(const logical_ir::copy_tarva_to_user& operation) {
  const auto& memory = operation.get_memory();
  const memory_state& state = memory->get_state();
  const std::uint64_t start = operation.get_src_start_position();
  const std::uint64_t count = operation.get_count();
  refusal_ = check_user_copy(*memory, start, count, state.is_on_host(), true);
  if (refusal_ || count == 0)
    return;
  auto users = std::make_shared<host_memory>();
  users->set_user_allocation(operation.get_user_ptr(), memory->get_type(), count);
  if (state.is_on_host())
    add_host_work<physical_ir::copy_host_to_host>(host_copy{state.get_host_block(), start, users, 0, count});
  else
    add<physical_ir::copy_device_to_host>(
        device_to_host_copy{state.get_device_block(), start, users, 0, count});
}

void lowering::lower(const logical_ir::copy_user_to_tarva& operation) {
  const auto& memory = operation.get_memory();
  const memory_state& state = memory->get_state();
  const std::uint64_t start = operation.get_dest_start_position();
  const std::uint64_t count = operation.get_count();
  refusal_ = check_user_copy(*memory, start, count, state.is_on_host(), false);
  if (refusal_ || count == 0)
    return;
  auto users = std::make_shared<host_memory>();
  users->set_read_only_user_allocation(operation.get_src_ptr(), memory->get_type(), count);
  if (state.is_on_host())
    add_host_work<physical_ir::copy_host_to_host>(host_copy{users, 0, state.get_host_block(), start, count});
  else
    add<physical_ir::copy_host_to_device>(
        host_to_device_copy{users, 0, state.get_device_block(), start, count});
}

void lowering::lower(const logical_ir::copy_tarva_to_tarva& operation) {
  const memory_state& source = operation.get_src_memory()->get_state();
  const memory_state& destination = operation.get_dest_memory()->get_state();
  check_copy(operation, source.is_on_host() && destination.is_on_host());
  const std::uint64_t from = operation.get_src_start_position();
  const std::uint64_t to = operation.get_dest_start_position();
  const std::uint64_t count = operation.get_count();
  if (count == 0)
    return;
  check_storage(source, destination);
  if (source.is_on_host() && destination.is_on_host())
    add_host_work<physical_ir::copy_host_to_host>(
        host_copy{source.get_host_block(), from, destination.get_host_block(), to, count});
  else if (source.is_on_host() && destination.is_on_device())
    add<physical_ir::copy_host_to_device>(
        host_to_device_copy{source.get_host_block(), from, destination.get_device_block(), to, count});
  else if (source.is_on_device() && destination.is_on_host())
    add<physical_ir::copy_device_to_host>(
        device_to_host_copy{source.get_device_block(), from, destination.get_host_block(), to, count});
  else if (!source.is_on_device() || !destination.is_on_device())
    throw std::logic_error("Impossible situation.  Cases are exhaustive.");
  else if (source.get_device_block()->get_device() == destination.get_device_block()->get_device())
    add<physical_ir::copy_same_device>(
        device_copy{source.get_device_block(), from, destination.get_device_block(), to, count});
  else
    copy_between_devices(source, destination, operation);
}

// Through a block on the host. No edge may run between devices: a release and an acquire link the two chains.
void lowering::copy_between_devices(const memory_state& source, const memory_state& destination,
                                    const logical_ir::copy_tarva_to_tarva& operation) {
  using namespace physical_ir;
  const auto& from = source.get_device_block();
  const auto& to = destination.get_device_block();
  const std::uint64_t count = operation.get_count();
  const std::uint64_t id = ++last_sync_id_;
  auto staging = std::make_shared<host_memory>();
  add_chain({add<allocate_host_memory>(from->get_device(), staging, to->get_type(), count),
             add<copy_device_to_host>(
                 device_to_host_copy{from, operation.get_src_start_position(), staging, 0, count}),
             add<synchronize_device_to_device_release>(from->get_device(), to->get_device(), id)});
  add_chain({add<synchronize_device_to_device_acquire>(from->get_device(), to->get_device(), id),
             add<copy_host_to_device>(
                 host_to_device_copy{staging, 0, to, operation.get_dest_start_position(), count}),
             add<free_host_memory>(to->get_device(), staging)});
}

} // namespace oryn::tarva::library
