// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "properties/text_buffer.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string>

namespace oryn::tarva::library {

namespace {

// What is written goes straight into the buffer, whose room may be more than is used.
template <class Integer>
void append_integer(text_buffer& out, Integer number) {
  constexpr std::size_t longest = 24;
  char* const begin = out.room_for(longest);
  out.end_at(std::to_chars(begin, begin + longest, number).ptr);
}

} // namespace

void text_buffer::append_number(std::uint64_t number) {
  append_integer(*this, number);
}

void text_buffer::append_number(std::int64_t number) {
  append_integer(*this, number);
}

void text_buffer::append_number(double number) {
  constexpr std::size_t longest = 32;
  char* const begin = room_for(longest);
  end_at(std::to_chars(begin, begin + longest, number, std::chars_format::general, 6).ptr);
}

// At least doubled, so that a text is copied a few times at most; the first room takes most trees.
void text_buffer::reserve(std::size_t count) {
  constexpr std::size_t first_capacity = 4096;
  const auto size = static_cast<std::size_t>(end_ - begin_),
             capacity = static_cast<std::size_t>(limit_ - begin_);
  if (count > most_bytes - size)
    throw std::length_error(
        "The text of the properties would be longer than " + std::to_string(most_bytes) +
        " bytes.  Read its large values, such as the binary of a program, by themselves.");
  const std::size_t grown = std::max({first_capacity, std::min(2 * capacity, most_bytes), size + count});
  auto* data = static_cast<char*>(std::realloc(begin_, grown));
  if (data == nullptr)
    throw std::bad_alloc();
  begin_ = data;
  end_ = data + size;
  limit_ = data + grown;
}

} // namespace oryn::tarva::library
