#include "properties/element.h"

#include <charconv>

namespace oryn::tarva::library {
namespace {

template <typename T>
void append_integer(text_buffer& out, T value) {
  constexpr std::size_t longest = 24;
  char* const begin = out.room_for(longest);
  out.grow(static_cast<std::size_t>(std::to_chars(begin, begin + longest, value).ptr - begin));
}

// Six significant digits, as a stream prints by default, but untouched by the locale of the host process.
void append_floating_point(text_buffer& out, double value) {
  constexpr std::size_t longest = 32;
  char* const begin = out.room_for(longest);
  const auto end = std::to_chars(begin, begin + longest, value, std::chars_format::general, 6).ptr;
  out.grow(static_cast<std::size_t>(end - begin));
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
  append_floating_point(out, half_to_float(value));
}
void append_value(text_buffer& out, float value) {
  append_floating_point(out, value);
}
void append_value(text_buffer& out, double value) {
  append_floating_point(out, value);
}

template <std::integral T>
void append_value(text_buffer& out, T value) {
  if constexpr (sizeof(T) == 1)
    out.append_repeated(1, static_cast<char>(value));
  else
    append_integer(out, value);
}

// True when T holds one component of the row; prints it if so.
template <typename T>
bool append_component_as(text_buffer& out, const data_type_row& row, const void* data, std::uint64_t index) {
  using shape = element_shape<T>;
  if (row.kind != shape::kind || row.component_bytes != shape::component_bytes)
    return false;
  append_value(out, get_element<T>(data, data_type_of<T>(), index));
  return true;
}

template <typename... T>
bool append_component_as_one_of(text_buffer& out, const data_type_row& row, const void* data,
                                std::uint64_t index) {
  return (append_component_as<T>(out, row, data, index) || ...);
}

void append_component(text_buffer& out, const data_type_row& row, const void* data, std::uint64_t index) {
  append_component_as_one_of<const char*, bool, std::uint8_t, std::uint64_t, std::int8_t, std::uint16_t,
                             std::int16_t, std::uint32_t, std::int32_t, std::int64_t, half, float, double>(
      out, row, data, index);
}

} // namespace

void append_decimal(text_buffer& out, std::uint64_t number) {
  append_integer(out, number);
}

void append_element_text(text_buffer& out, const void* data, data_type type, std::uint64_t index) {
  // Nearly all elements are of these; the table is for the rest.
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
    break;
  }
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

std::string element_to_text(const void* data, data_type type, std::uint64_t index) {
  text_buffer text;
  append_element_text(text, data, type, index);
  return std::string(text.view());
}

} // namespace oryn::tarva::library
