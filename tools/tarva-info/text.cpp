// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "tools/tarva-info/text.h"

#include "base/printable_text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tarva_info {
namespace {

std::string formatted(const char* format, double number, const char* text) {
  std::array<char, 64> buffer{};
  std::snprintf(buffer.data(), buffer.size(), format, number, text);
  return buffer.data();
}

} // namespace

std::string printable(std::string_view text) {
  std::string result;
  oryn::write_printable(text, [&result](std::string_view part) { result += part; });
  return result;
}

std::string printable_lines(std::string_view text) {
  std::string result;
  while (true) {
    const std::size_t end = text.find('\n');
    result += printable(text.substr(0, end));
    if (end == std::string_view::npos)
      return result;
    result += '\n';
    text.remove_prefix(end + 1);
  }
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
    const std::size_t length = std::max<std::size_t>(oryn::character_length(text), 1);
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
  result.is_terminal = true;
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
