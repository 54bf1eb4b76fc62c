// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// SPIR-V modules.
#include "capability/program_checks.h"

#include "capability/opencl_queries.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace qv {
namespace {

// The numbers are those that SPIR-V gives them.
constexpr std::uint32_t magic = 0x07230203;
constexpr std::size_t header_words = 5;
constexpr std::uint32_t function_opcode = 54;
constexpr std::uint32_t function_end_opcode = 56;

// The words of a module, which may have been written in either byte order; its first word tells which. Bytes need not be
// aligned, and up to three of them may be left over.
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

// After the header a module is instructions, each led by its own length; functions do not nest. That is all that can be
// told without knowing each instruction, and enough for the compilers that are known to run past the end.
bool is_whole(const word_reader& words, std::size_t length) {
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

// The newest version of SPIR-V in a list such as "SPIR-V_1.0 SPIR-V_1.2", if there is one.
std::optional<opencl_version> newest_version(std::string_view list) {
  constexpr std::string_view prefix = "SPIR-V_";
  std::optional<opencl_version> newest;
  for (std::size_t at = list.find(prefix); at != std::string_view::npos; at = list.find(prefix)) {
    list.remove_prefix(at + prefix.size());
    if (const auto version = take_version(list); version && (!newest || *newest < *version))
      newest = version;
  }
  return newest;
}

// What a device does not tell is left to it.
bool is_too_new(const word_reader& words, const opencl_functions& cl, cl_device_id device) {
  const std::uint32_t version = words.at(1); // 0, major, minor, 0
  const auto newest = newest_version(device_text(cl, device, CL_DEVICE_IL_VERSION).value_or(""));
  return newest && *newest < opencl_version{version >> 16 & 0xFF, version >> 8 & 0xFF};
}

} // namespace

bool is_harmless_module(const opencl_functions& cl, cl_context context, const void* bytes,
                        std::size_t length) {
  const word_reader words(bytes, length);
  if (!words.is_spirv())
    return true;
  if (!is_whole(words, length))
    return false;
  const std::vector<cl_device_id> devices = context_devices(cl, context);
  return std::none_of(devices.begin(), devices.end(),
                      [&](cl_device_id device) { return is_too_new(words, cl, device); });
}

} // namespace qv
