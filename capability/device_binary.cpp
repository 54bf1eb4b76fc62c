#include "capability/device_binary.h"

#include <cstdint>
#include <cstring>

namespace qv {
namespace {

// Takes little-endian numbers and blocks off the front of a binary; whole() turns false at the first that
// does not fit.
class binary_reader {
public:
  binary_reader(const unsigned char* data, std::size_t size) : data_(data), size_(size) {}

  template <typename Number>
  Number number() {
    Number value = 0;
    const unsigned char* from = block(sizeof value);
    if (from != nullptr)
      std::memcpy(&value, from, sizeof value);
    return value;
  }

  // Null if there are not that many bytes.
  const unsigned char* block(std::uint64_t size) {
    if (!whole_ || size > size_) {
      whole_ = false;
      return nullptr;
    }
    const unsigned char* from = data_;
    data_ += size;
    size_ -= size;
    return from;
  }

  bool whole() const { return whole_; }
  bool at_end() const { return whole_ && size_ == 0; }

private:
  const unsigned char* data_;
  std::size_t size_;
  bool whole_ = true;
};

// Files as PoCL strings them together: the length of the name, the name, the length of the content, the
// content.
bool are_whole_files(binary_reader files) {
  while (files.whole() && !files.at_end()) {
    files.block(files.number<std::uint32_t>());
    files.block(files.number<std::uint32_t>());
  }
  return files.at_end();
}

// PoCL's own format: a header, the program's files, then one block a kernel, each led by its length. Other
// formats, such as bitcode, PoCL tells apart by itself; other versions of this one cannot be judged here.
bool is_harmless_to_pocl(const unsigned char* binary, std::size_t length) {
  constexpr char magic[] = "poclbin"; // with its zero
  constexpr std::uint32_t known_version = 9;
  constexpr std::size_t rest_of_header = 53;
  if (length < sizeof magic || std::memcmp(binary, magic, sizeof magic) != 0)
    return true;

  binary_reader reader(binary, length);
  reader.block(sizeof magic + sizeof(std::uint64_t));
  const auto version = reader.number<std::uint32_t>();
  const auto kernels = reader.number<std::uint32_t>();
  if (reader.whole() && version != known_version)
    return true;
  reader.block(rest_of_header);

  const auto files_size = reader.number<std::uint64_t>();
  const unsigned char* files = reader.block(files_size);
  if (files == nullptr || !are_whole_files(binary_reader(files, files_size)))
    return false;
  for (std::uint32_t i = 0; i < kernels && reader.whole(); ++i) {
    const auto kernel_size = reader.number<std::uint64_t>();
    if (kernel_size < sizeof kernel_size)
      return false;
    reader.block(kernel_size - sizeof kernel_size);
  }
  return reader.at_end();
}

// rusticl: a version, the length of the SPIR-V module, its kind, the module.
bool is_harmless_to_rusticl(const unsigned char* binary, std::size_t length) {
  constexpr std::uint32_t known_version = 1;
  constexpr std::uint32_t spirv_magic = 0x07230203;
  binary_reader reader(binary, length);
  const auto version = reader.number<std::uint32_t>();
  const auto module_size = reader.number<std::uint32_t>();
  reader.number<std::uint32_t>();
  const auto module_magic = reader.number<std::uint32_t>();
  if (module_size < sizeof module_magic)
    return false;
  reader.block(module_size - sizeof module_magic);
  return version == known_version && module_magic == spirv_magic && reader.at_end();
}

} // namespace

bool is_harmless_binary(const quirks& known, const unsigned char* binary, std::size_t length) {
  if (known.aborts_on_foreign_binaries && !is_harmless_to_rusticl(binary, length))
    return false;
  return !known.asserts_on_truncated_binaries || is_harmless_to_pocl(binary, length);
}

} // namespace qv
