// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The data types of the library: those of properties, and those of the elements of memory objects and of kernel
// arguments. One table says what each is; sizes, names, texts and byte orders all come from it. Plain values without
// state, for any thread.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace oryn::tarva::library {

// The values, which reach callers and come from them, are those of the public interface; 0 stands for no type.
enum class data_type : std::uint64_t {
  string_ = 1,
  boolean_,
  uint8_,
  int8_,
  uint16_,
  int16_,
  uint32_,
  int32_,
  uint64_,
  int64_,
  half_,
  float_,
  double_,
  uint8v2_,
  uint8v3_,
  uint8v4_,
  uint8v8_,
  uint8v16_,
  int8v2_,
  int8v3_,
  int8v4_,
  int8v8_,
  int8v16_,
  uint16v2_,
  uint16v3_,
  uint16v4_,
  uint16v8_,
  uint16v16_,
  int16v2_,
  int16v3_,
  int16v4_,
  int16v8_,
  int16v16_,
  uint32v2_,
  uint32v3_,
  uint32v4_,
  uint32v8_,
  uint32v16_,
  int32v2_,
  int32v3_,
  int32v4_,
  int32v8_,
  int32v16_,
  uint64v2_,
  uint64v3_,
  uint64v4_,
  uint64v8_,
  uint64v16_,
  int64v2_,
  int64v3_,
  int64v4_,
  int64v8_,
  int64v16_,
  half2_,
  half3_,
  half4_,
  half8_,
  half16_,
  float2_,
  float3_,
  float4_,
  float8_,
  float16_,
  double2_,
  double3_,
  double4_,
  double8_,
  double16_,
};

// The ends of the enumeration; callers may pass any number for a type.
inline constexpr std::uint64_t first_data_type = 1;
inline constexpr std::uint64_t last_data_type = 68;

// How the bits of one component are to be understood.
enum class component_kind : std::uint8_t {
  character,
  boolean,
  unsigned_integer,
  signed_integer,
  half,
  floating_point,
};

// What a type is made of: its name as users read it, and the kind, the size and the number of its components.
struct data_type_row {
  const char* name;
  component_kind kind;
  std::uint8_t component_bytes;
  std::uint8_t components;

  // OpenCL gives three components the room of four.
  constexpr std::uint64_t element_bytes() const {
    return std::uint64_t{component_bytes} * (components == 3 ? 4u : components);
  }
};

