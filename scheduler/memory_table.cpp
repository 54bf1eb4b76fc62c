// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "scheduler/memory_table.h"

#include "memory/device_memory.h"
#include "memory/host_memory.h"
#include "memory/library_memory.h"

#include <stdexcept>

namespace oryn::tarva::library {

// Objects that the user has never released. Each goes only after it has left the list, as its own entry holds it.
memory_table::~memory_table() {
  while (library_memory* const memory = newest_) {
    newest_ = memory->get_scheduler_entry().after;
    const auto last = std::move(memory->get_scheduler_entry().memory);
    memory->get_scheduler_entry().state = {};
  }
}

// The entry belongs to whoever has the turn of the object; the lock is for its neighbours in the list.
memory_state& memory_table::add(const std::shared_ptr<library_memory>& memory) {
  memory_entry& entry = memory->get_scheduler_entry();
  if (entry.memory)
    throw std::logic_error("Last memory state already exists in the tracking table, but it should not.");
  entry.memory = memory;
  entry.state = {};
  const lock_guard guard(lock_);
  entry.before = nullptr;
  entry.after = std::exchange(newest_, memory.get());
  if (entry.after != nullptr)
    entry.after->get_scheduler_entry().before = memory.get();
  return entry.state;
}

memory_state memory_table::remove(const std::shared_ptr<library_memory>& memory) {
  memory_entry& entry = memory->get_scheduler_entry();
  if (!entry.memory)
    return {};
  {
    const lock_guard guard(lock_);
    library_memory*& link = entry.before != nullptr ? entry.before->get_scheduler_entry().after : newest_;
    link = entry.after;
    if (entry.after != nullptr)
      entry.after->get_scheduler_entry().before = entry.before;
  }
  entry.memory.reset(); // the caller has it, too
  return std::exchange(entry.state, {});
}

namespace {

void free_if_held(const std::shared_ptr<host_memory>& block) {
  if (block && block->has_storage())
    block->free();
}

void free_if_held(const std::shared_ptr<device_memory>& block) {
  if (block && block->has_allocation())
    block->free();
}

bool has_succeeded(const std::shared_ptr<physical_ir::physical_operation>& operation) {
  return operation && operation->has_succeeded();
}

} // namespace

void free_block(const memory_state& state) {
  free_if_held(state.get_host_block());
  free_if_held(state.get_device_block());
}

// The content is at its destination; or half-way, in staging; or where it was, perhaps with its byte order reversed.
void block_move::settle_after_failure() const {
  if (has_succeeded(arrival)) {
    free_if_held(staging);
    free_block(before);
    return;
  }
  free_if_held(destination);
  memory_state& state = memory->get_state();
  if (has_succeeded(staged)) {
    free_if_held(before.get_device_block());
    state = before;
    state.set_staging_block(staging);
    return;
  }
  free_if_held(staging);
  if (has_succeeded(conversion))
    before.get_host_block()->convert_endianness();
  state = before;
}

} // namespace oryn::tarva::library
