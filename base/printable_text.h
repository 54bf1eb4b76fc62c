// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Text from elsewhere, such as what a driver calls its device, on its way to a log or a terminal. It may hold what ends a line and
// forges the next, moves the cursor, turns the direction of what follows, or is no text at all.
//
// This header needs nothing but the standard library, so that each library and tool of the project can include it.
#pragma once

#include <cstddef>
#include <string_view>

namespace oryn {

struct utf8_range {
  unsigned char first, last; // of the first byte
  std::size_t length;
  unsigned char low = 0x80, high = 0xBF; // of the second byte
};

// What leaves out overlong forms, surrogates and what lies behind the last character.
inline constexpr utf8_range utf8_ranges[] = {
    {0x00, 0x7F, 1},
    {0xC2, 0xDF, 2},
    {0xE0, 0xE0, 3, 0xA0},
    {0xE1, 0xEC, 3},
    {0xED, 0xED, 3, 0x80, 0x9F},
    {0xEE, 0xEF, 3},
    {0xF0, 0xF0, 4, 0x90},
    {0xF1, 0xF3, 4},
    {0xF4, 0xF4, 4, 0x80, 0x8F},
};

// The number of bytes of the UTF-8 character at the start of a text that is not empty, or 0 if there is none.
inline std::size_t character_length(std::string_view text) noexcept {
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  for (const utf8_range& range : utf8_ranges) {
    if (byte(0) < range.first || byte(0) > range.last)
      continue;
    if (text.size() < range.length || (range.length > 1 && (byte(1) < range.low || byte(1) > range.high)))
      return 0;
    for (std::size_t i = 2; i < range.length; ++i)
      if ((byte(i) & 0xC0) != 0x80)
        return 0;
    return range.length;
  }
  return 0;
}

// Whether a UTF-8 character is obeyed rather than shown: the control characters, among them those from U+0080 to U+009F, the
// separators of lines, and what embeds, overrides or isolates a direction.
inline bool is_control(std::string_view character) noexcept {
  const auto byte = [character](std::size_t i) { return static_cast<unsigned char>(character[i]); };
  switch (character.size()) {
  case 1:
    return byte(0) < 0x20 || byte(0) == 0x7F;
  case 2:
    return byte(0) == 0xC2 && byte(1) < 0xA0;
  case 3: // U+2028 to U+202E, U+2066 to U+2069
    return byte(0) == 0xE2 && ((byte(1) == 0x80 && byte(2) >= 0xA8 && byte(2) <= 0xAE) ||
                               (byte(1) == 0x81 && byte(2) >= 0xA6 && byte(2) <= 0xA9));
  default:
    return false;
  }
}

// Gives `write` the text in parts, one behind the other, with each byte of what must not be shown as \xNN.
template <class Writer>
void write_printable(std::string_view text, Writer write) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::size_t shown = 0; // of the beginning of `text`, not yet written
  while (shown < text.size()) {
    const std::size_t length = character_length(text.substr(shown));
    if (length != 0 && !is_control(text.substr(shown, length))) {
      shown += length;
      continue;
    }
    write(text.substr(0, shown));
    text.remove_prefix(shown);
    for (std::size_t i = length == 0 ? 1 : length; i != 0; --i) {
      const auto byte = static_cast<unsigned char>(text[0]);
      const char escaped[] = {'\\', 'x', digits[byte >> 4], digits[byte & 0xF]};
      write(std::string_view(escaped, sizeof escaped));
      text.remove_prefix(1);
    }
    shown = 0;
  }
  write(text);
}

// The same with each backslash doubled, so that nothing in the text is taken for such a byte.
template <class Writer>
void write_escaped(std::string_view text, Writer write) {
  for (std::size_t place = text.find('\\'); place != text.npos; place = text.find('\\')) {
    write_printable(text.substr(0, place), write);
    write("\\\\");
    text.remove_prefix(place + 1);
  }
  write_printable(text, write);
}

} // namespace oryn