// One row a type, in the order of the enumerators; row 0 is type 1.
inline constexpr std::array<data_type_row, last_data_type> data_type_table = {{
    {"string", component_kind::character, 1, 1},
    {"boolean", component_kind::boolean, 4, 1},
    {"uint8_t", component_kind::unsigned_integer, 1, 1},
    {"int8_t", component_kind::signed_integer, 1, 1},
    {"uint16_t", component_kind::unsigned_integer, 2, 1},
    {"int16_t", component_kind::signed_integer, 2, 1},
    {"uint32_t", component_kind::unsigned_integer, 4, 1},
    {"int32_t", component_kind::signed_integer, 4, 1},
    {"uint64_t", component_kind::unsigned_integer, 8, 1},
    {"int64_t", component_kind::signed_integer, 8, 1},
    {"half", component_kind::half, 2, 1},
    {"float", component_kind::floating_point, 4, 1},
    {"double", component_kind::floating_point, 8, 1},
    {"uint8v2_t", component_kind::unsigned_integer, 1, 2},
    {"uint8v3_t", component_kind::unsigned_integer, 1, 3},
    {"uint8v4_t", component_kind::unsigned_integer, 1, 4},
    {"uint8v8_t", component_kind::unsigned_integer, 1, 8},
    {"uint8v16_t", component_kind::unsigned_integer, 1, 16},
    {"int8v2_t", component_kind::signed_integer, 1, 2},
    {"int8v3_t", component_kind::signed_integer, 1, 3},
    {"int8v4_t", component_kind::signed_integer, 1, 4},
    {"int8v8_t", component_kind::signed_integer, 1, 8},
    {"int8v16_t", component_kind::signed_integer, 1, 16},
    {"uint16v2_t", component_kind::unsigned_integer, 2, 2},
    {"uint16v3_t", component_kind::unsigned_integer, 2, 3},
    {"uint16v4_t", component_kind::unsigned_integer, 2, 4},
    {"uint16v8_t", component_kind::unsigned_integer, 2, 8},
    {"uint16v16_t", component_kind::unsigned_integer, 2, 16},
    {"int16v2_t", component_kind::signed_integer, 2, 2},
    {"int16v3_t", component_kind::signed_integer, 2, 3},
    {"int16v4_t", component_kind::signed_integer, 2, 4},
    {"int16v8_t", component_kind::signed_integer, 2, 8},
    {"int16v16_t", component_kind::signed_integer, 2, 16},
    {"uint32v2_t", component_kind::unsigned_integer, 4, 2},
    {"uint32v3_t", component_kind::unsigned_integer, 4, 3},
    {"uint32v4_t", component_kind::unsigned_integer, 4, 4},
    {"uint32v8_t", component_kind::unsigned_integer, 4, 8},
    {"uint32v16_t", component_kind::unsigned_integer, 4, 16},
    {"int32v2_t", component_kind::signed_integer, 4, 2},
    {"int32v3_t", component_kind::signed_integer, 4, 3},
    {"int32v4_t", component_kind::signed_integer, 4, 4},
    {"int32v8_t", component_kind::signed_integer, 4, 8},
    {"int32v16_t", component_kind::signed_integer, 4, 16},
    {"uint64v2_t", component_kind::unsigned_integer, 8, 2},
    {"uint64v3_t", component_kind::unsigned_integer, 8, 3},
    {"uint64v4_t", component_kind::unsigned_integer, 8, 4},
    {"uint64v8_t", component_kind::unsigned_integer, 8, 8},
    {"uint64v16_t", component_kind::unsigned_integer, 8, 16},
    {"int64v2_t", component_kind::signed_integer, 8, 2},
    {"int64v3_t", component_kind::signed_integer, 8, 3},
    {"int64v4_t", component_kind::signed_integer, 8, 4},
    {"int64v8_t", component_kind::signed_integer, 8, 8},
    {"int64v16_t", component_kind::signed_integer, 8, 16},
    {"half2", component_kind::half, 2, 2},
    {"half3", component_kind::half, 2, 3},
    {"half4", component_kind::half, 2, 4},
    {"half8", component_kind::half, 2, 8},
    {"half16", component_kind::half, 2, 16},
    {"float2", component_kind::floating_point, 4, 2},
    {"float3", component_kind::floating_point, 4, 3},
    {"float4", component_kind::floating_point, 4, 4},
    {"float8", component_kind::floating_point, 4, 8},
    {"float16", component_kind::floating_point, 4, 16},
    {"double2", component_kind::floating_point, 8, 2},
    {"double3", component_kind::floating_point, 8, 3},
    {"double4", component_kind::floating_point, 8, 4},
    {"double8", component_kind::floating_point, 8, 8},
    {"double16", component_kind::floating_point, 8, 16},
}};

// Null for a value that is no data type.
constexpr const data_type_row* find_data_type(data_type type) noexcept {
  const auto value = static_cast<std::uint64_t>(type);
  return value < first_data_type || value > last_data_type ? nullptr : &data_type_table[value - 1];
}

// Both throw std::logic_error: not a data type, and no element where there must be one.
[[noreturn]] void refuse_data_type();
[[noreturn]] void refuse_null_element();

// Of each type, by its number; 0 where there is none.
inline constexpr auto element_sizes = [] {
  std::array<std::uint8_t, last_data_type + 1> sizes{};
  for (std::uint64_t value = first_data_type; value <= last_data_type; ++value)
    sizes[value] = static_cast<std::uint8_t>(data_type_table[value - 1].element_bytes());
  return sizes;
}();

// Bytes from one element to the next; std::logic_error for a value that is no data type.
inline std::uint64_t element_size(data_type type) {
  const auto value = static_cast<std::uint64_t>(type);
  if (value < first_data_type || value > last_data_type)
    refuse_data_type();
  return element_sizes[value];
}

// As users read it; std::logic_error for a value that is no data type.
const char* data_type_name(data_type type);

// The size of the one element of `type` at `value`, which must not be null.
inline std::uint64_t check_element(const void* value, data_type type) {
  const std::uint64_t size = element_size(type);
  if (value == nullptr)
    refuse_null_element();
  return size;
}

// The bytes of that element.
std::vector<std::uint8_t> copy_element_bytes(const void* value, data_type type);

} // namespace oryn::tarva::library
