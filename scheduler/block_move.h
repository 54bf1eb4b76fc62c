#pragma once

#include "ir/physical_operation.h"
#include "scheduler/memory_table.h"

#include <memory>

namespace oryn::tarva::library {

// Frees the block of the state, if that still holds storage.
void free_block(const memory_state& state);

// The movement of one object's content to the device of a launch, with what is needed to settle where the
// content is if the request fails. Used when every command of the request has ended.
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

  // Gives the object the state of the block that holds its content, and frees the others.
  void settle_after_failure(memory_table& table) const;
};

} // namespace oryn::tarva::library
