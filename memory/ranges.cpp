// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "memory/ranges.h"

#include <stdexcept>

namespace oryn::tarva::library {

// The two kinds of copy are refused in different words, which callers have always seen.

void check_device_copy(const block_shape& source, std::uint64_t source_start, const block_shape& destination,
                       std::uint64_t destination_start, std::uint64_t count) {
  if (source.type != destination.type)
    throw std::logic_error("Memory allocations do not have the same data type.");
  if (!is_within(source_start, count, source.size))
    throw std::logic_error("Copy operation would overflow source capacity.");
  if (!is_within(destination_start, count, destination.size))
    throw std::logic_error("Copy operation would overflow destination capacity.");
}

void check_host_copy(const block_shape& source, std::uint64_t source_start, const block_shape& destination,
                     std::uint64_t destination_start, std::uint64_t count) {
  if (source.type != destination.type)
    throw std::logic_error("Cannot copy memory between host memory objects with different types.");
  if (!is_within(destination_start, count, destination.size) || !is_within(source_start, count, source.size))
    throw std::logic_error("Memory copy would overflow allocation capacity.");
}

void check_fill_range(std::uint64_t start, std::uint64_t count, std::uint64_t size) {
  if (!is_within(start, count, size))
    throw std::logic_error("Fill operation would overflow target capacity.");
}

void check_fill(const std::vector<std::uint8_t>& value, std::uint64_t start, std::uint64_t count,
                const block_shape& memory) {
  if (value.size() != element_size(memory.type))
    throw std::logic_error("Fill value is an incorrect size for the given type.");
  check_fill_range(start, count, memory.size);
}

} // namespace oryn::tarva::library
