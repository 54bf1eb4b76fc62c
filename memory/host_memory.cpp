// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "memory/host_memory.h"

#include "base/logging.h"
#include "base/unique_identifier.h"
#include "memory/ranges.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace oryn::tarva::library {

// A row of the table says how an element is made of components. Text, single bytes and booleans have no byte order.
void swap_endianness(void* base, data_type type, std::uint64_t offset, std::uint64_t count) {
  const data_type_row* row = find_data_type(type);
  if (row == nullptr)
    throw std::logic_error("Unhandled type.");
  if (row->component_bytes == 1 || row->kind == component_kind::boolean)
    return;
  const std::uint64_t stride = row->element_bytes();
  auto* element = static_cast<std::uint8_t*>(base) + stride * offset;
  for (std::uint64_t i = 0; i < count; ++i, element += stride)
    for (unsigned component = 0; component < row->components; ++component) {
      auto* first = element + component * row->component_bytes;
      std::reverse(first, first + row->component_bytes);
    }
}

namespace {

// The words of the checks that reading and writing share.
struct pointer_texts {
  const char* not_set_up;
  const char* out_of_bounds;
  const char* no_memory;
  const char* null;
};

constexpr pointer_texts read_texts = {
    "Attempting to get a read pointer from a host memory object that has not been set up.",
    "Attempting to get a read pointer from an out-of-bounds index.",
    "Attempting to get a read pointer from a host memory object that does not have any memory allocated.",
    "Attempting to get a read pointer from a host memory object that points to a nullptr."};

constexpr pointer_texts write_texts = {
    "Attempting to get a write pointer from a host memory object that has not been set up.",
    "Attempting to get a write pointer from an out-of-bounds index.",
    "Attempting to get a write pointer from a host memory object that does not have any memory allocated.",
    "Attempting to get a write pointer from a host memory object that points to a nullptr."};

void require(bool holds, const char* message) {
  if (!holds)
    throw std::logic_error(message);
}

// Writes `bytes` bytes of `pattern` over and over, doubling what stands already: few large copies instead of
// many small ones.
void repeat_pattern(std::uint8_t* first, const std::vector<std::uint8_t>& pattern, std::uint64_t bytes) {
  constexpr std::uint64_t largest_step = std::uint64_t{1} << 16;
  if (bytes == 0)
    return;
  if (pattern.size() == 1) {
    std::memset(first, pattern[0], bytes);
    return;
  }
  std::memcpy(first, pattern.data(), pattern.size());
  std::uint64_t done = pattern.size();
  while (done < bytes) {
    const std::uint64_t step = std::min({done, bytes - done, largest_step / pattern.size() * pattern.size()});
    std::memcpy(first + done, first, step);
    done += step;
  }
}

} // namespace

host_memory::host_memory() : identifier_(library::get_unique_identifier()) {}

// As for a block on a device: the storage goes in any case, and the line tells that somebody has forgotten to free it.
host_memory::~host_memory() {
  if (owned_storage_)
    log_warning("Destroying a host memory object that contains allocated memory.  TARVA will release the "
                "memory, but free() should have been called.");
  give_back_storage();
}

void host_memory::give_back_storage() noexcept {
  if (is_left_to_device_)
    owned_storage_.leak();
  owned_storage_ = {};
}

data_type host_memory::get_type() const {
  require(set_up_, "Attempting to query the type of a host memory object that has not been set up.");
  return type_;
}

std::uint64_t host_memory::get_size() const {
  require(set_up_, "Attempting to query the size of a host memory object that has not been set up.");
  return size_;
}

void host_memory::set_allocation(data_type type, std::uint64_t size) {
  describe(type, size, true, true, nullptr);
}

void host_memory::set_user_allocation(void* pointer, data_type type, std::uint64_t size) {
  describe(type, size, false, true, pointer);
}

void host_memory::set_read_only_user_allocation(const void* pointer, data_type type, std::uint64_t size) {
  // Nothing writes through it: the block is not writable.
  describe(type, size, false, false, const_cast<void*>(pointer));
}

