// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Where the content of each memory object is.
#pragma once

#include "base/thread_annotations.h"
#include "ir/physical_operation.h"
#include "memory/memory_state.h"

#include <memory>
#include <utility>

namespace oryn::tarva::library {

// The memory objects that have a state, each of which stays alive for that long. The states stand in the objects themselves;
// this only links them.
//
// Any thread may add and remove objects. Who uses an object's state is up to the scheduler: one thread at a time.
class memory_table {
public:
  memory_table() = default;
  memory_table(const memory_table&) = delete;
  memory_table& operator=(const memory_table&) = delete;
  // Gives up the objects and their blocks.
  ~memory_table();

  // Refuses an object that is there already. What it returns holds until the object is removed.
  memory_state& add(const std::shared_ptr<library_memory>& memory) TARVA_EXCLUDES(lock_);
  // Yields the last state of the object, without a block if it is not there.
  memory_state remove(const std::shared_ptr<library_memory>& memory) TARVA_EXCLUDES(lock_);

private:
  mutex lock_; // taken for a moment, alone or inside the turn of an operation
  library_memory* newest_ TARVA_GUARDED_BY(lock_) = nullptr; // of the list, which goes on to older ones
};

// Frees the block of the state, if that still holds storage.
void free_block(const memory_state& state);

// The movement of one object's content to the device of a launch, with what it takes to find out where the content is if
// the launch fails: the operations that were to bring it there, each of which has succeeded or not. A block is freed only
// when its content has arrived elsewhere, so that a failed move loses nothing.
struct block_move {
  std::shared_ptr<library_memory> memory{};
  memory_state before{};
  std::shared_ptr<device_memory> destination{};
  std::shared_ptr<physical_ir::physical_operation> arrival{}; // brings the content to `destination`
  // If the byte order is changed on the way:
  std::shared_ptr<physical_ir::physical_operation> conversion{};
  // If the content passes through a block on the host:
  std::shared_ptr<host_memory> staging{};
  std::shared_ptr<physical_ir::physical_operation> staged{}; // brings the content to `staging`

  // Gives the object the state of the block that holds its content, and frees the others. When every command has ended.
  void settle_after_failure() const;
};

} // namespace oryn::tarva::library
