// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Elements of arrays of any data type: reading one as a C++ value, and its text.
#pragma once

#include "properties/data_type.h"
#include "properties/text_buffer.h"

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace oryn::tarva::library {

// A 16-bit floating-point value as it lies in memory: sign, five bits of exponent, ten of mantissa.
struct half {
  std::uint16_t bits = 0;
};

// Exact: each half is a float, too.
float half_to_float(half value);

// How the elements of a type are held in C++: strings as pointers to their characters, vectors as arrays.
template <class T>
struct element_shape {
  static_assert(std::is_arithmetic_v<T>);
  using component = T;
  static constexpr component_kind kind = std::is_floating_point_v<T> ? component_kind::floating_point
                                         : std::is_signed_v<T>       ? component_kind::signed_integer
                                                                     : component_kind::unsigned_integer;
  static constexpr std::size_t component_bytes = sizeof(T);
  static constexpr std::size_t components = 1;
};

// An element that is a string is a pointer to its characters, whatever its type says of its size.
template <>
struct element_shape<const char*> {
  static constexpr component_kind kind = component_kind::character;
  static constexpr std::size_t component_bytes = 1;
  static constexpr std::size_t components = 1;
};

// Four bytes, of which any that is not 0 makes it true.
template <>
struct element_shape<bool> {
  static constexpr component_kind kind = component_kind::boolean;
  static constexpr std::size_t component_bytes = 4;
  static constexpr std::size_t components = 1;
};

template <>
struct element_shape<half> {
  static constexpr component_kind kind = component_kind::half;
  static constexpr std::size_t component_bytes = 2;
  static constexpr std::size_t components = 1;
};

template <class T, std::size_t n>
struct element_shape<std::array<T, n>> : element_shape<T> {
  static constexpr std::size_t components = n;
};

// The data type whose elements T holds.
template <class T>
consteval data_type data_type_of() {
  using shape = element_shape<T>;
  for (std::uint64_t value = first_data_type; value <= last_data_type; ++value) {
    const data_type_row& row = data_type_table[value - 1];
    if (row.kind == shape::kind && row.component_bytes == shape::component_bytes &&
        row.components == shape::components)
      return data_type{value};
  }
  throw "no data type has elements of this kind";
}

// Element `index` of an array of elements of `type`. Throws std::logic_error unless that is the type of T, and
// std::runtime_error if it is no type at all. The array need not be aligned.
template <class T>
T get_element(const void* data, data_type type, std::uint64_t index) {
  if (type != data_type_of<T>()) {
    if (find_data_type(type) == nullptr)
      throw std::runtime_error("Unhandled case.");
    throw std::logic_error("Mismatch between expected data type and provided data type.");
  }
  if constexpr (std::same_as<T, const char*>) {
    return static_cast<const char* const*>(data)[index];
  } else {
    const auto* element =
        static_cast<const unsigned char*>(data) + index * find_data_type(type)->element_bytes();
    std::conditional_t<std::same_as<T, bool>, std::uint32_t, T> value;
    std::memcpy(&value, element, sizeof(value));
    return static_cast<T>(value);
  }
}

// The text of element `index`, and the same text at the end of one that the caller is building. std::runtime_error if
// `type` is no data type.
std::string element_to_text(const void* data, data_type type, std::uint64_t index);
void append_element_text(text_buffer& out, const void* data, data_type type, std::uint64_t index);

} // namespace oryn::tarva::library
