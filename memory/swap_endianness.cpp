#include "memory/swap_endianness.h"

#include <algorithm>
#include <stdexcept>

namespace oryn::tarva::library {

void swap_endianness(void* base, data_type type, std::uint64_t offset, std::uint64_t count) {
  const data_type_row* row = find_data_type(type);
  if (row == nullptr)
    throw std::logic_error("Unhandled type.");
  if (row->component_bytes == 1 || row->kind == component_kind::boolean)
    return;
  const std::uint64_t stride = row->element_bytes();
  auto* element = static_cast<std::uint8_t*>(base) + stride * offset;
  for (std::uint64_t i = 0; i < count; ++i, element += stride)
    for (unsigned component = 0; component < row->components; ++component) {
      auto* first = element + component * row->component_bytes;
      std::reverse(first, first + row->component_bytes);
    }
}

} // namespace oryn::tarva::library
