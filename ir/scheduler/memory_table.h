#pragma once

#include "ir/scheduler/memory_state.h"

#include <memory>
#include <unordered_map>

namespace oryn::tarva::library {

class library_memory;

// The last state of every live memory object.
class memory_table {
public:
  // Both refuse an object that is there already, or is not.
  memory_state& add(const std::shared_ptr<library_memory>& memory);
  memory_state& find(const std::shared_ptr<library_memory>& memory);
  void remove(const std::shared_ptr<library_memory>& memory) { states_.erase(memory); }

private:
  std::unordered_map<std::shared_ptr<library_memory>, memory_state> states_;
};

} // namespace oryn::tarva::library
