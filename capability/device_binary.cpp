// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Device binaries.
//
// These formats are not specified anywhere; what is known of them is what the implementations write. A binary is only walked
// through from length to length, never interpreted, and passes if its end is where the last length says.
#include "capability/program_checks.h"

#include <cstdint>
#include <cstring>
#include <string_view>

namespace qv {
namespace {

// Takes little-endian numbers and blocks off the front of a binary; whole() turns false at the first that
// does not fit.
class binary_reader {
public:
  binary_reader(const unsigned char* data, std::size_t size) : data_(data), size_(size) {}

  template <class Number>
  Number number() {
    Number value = 0;
    const unsigned char* from = data_;
    if (skip(sizeof value))
      std::memcpy(&value, from, sizeof value);
    return value;
  }

  bool skip(std::uint64_t size) {
    whole_ = whole_ && size <= size_;
    if (whole_) {
      data_ += size;
      size_ -= size;
    }
    return whole_;
  }

  // Skips so many elements as are told in front of them, and tells how many.
  std::uint32_t list(std::size_t size_of_element) {
    const auto count = number<std::uint32_t>();
    skip(std::uint64_t{count} * size_of_element);
    return count;
  }

  // The next `size` bytes by themselves. Not whole if there are fewer.
  binary_reader part(std::uint64_t size) {
    binary_reader front(data_, size);
    front.whole_ = skip(size);
    return front;
  }

  bool begins_with(std::string_view magic) const {
    return whole_ && size_ >= magic.size() && std::memcmp(data_, magic.data(), magic.size()) == 0;
  }
  bool whole() const { return whole_; }
  bool at_end() const { return whole_ && size_ == 0; }

private:
  const unsigned char* data_;
  std::size_t size_;
  bool whole_ = true;
};

// A file as PoCL strings them together: the length of its name, the name, the length of its content, the
// content. It has a name.
bool skip_file(binary_reader& reader) {
  const bool has_name = reader.list(1) != 0;
  reader.list(1);
  return has_name && reader.whole();
}

bool are_whole_files(binary_reader files) {
  while (files.whole() && !files.at_end())
    if (!skip_file(files))
      return false;
  return files.at_end();
}

// One kernel of PoCL's, led by the lengths of all of it, of the files at its end, of what is told of its
// parameters, and of its name, which follows.
bool skip_kernel(binary_reader& reader) {
  constexpr std::uint64_t lengths = 24;
  const auto size = reader.number<std::uint64_t>();
  const auto files_size = reader.number<std::uint64_t>();
  reader.number<std::uint32_t>();
  const auto name_size = reader.number<std::uint32_t>();
  if (name_size == 0 || size < lengths || files_size > size - lengths ||
      name_size > size - lengths - files_size)
    return false;
  reader.skip(size - lengths - files_size);
  return are_whole_files(reader.part(files_size));
}

// PoCL's own format: a header, files of the program, the kernels. Other formats, such as bitcode, PoCL tells
// apart by itself. Version 9 began to put the program's files into groups, version 10 to tell how large its
// variables are; what came after the newest cannot be judged.
bool is_harmless_to_pocl(binary_reader reader) {
  constexpr std::string_view magic("poclbin\0", 8);
  constexpr std::uint32_t oldest = 8;
  constexpr std::uint32_t newest = 12;
  constexpr std::uint64_t has_variables = 2;
  constexpr std::size_t hash_size = 41;
  if (!reader.begins_with(magic))
    return true;
  reader.skip(magic.size() + sizeof(std::uint64_t));
  const auto version = reader.number<std::uint32_t>();
  const auto kernels = reader.number<std::uint32_t>();
  const auto flags = reader.number<std::uint64_t>();
  if (version < oldest || version > newest)
    return false;
  const auto groups = version < 9 ? 0 : reader.number<std::uint32_t>();
  reader.skip(hash_size);
  if (version >= 10 && (flags & has_variables) != 0)
    reader.number<std::uint64_t>();

  if (version < 9 && !skip_file(reader))
    return false;
  for (std::uint32_t i = 0; i < groups && reader.whole(); ++i)
    if (!are_whole_files(reader.part(reader.number<std::uint64_t>())))
      return false;
  for (std::uint32_t i = 0; i < kernels && reader.whole(); ++i)
    if (!skip_kernel(reader))
      return false;
  return reader.at_end();
}

// rusticl: a version, the length of the SPIR-V module, its kind, the module. Newer ones, such as Mesa 25's, begin with a
// name, have the length of the device's name in front of that of the module, and the name in front of the module.
bool is_harmless_to_rusticl(binary_reader reader) {
  constexpr std::string_view magic("rusticl\0", 8);
  constexpr std::uint32_t known_version = 1;
  constexpr std::uint32_t spirv_magic = 0x07230203;
  const bool is_newer = reader.begins_with(magic);
  if (is_newer)
    reader.skip(magic.size());
  const auto version = reader.number<std::uint32_t>();
  const auto name_size = is_newer ? reader.number<std::uint32_t>() : 0;
  const auto module_size = reader.number<std::uint32_t>();
  reader.number<std::uint32_t>();
  reader.skip(name_size);
  const auto module_magic = reader.number<std::uint32_t>();
  if (module_size < sizeof module_magic)
    return false;
  reader.skip(module_size - sizeof module_magic);
  return version == known_version && module_magic == spirv_magic && reader.at_end();
}

// Clover: lists of kernels, of sections of code and of texts to print, and a number.
bool is_harmless_to_clover(binary_reader reader) {
  constexpr std::size_t numbers_of_argument = 6;
  constexpr std::size_t numbers_of_section = 3;
  for (auto kernels = reader.number<std::uint32_t>(); kernels > 0 && reader.whole(); --kernels) {
    reader.list(1);                                           // its name
    reader.list(1);                                           // its attributes
    reader.list(sizeof(std::uint64_t));                       // the work-group size that it demands
    reader.skip(2 * sizeof(std::uint32_t));                   // its section, and its place there
    reader.list(numbers_of_argument * sizeof(std::uint32_t)); // its arguments
  }
  for (auto sections = reader.number<std::uint32_t>(); sections > 0 && reader.whole(); --sections) {
    reader.skip(numbers_of_section * sizeof(std::uint32_t));
    reader.list(1);
  }
  for (auto texts = reader.number<std::uint32_t>(); texts > 0 && reader.whole(); --texts) {
    reader.list(sizeof(std::uint32_t));
    reader.list(1);
  }
  reader.number<std::uint32_t>();
  return reader.at_end();
}

} // namespace

bool is_harmless_binary(const quirks& known, const unsigned char* binary, std::size_t length) {
  const binary_reader reader(binary, length);
  // Bitcode as it is, or in the wrapper that some linkers put around it.
  if (known.crashes_on_bitcode && (reader.begins_with("BC") || reader.begins_with("\xDE\xC0\x17\x0B")))
    return false;
  switch (known.binaries) {
  case binary_format::pocl:
    return is_harmless_to_pocl(reader);
  case binary_format::rusticl:
    return is_harmless_to_rusticl(reader);
  case binary_format::clover:
    return is_harmless_to_clover(reader);
  case binary_format::checked_by_itself:
    break;
  }
  return true;
}

} // namespace qv
