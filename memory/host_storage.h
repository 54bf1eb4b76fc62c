#pragma once

#include "base/large_block.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace oryn::tarva::library {

// Uninitialised bytes of the host's memory, or none.
class host_storage {
public:
  host_storage() = default;
  explicit host_storage(std::size_t bytes)
      : bytes_(bytes),
        data_(is_large(bytes) ? static_cast<std::uint8_t*>(map_large_block(bytes + offset)) + offset
                              : new std::uint8_t[bytes]) {}
  host_storage(host_storage&& other) noexcept
      : bytes_(std::exchange(other.bytes_, 0)), data_(std::exchange(other.data_, nullptr)) {}
  host_storage& operator=(host_storage&& other) noexcept {
    host_storage taken(std::move(other));
    std::swap(bytes_, taken.bytes_);
    std::swap(data_, taken.data_);
    return *this;
  }
  ~host_storage() {
    if (is_large(bytes_))
      unmap_large_block(data_ - offset, bytes_ + offset);
    else
      delete[] data_;
  }

  std::uint8_t* get() const { return data_; }
  explicit operator bool() const { return data_ != nullptr; }

private:
  // Large copies are several times slower on some processors if the destination begins a few bytes further into its
  // page than the source. Blocks of malloc begin at 16 and those of devices often at 128: from here, and to here, none
  // of them is slow.
  static constexpr std::size_t offset = 1024;

  static bool is_large(std::size_t bytes) {
    return bytes >= large_block_size && bytes <= std::numeric_limits<std::size_t>::max() - offset;
  }

  std::size_t bytes_ = 0;
  std::uint8_t* data_ = nullptr;
};

} // namespace oryn::tarva::library