void host_memory::describe(data_type type, std::uint64_t size, bool library_allocated, bool writable,
                           void* pointer) {
  require(!set_up_,
          "Attempting to set an allocation on a host memory object that already has an allocation set.");
  type_ = type;
  size_ = size;
  library_allocated_ = library_allocated;
  writable_ = writable;
  user_pointer_ = pointer;
  set_up_ = true;
}

void host_memory::allocate() {
  require(set_up_, "Attempting to allocate memory on a host memory object that has not been set up.");
  require(library_allocated_,
          "Attempting to allocate memory on a host memory object that contains a user allocation.");
  owned_storage_ = host_storage(size_in_bytes(type_, size_));
  has_content_ = false;
}

// What the caller owns is never freed here, nor anything twice. A block whose allocation has failed has nothing to free.
void host_memory::free() {
  require(set_up_, "Attempting to free memory from a host memory object that has not been set up.");
  require(library_allocated_,
          "Attempting to free memory from a host memory object that constains a user allocation.");
  require(has_storage(),
          "Attempting to free memory from a host memory object that does not have any memory allocated.  Is "
          "this a double-free?");
  give_back_storage();
  has_content_ = false;
}

void* host_memory::get_write_pointer(std::uint64_t index) {
  void* const address = get_writable_address(index);
  has_content_ = true;
  return address;
}

// Does not yet count as content: the caller may find out that there is nothing to write.
std::uint8_t* host_memory::get_writable_address(std::uint64_t index) const {
  require(set_up_, write_texts.not_set_up);
  require(index <= size_, write_texts.out_of_bounds);
  require(writable_, "Attempting to get a write pointer from a host memory object that is read-only.");
  require(!library_allocated_ || has_storage(), write_texts.no_memory);
  require(library_allocated_ || user_pointer_ != nullptr, write_texts.null);
  auto* base = library_allocated_ ? owned_storage_.get() : static_cast<std::uint8_t*>(user_pointer_);
  return base + element_size(type_) * index;
}

const void* host_memory::get_read_pointer(std::uint64_t index) const {
  require(set_up_, read_texts.not_set_up);
  require(index <= size_, read_texts.out_of_bounds);
  require(!library_allocated_ || has_storage(), read_texts.no_memory);
  require(library_allocated_ || user_pointer_ != nullptr, read_texts.null);
  const auto* base =
      library_allocated_ ? owned_storage_.get() : static_cast<const std::uint8_t*>(user_pointer_);
  return base + element_size(type_) * index;
}

// All is checked before the first byte is written.
void host_memory::fill(const std::vector<std::uint8_t>& value, std::uint64_t offset, std::uint64_t count) {
  const std::uint64_t size = element_size(get_type());
  require(value.size() == size,
          "Attempting to fill memory with a value that is larger than the size of the underlying type.");
  auto* base = get_writable_address(0);
  check_fill_range(offset, count, size_);
  has_content_ = true;
  repeat_pattern(base + size * offset, value, size * count);
}

// Both addresses are asked for even if nothing is copied, so that a wrong use is always told.
void host_memory::copy_to(const std::shared_ptr<host_memory>& destination, std::uint64_t source_offset,
                          std::uint64_t destination_offset, std::uint64_t count) const {
  check_host_copy({get_type(), size_}, source_offset, {destination->get_type(), destination->get_size()},
                  destination_offset, count);
  const void* from = get_read_pointer(source_offset);
  void* to = destination->get_writable_address(destination_offset);
  if (count == 0 || !has_content())
    return;
  destination->has_content_ = true;
  std::memcpy(to, from, element_size(type_) * count);
}

// A block without content has nothing to convert; reading what nobody has written is not allowed.
void host_memory::convert_endianness() {
  void* base = get_writable_address(0);
  if (has_content())
    swap_endianness(base, get_type(), 0, get_size());
}

} // namespace oryn::tarva::library
