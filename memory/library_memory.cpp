// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "memory/library_memory.h"

#include "base/unique_identifier.h"
#include "properties/property_value.h"

#include <limits>
#include <utility>

namespace oryn::tarva::library {

library_memory::library_memory(data_type type, std::uint64_t num_elements, std::string user_label)
    : identifier_(oryn::tarva::library::get_unique_identifier()), type_(type), num_elements_(num_elements),
      user_label_(std::move(user_label)) {}

std::uint64_t library_memory::get_size_in_bytes() const {
  constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
  const std::uint64_t size = element_size(type_);
  return num_elements_ > largest / size ? largest : size * num_elements_;
}

// Few properties without versions: they need no catalogue, as those of devices do.
std::shared_ptr<property_base> library_memory::get_property(property_path path) {
  if (is_path(path, {"ROOT"})) {
    return make_described_property(
        this, std::move(path), "Root property.",
        "The root property of a memory object, simply provided as the main root element.");
  }
  if (is_path(path, {"ROOT", "USER_LABEL"})) {
    return make_described_property(this, std::move(path), "User Label", "User-supplied label for the memory",
                                   user_label_);
  }
  if (is_path(path, {"ROOT", "NUM_ELEMENTS"})) {
    return make_described_property(this, std::move(path), "Number of elements.",
                                   "The number of elements contained within the memory allocation.",
                                   num_elements_);
  }
  if (is_path(path, {"ROOT", "TYPE"})) {
    return make_described_property(this, std::move(path), "Memory data type",
                                   "The data type of the memory allocation.",
                                   static_cast<std::uint64_t>(type_));
  }
  if (is_path(path, {"ROOT", "OBJECT_ID"})) {
    return make_described_property(this, std::move(path), "Object Identifier",
                                   "A unique identifier for the TARVA object.", identifier_);
  }
  return std::make_shared<property_base>();
}

std::vector<std::string> library_memory::get_child_names(const property_path& path) {
  if (is_path(path, {"ROOT"}))
    return {"USER_LABEL", "NUM_ELEMENTS", "TYPE", "OBJECT_ID"};
  return {};
}

} // namespace oryn::tarva::library
