#include "capability/utf8.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace qv {

bool is_utf8(std::string_view text) {
  constexpr std::array<std::uint32_t, 4> smallest_of_length{0, 0x80, 0x800, 0x10000};
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i++]);
    const std::size_t more = lead < 0x80 ? 0 : lead < 0xC0 ? 4 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    if (more > text.size() - i || lead > 0xF4)
      return false;
    std::uint32_t code = more == 0 ? lead : lead & (0x3Fu >> more);
    for (const char each : text.substr(i, more)) {
      if ((static_cast<unsigned char>(each) & 0xC0) != 0x80)
        return false;
      code = code << 6 | (static_cast<unsigned char>(each) & 0x3F);
    }
    i += more;
    if (more == 4 || code < smallest_of_length[more] || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000))
      return false;
  }
  return true;
}

} // namespace qv
