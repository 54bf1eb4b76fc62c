#include "tools/tarva-info/text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tarva_info {
namespace {

struct utf8_range {
  unsigned char first, last; // of the first byte
  std::size_t length;
  unsigned char low = 0x80, high = 0xBF; // of the second byte
};

// What leaves out overlong forms, surrogates and what lies behind the last character.
constexpr utf8_range utf8_ranges[] = {
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

bool is_control(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  const bool is_c1 =
      character.size() == 2 && first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
  return first < 0x20 || first == 0x7F || is_c1;
}

std::string formatted(const char* format, double number, const char* text) {
  std::array<char, 64> buffer{};
  std::snprintf(buffer.data(), buffer.size(), format, number, text);
  return buffer.data();
}

} // namespace

std::size_t character_length(std::string_view text) {
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

std::string printable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::size_t length = character_length(text);
    const std::string_view character = text.substr(0, length == 0 ? 1 : length);
    if (length != 0 && !is_control(character)) {
      result += character;
    } else {
      for (const char byte : character) {
        std::array<char, 8> escaped{};
        std::snprintf(escaped.data(), escaped.size(), "\\x%02x", static_cast<unsigned char>(byte));
        result += escaped.data();
      }
    }
    text.remove_prefix(character.size());
  }
  return result;
}

std::size_t width_of(std::string_view text) {
  std::size_t width = 0;
  for (const char byte : text)
    width += (static_cast<unsigned char>(byte) & 0xC0) != 0x80 ? 1 : 0;
  return width;
}

std::string padded(std::string_view text, std::size_t width) {
  const std::size_t taken = width_of(text);
  std::string result(text);
  result.append(taken < width ? width - taken : 0, ' ');
  return result;
}

std::string cut(std::string_view text, std::size_t width) {
  constexpr std::string_view dots = "...";
  if (width_of(text) <= width)
    return std::string(text);
  std::string result;
  while (width_of(result) + dots.size() < width) {
    const std::size_t length = std::max<std::size_t>(character_length(text), 1);
    result += text.substr(0, length);
    text.remove_prefix(length);
  }
  return result.append(dots);
}

std::string human_size(std::uint64_t bytes) {
  constexpr const char* units[] = {"KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
  if (bytes < 1024)
    return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
  std::size_t step = 0;
  while (step < 5 && bytes >> (10 * (step + 2)) != 0)
    ++step;
  const std::uint64_t one = std::uint64_t{1} << (10 * (step + 1));
  const double count = static_cast<double>(bytes) / static_cast<double>(one);
  return formatted(bytes % one == 0 ? "%.0f %s" : "%.2f %s", count, units[step]);
}

std::string human_number(std::uint64_t number, unit counted) {
  std::string plain = std::to_string(number);
  switch (counted) {
  case unit::bytes:
    return human_size(number) + (number < 1024 ? "" : " (" + plain + " bytes)");
  case unit::bits:
    return plain + " bits";
  case unit::megahertz:
    return plain + " MHz";
  case unit::nanoseconds:
    return plain + " ns";
  case unit::pixels:
    return plain + " pixels";
  default:
    return plain;
  }
}

std::string style::painted(std::string_view text, std::string_view colour) const {
  return coloured ? std::string(colour).append(text).append("\033[0m") : std::string(text);
}

style style_of_standard_output() {
  style result;
  if (isatty(STDOUT_FILENO) == 0)
    return result;
  const char* terminal = std::getenv("TERM");
  const char* no_colour = std::getenv("NO_COLOR");
  result.coloured = terminal != nullptr && std::string_view(terminal) != "dumb" &&
                    (no_colour == nullptr || *no_colour == '\0');
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0)
    result.line_width = size.ws_col;
  return result;
}

} // namespace tarva_info
