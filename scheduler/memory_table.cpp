#include "scheduler/memory_table.h"

#include "memory/library_memory.h"

#include <stdexcept>

namespace oryn::tarva::library {

memory_state& memory_table::add(const std::shared_ptr<library_memory>& memory) {
  const auto [found, is_new] = states_.try_emplace(memory.get(), {memory, {}});
  if (!is_new)
    throw std::logic_error("Last memory state already exists in the tracking table, but it should not.");
  return found->state;
}

memory_state& memory_table::find(const std::shared_ptr<library_memory>& memory) {
  entry* found = states_.find(memory.get());
  if (found == nullptr)
    throw std::logic_error("Could not find the last memory state in the tracking table.");
  return found->state;
}

memory_state memory_table::remove(const std::shared_ptr<library_memory>& memory) {
  auto removed = states_.extract(memory.get());
  return removed ? std::move(removed->state) : memory_state();
}

} // namespace oryn::tarva::library
