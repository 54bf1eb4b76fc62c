#include "capability/administrator_log.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace qv {
namespace {

bool is_wanted() {
  const char* const value = secure_getenv("QV_LOG");
  return value != nullptr && *value != '\0' && std::string_view(value) != "0";
}

// What devices say of themselves may hold anything, at any length.
void append_printable(std::string& line, std::string_view text) {
  constexpr std::size_t most_bytes = 300;
  constexpr std::string_view digits = "0123456789abcdef";
  for (const char each : text.substr(0, most_bytes)) {
    const auto byte = static_cast<unsigned char>(each);
    if (byte >= ' ' && byte != 0x7F)
      line += each;
    else
      line.append("\\x").append(1, digits[byte >> 4]).append(1, digits[byte & 0xF]);
  }
}

} // namespace

void tell_administrator(std::initializer_list<std::string_view> parts) noexcept {
  if (!is_wanted())
    return;
  try {
    std::string line = "libqv: ";
    for (const std::string_view part : parts)
      append_printable(line, part);
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
  } catch (...) {
    // A line that cannot be made is no reason to leave out more.
  }
}

} // namespace qv
