// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Text for people and for terminals.
#pragma once

#include "tools/tarva-info/known_keys.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarva_info {

// Without what would move the cursor of a terminal or confuse it: such bytes become \xNN.
std::string printable(std::string_view text);
// The same for a text whose lines stay lines.
std::string printable_lines(std::string_view text);

// How many columns a text takes, if every character takes one.
std::size_t width_of(std::string_view text);

// The text, filled up with blanks on the right.
std::string padded(std::string_view text, std::size_t width);

// No wider than that: what is cut ends with three dots.
std::string cut(std::string_view text, std::size_t width);

// "1.50 GiB", "64 KiB", "12 bytes".
std::string human_size(std::uint64_t bytes);

// A number with its unit, and a large size also in bytes.
std::string human_number(std::uint64_t number, unit counted);

// The text of each value.
template <class T, class Function>
std::vector<std::string> texts_of(const std::vector<T>& values, Function text_of) {
  std::vector<std::string> texts;
  texts.reserve(values.size());
  for (const auto& value : values)
    texts.emplace_back(text_of(value));
  return texts;
}

// How the output looks: colours and the width of lines, both of a terminal only.
struct style {
  bool is_terminal = false;
  bool coloured = false;
  std::size_t line_width = static_cast<std::size_t>(-1);

  std::string heading(std::string_view text) const { return painted(text, "\033[1m"); }
  std::string error(std::string_view text) const { return painted(text, "\033[31m"); }

private:
  std::string painted(std::string_view text, std::string_view colour) const;
};

style style_of_standard_output();

} // namespace tarva_info
