// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The arguments of a launch.
#pragma once

#include "properties/data_type.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <variant>
#include <vector>

namespace oryn::tarva::library {

class device_memory;
class library_memory;

// The kinds of argument that a caller gives.

// A null buffer.
struct kernel_argument_nullptr {};

// A value passed by copy. Its bytes stand in the capture, in host byte order.
struct kernel_argument_pod_value {
  data_type type;
  std::size_t position; // among the pieces
};

// Room in the device's local memory, without data.
struct kernel_argument_local_memory {
  data_type type;
  std::uint64_t num_elements;
};

// A memory object as the user named it.
using kernel_argument_typed_library_memory_array = std::shared_ptr<library_memory>;

using kernel_argument =
    std::variant<kernel_argument_nullptr, kernel_argument_pod_value, kernel_argument_local_memory,
                 kernel_argument_typed_library_memory_array>;

// The device block that stands in for a memory object in one launch. A plain pointer: the scheduler keeps the block until the
// launch has ended, and counting its users would make a launch with 64 arguments 4% slower.
using kernel_argument_typed_device_memory_array = device_memory*;

// The arguments of one launch, in the order of the kernel's parameters. Filled by the caller's thread and constant from then on:
// the logical operation holds them, and all levels below look at them there.
struct kernel_argument_capture {
  // Aligned for every type. Most values take one; a large one takes several in a row.
  struct alignas(16) value_piece {
    std::uint8_t bytes[16];
  };

  // Copies one element of `type` from `pointer`. It begins a piece of its own, and so is aligned whatever came before it.
  void add_value(const void* pointer, data_type type) {
    const std::uint64_t size = check_element(pointer, type);
    if (values.empty())
      values.reserve(arguments.capacity() - arguments.size());
    const std::size_t position = values.size();
    if (size <= sizeof(value_piece))
      values.emplace_back(); // most values, and cheaper
    else
      values.resize(position + (size + sizeof(value_piece) - 1) / sizeof(value_piece));
    std::memcpy(values.data() + position, pointer, size);
    arguments.emplace_back(kernel_argument_pod_value{type, position});
  }
  std::span<const std::uint8_t> get_raw_data(const kernel_argument_pod_value& value) const {
    return {values[value.position].bytes, element_size(value.type)};
  }

  std::vector<kernel_argument> arguments;
  std::vector<value_piece> values; // of all arguments together, so that many take few allocations
};

} // namespace oryn::tarva::library
