// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "properties/element.h"

#include <cmath>
#include <limits>

namespace oryn::tarva::library {
namespace {

// Of a half, from its exponent and mantissa as they lie there.
float magnitude(int exponent, int mantissa) {
  if (exponent == 31)
    return mantissa == 0 ? std::numeric_limits<float>::infinity() : std::numeric_limits<float>::quiet_NaN();
  if (exponent == 0)
    return std::ldexp(static_cast<float>(mantissa), -24);
  return std::ldexp(static_cast<float>(mantissa + 1024), exponent - 25);
}

void append_value(text_buffer& out, const char* value) {
  out.append(value);
}
void append_value(text_buffer& out, bool value) {
  if (value)
    out.append("true");
  else
    out.append("false");
}
void append_value(text_buffer& out, half value) {
  out.append_number(double{half_to_float(value)});
}
void append_value(text_buffer& out, std::floating_point auto value) {
  out.append_number(double{value});
}

// A byte is the character itself, not its number.
template <std::integral T>
void append_value(text_buffer& out, T value) {
  if constexpr (sizeof(T) == 1)
    out.append_repeated(1, static_cast<char>(value));
  else if constexpr (std::is_signed_v<T>)
    out.append_number(std::int64_t{value});
  else
    out.append_number(std::uint64_t{value});
}

// True when T holds one component of the row; prints it if so.
template <class T>
bool append_component_as(text_buffer& out, const data_type_row& row, const void* data, std::uint64_t index) {
  using shape = element_shape<T>;
  if (row.kind != shape::kind || row.component_bytes != shape::component_bytes)
    return false;
  append_value(out, get_element<T>(data, data_type_of<T>(), index));
  return true;
}

template <class... T>
bool append_component_as_one_of(text_buffer& out, const data_type_row& row, const void* data,
                                std::uint64_t index) {
  return (append_component_as<T>(out, row, data, index) || ...);
}

// Each kind and size of component has one type here.
void append_component(text_buffer& out, const data_type_row& row, const void* data, std::uint64_t index) {
  append_component_as_one_of<const char*, bool, std::uint8_t, std::uint64_t, std::int8_t, std::uint16_t,
                             std::int16_t, std::uint32_t, std::int32_t, std::int64_t, half, float, double>(
      out, row, data, index);
}

// A vector is its components in braces; of three components three are printed, although they take the room of four.
[[gnu::noinline]] void append_by_table(text_buffer& out, const void* data, data_type type,
                                       std::uint64_t index) {
  const data_type_row* row = find_data_type(type);
  if (row == nullptr)
    throw std::runtime_error("Unhandled case.  Report a bug.");
  if (row->components == 1) {
    append_component(out, *row, data, index);
    return;
  }
  const auto* element = static_cast<const unsigned char*>(data) + index * row->element_bytes();
  out.append("{");
  for (std::uint64_t component = 0; component < row->components; ++component) {
    if (component != 0)
      out.append(", ");
    append_component(out, *row, element, component);
  }
  out.append("}");
}

} // namespace

// The sign is that of the bits, also of a zero and of what is not a number.
float half_to_float(half value) {
  const float result = magnitude((value.bits >> 10) & 0x1f, value.bits & 0x3ff);
  return std::copysign(result, (value.bits & 0x8000) != 0 ? -1.0f : 1.0f);
}

// Nearly all elements are of the types that properties have; the table is for the rest.
void append_element_text(text_buffer& out, const void* data, data_type type, std::uint64_t index) {
  switch (type) {
  case data_type::string_:
    append_value(out, get_element<const char*>(data, data_type::string_, index));
    return;
  case data_type::boolean_:
    append_value(out, get_element<bool>(data, data_type::boolean_, index));
    return;
  case data_type::uint64_:
    append_value(out, get_element<std::uint64_t>(data, data_type::uint64_, index));
    return;
  default:
    append_by_table(out, data, type, index);
  }
}

std::string element_to_text(const void* data, data_type type, std::uint64_t index) {
  text_buffer text;
  append_element_text(text, data, type, index);
  return std::string(text.view());
}

} // namespace oryn::tarva::library
