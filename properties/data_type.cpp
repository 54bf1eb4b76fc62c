// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "properties/data_type.h"

#include <stdexcept>

namespace oryn::tarva::library {

// Out of line, so that what a launch runs through has no code for them.
void refuse_data_type() {
  throw std::logic_error("Unsupported type.");
}

void refuse_null_element() {
  throw std::logic_error(
      "NULL pointer provided as a pointer to a value, but the data type has a non-zero size.");
}

const char* data_type_name(data_type type) {
  const data_type_row* row = find_data_type(type);
  if (row == nullptr)
    refuse_data_type();
  return row->name;
}

std::vector<std::uint8_t> copy_element_bytes(const void* value, data_type type) {
  const std::uint64_t size = check_element(value, type);
  const auto* bytes = static_cast<const std::uint8_t*>(value);
  return std::vector<std::uint8_t>(bytes, bytes + size);
}

} // namespace oryn::tarva::library
