// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Ranges of elements: what fits into a block and what does not. Here alone positions and counts, which are numbers of
// elements, are compared with sizes; none of it can wrap around.
#pragma once

#include "properties/data_type.h"

#include <cstdint>
#include <new>
#include <vector>

namespace oryn::tarva::library {

// True if `count` elements from `start` on stand within `size` elements, whatever the numbers.
constexpr bool is_within(std::uint64_t start, std::uint64_t count, std::uint64_t size) {
  return start <= size && count <= size - start;
}

// True if no process can hold `count` elements of `type`.
inline bool exceeds_address_space(data_type type, std::uint64_t count) {
  constexpr std::uint64_t largest_object = INT64_MAX;
  return count > largest_object / element_size(type);
}

// The bytes of `count` elements of `type`; std::bad_alloc if no process can hold them.
inline std::uint64_t size_in_bytes(data_type type, std::uint64_t count) {
  if (exceeds_address_space(type, count))
    throw std::bad_alloc();
  return element_size(type) * count;
}

// What a copy between two blocks needs to know of one of them.
struct block_shape {
  data_type type;
  std::uint64_t size;
};

// The refusals of a copy in which a device takes part. These functions throw std::logic_error.
void check_device_copy(const block_shape& source, std::uint64_t source_start, const block_shape& destination,
                       std::uint64_t destination_start, std::uint64_t count);

// The refusals of a copy between blocks of host memory.
void check_host_copy(const block_shape& source, std::uint64_t source_start, const block_shape& destination,
                     std::uint64_t destination_start, std::uint64_t count);

// The refusals of a fill, on the host and on a device alike. The value is one element.
void check_fill_range(std::uint64_t start, std::uint64_t count, std::uint64_t size);
void check_fill(const std::vector<std::uint8_t>& value, std::uint64_t start, std::uint64_t count,
                const block_shape& memory);

} // namespace oryn::tarva::library
