#include "ir/scheduler/memory_table.h"

#include "memory/library_memory.h"

#include <stdexcept>

namespace oryn::tarva::library {

memory_state& memory_table::add(const std::shared_ptr<library_memory>& memory) {
  const auto [entry, is_new] = states_.try_emplace(memory);
  if (!is_new)
    throw std::logic_error("Last memory state already exists in the tracking table, but it should not.");
  return entry->second;
}

memory_state& memory_table::find(const std::shared_ptr<library_memory>& memory) {
  const auto entry = states_.find(memory);
  if (entry == states_.end())
    throw std::logic_error("Could not find the last memory state in the tracking table.");
  return entry->second;
}

} // namespace oryn::tarva::library
