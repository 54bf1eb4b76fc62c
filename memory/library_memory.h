// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Memory objects as the user sees them.
#pragma once

#include "memory/memory_state.h"
#include "properties/data_type.h"
#include "properties/property_interface.h"

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace oryn::tarva::library {

// The user's description of a block of typed elements, which never changes. It holds no storage; where its content is stands
// in an entry that is the scheduler's alone. Two objects with equal fields are different memory: identity is the address.
class library_memory : public property_interface {
public:
  library_memory(data_type type, std::uint64_t num_elements, std::string user_label);

  std::shared_ptr<property_base> get_property(property_path path) override;
  std::vector<std::string> get_child_names(const property_path& path) override;

  data_type get_type() const { return type_; }
  std::uint64_t get_num_elements() const { return num_elements_; }
  std::uint64_t get_unique_identifier() const { return identifier_; }
  // The largest number there is for more bytes than can be counted: no device can allocate as many.
  std::uint64_t get_size_in_bytes() const;

  // For the scheduler alone, which says who may use it when.
  memory_entry& get_scheduler_entry() { return entry_; }
  // Of an object that is in the table of the scheduler; an error if it is not.
  memory_state& get_state() {
    if (!entry_.memory)
      throw std::logic_error("Could not find the last memory state in the tracking table.");
    return entry_.state;
  }

private:
  std::uint64_t identifier_;
  data_type type_;
  std::uint64_t num_elements_;
  std::string user_label_;
  memory_entry entry_;
};

} // namespace oryn::tarva::library
