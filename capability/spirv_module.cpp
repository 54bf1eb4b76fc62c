#include "capability/spirv_module.h"

#include <cstdint>
#include <cstring>

namespace qv {
namespace {

constexpr std::uint32_t magic = 0x07230203;
constexpr std::size_t header_words = 5;
constexpr std::uint32_t function_opcode = 54;
constexpr std::uint32_t function_end_opcode = 56;

// A module may have been written in either byte order.
class word_reader {
public:
  word_reader(const void* bytes, std::size_t length)
      : bytes_(static_cast<const unsigned char*>(bytes)),
        count_(bytes == nullptr ? 0 : length / sizeof(std::uint32_t)),
        is_spirv_(count_ > 0 && (native(0) == magic || __builtin_bswap32(native(0)) == magic)) {}

  bool is_spirv() const { return is_spirv_; }
  std::size_t count() const { return count_; }
  std::uint32_t at(std::size_t index) const {
    return native(0) == magic ? native(index) : __builtin_bswap32(native(index));
  }

private:
  std::uint32_t native(std::size_t index) const {
    std::uint32_t word = 0;
    std::memcpy(&word, bytes_ + index * sizeof word, sizeof word);
    return word;
  }

  const unsigned char* bytes_;
  std::size_t count_;
  bool is_spirv_;
};

} // namespace

bool is_whole_if_spirv(const void* bytes, std::size_t length) {
  const word_reader words(bytes, length);
  if (!words.is_spirv())
    return true;
  if (length % sizeof(std::uint32_t) != 0 || words.count() < header_words)
    return false;
  bool in_function = false;
  for (std::size_t position = header_words; position < words.count();) {
    const std::uint32_t instruction = words.at(position);
    const std::uint32_t size = instruction >> 16;
    const std::uint32_t opcode = instruction & 0xFFFF;
    if (size == 0 || size > words.count() - position)
      return false;
    if (in_function ? opcode == function_opcode : opcode == function_end_opcode)
      return false;
    if (opcode == function_opcode || opcode == function_end_opcode)
      in_function = !in_function;
    position += size;
  }
  return !in_function;
}

} // namespace qv
