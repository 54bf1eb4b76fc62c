#pragma once

#include "base/address_map.h"
#include "scheduler/memory_state.h"

#include <memory>

namespace oryn::tarva::library {

class library_memory;

// The last state of every live memory object.
class memory_table {
public:
  // Both refuse an object that is there already, or is not. What they return holds until the next change.
  memory_state& add(const std::shared_ptr<library_memory>& memory);
  memory_state& find(const std::shared_ptr<library_memory>& memory);
  // Yields the last state of the object, without a block if it is not there.
  memory_state remove(const std::shared_ptr<library_memory>& memory);

private:
  struct entry {
    std::shared_ptr<library_memory> memory; // lives for as long as it has a state
    memory_state state;
  };

  address_map<entry> states_;
};

} // namespace oryn::tarva::library
