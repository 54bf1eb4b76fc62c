#pragma once

#include "properties/data_type.h"

#include <cstdint>
#include <stdexcept>
#include <vector>

namespace oryn::tarva::library {

// The size of the one element of `type` at `value`, which must not be null.
inline std::uint64_t check_element(const void* value, data_type type) {
  const std::uint64_t size = element_size(type);
  if (value == nullptr)
    throw std::logic_error(
        "NULL pointer provided as a pointer to a value, but the data type has a non-zero size.");
  return size;
}

// The bytes of that element.
inline std::vector<std::uint8_t> copy_element_bytes(const void* value, data_type type) {
  const std::uint64_t size = check_element(value, type);
  const auto* bytes = static_cast<const std::uint8_t*>(value);
  return std::vector<std::uint8_t>(bytes, bytes + size);
}

} // namespace oryn::tarva::library
