// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Blocks of host memory, and the byte order of what is in them.
#pragma once

#include "base/large_block.h"
#include "properties/data_type.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

// Reverses the byte order of `count` elements of `type`, component by component and in place, from element
// `offset` of the block at `base` on. The fourth slot of a 3-component vector and a boolean are left as
// they are.
void swap_endianness(void* base, data_type type, std::uint64_t offset, std::uint64_t count);

// Uninitialised bytes of the host's memory, or none. Large storage gets pages of its own, since the first use of it would
// otherwise cost more than the copy that it is for.
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
  // Lets go of the bytes without giving them back.
  void leak() noexcept {
    bytes_ = 0;
    data_ = nullptr;
  }
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

// A typed block of host storage: the library's own, or a view of storage that the caller owns. All sizes and positions are
// numbers of elements.
//
// A block is described on the thread of a caller and then used by the commands of a worker. It has no lock: a caller touches
// it again only when the commands have ended, and the commands of one block run one after the other. What is wrong with a
// use of it throws std::logic_error; want of storage throws std::bad_alloc and leaves the block as it was.
class host_memory {
public:
  host_memory();
  ~host_memory();
  host_memory(const host_memory&) = delete;
  host_memory& operator=(const host_memory&) = delete;

  std::uint64_t get_unique_identifier() const { return identifier_; }
  bool is_set_up() const { return set_up_; }
  data_type get_type() const;
  std::uint64_t get_size() const;
  // True while the block has storage of its own.
  bool has_storage() const { return static_cast<bool>(owned_storage_); }
  // False for storage of the block's own into which nobody has put anything yet: copies out of it copy nothing. One
  // element makes all of it content, and what the caller owns always is.
  bool has_content() const { return !library_allocated_ || has_content_; }

  // Each of the three describes the block once; none obtains storage.
  void set_allocation(data_type type, std::uint64_t size);
  void set_user_allocation(void* pointer, data_type type, std::uint64_t size);
  void set_read_only_user_allocation(const void* pointer, data_type type, std::uint64_t size);

  // Obtains uninitialised storage, which is no content; what the block held before is lost.
  void allocate();
  void free();
  // For storage that a device may still use, nobody knows for how long. It stays as it is, and is never given back.
  void leave_to_device() noexcept { is_left_to_device_ = true; }

  // The address of element `index`, which may be one past the end. Who asks for one to write to gives the block content.
  void* get_write_pointer(std::uint64_t index);
  const void* get_read_pointer(std::uint64_t index) const;

  // Writes the one element in `value` into `count` elements from `offset` on.
  void fill(const std::vector<std::uint8_t>& value, std::uint64_t offset, std::uint64_t count);
  // Ranges of one object must not overlap. Leaves the destination as it is if there is no content to copy.
  void copy_to(const std::shared_ptr<host_memory>& destination, std::uint64_t source_offset,
               std::uint64_t destination_offset, std::uint64_t count) const;
  // Reverses the byte order of the whole content in place.
  void convert_endianness();

private:
  std::uint8_t* get_writable_address(std::uint64_t index) const;
  void give_back_storage() noexcept;
  void describe(data_type type, std::uint64_t size, bool library_allocated, bool writable, void* pointer);

  const std::uint64_t identifier_;
  data_type type_{};
  std::uint64_t size_ = 0;
  bool library_allocated_ = false;
  bool set_up_ = false;
  bool writable_ = false;
  bool has_content_ = false; // of the block's own storage
  bool is_left_to_device_ = false;
  void* user_pointer_ = nullptr;
  host_storage owned_storage_;
};

} // namespace oryn::tarva::library
