// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Storage for large blocks: the content of memory objects on the host, and tables that grow large.
#pragma once

#include <cstddef>
#include <limits>
#include <new>

namespace oryn::tarva::library {

// From this size on a block gets pages of its own, of 2 MiB if possible. With pages of 4 KiB, the first use of a large block
// spends most of its time on page faults, and random accesses spend most of theirs on misses of the address translation.
inline constexpr std::size_t large_block_size = std::size_t{4} << 20;

// Zeroed storage straight from the system. Any thread may call both; the caller owns the block and gives it back with the
// same size. Throws std::bad_alloc.
void* map_large_block(std::size_t bytes);
void unmap_large_block(void* block, std::size_t bytes) noexcept;

// The same without any wish for large pages, for blocks of a few pages.
void* map_pages(std::size_t bytes);

// For the storage of tables. It comes from the system, unless it is very small: what passes through malloc makes it put in order
// all small blocks that the process has ever given back, which takes seconds where there were millions.
template <class T>
struct table_allocator {
  using value_type = T;

  table_allocator() = default;
  template <class U>
  table_allocator(const table_allocator<U>&) {}

  T* allocate(std::size_t count) {
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(T))
      throw std::bad_array_new_length();
    const std::size_t bytes = count * sizeof(T);
    if (bytes <= largest_of_malloc)
      return static_cast<T*>(::operator new(bytes));
    return static_cast<T*>(bytes < large_block_size ? map_pages(bytes) : map_large_block(bytes));
  }
  void deallocate(T* block, std::size_t count) noexcept {
    const std::size_t bytes = count * sizeof(T);
    if (bytes <= largest_of_malloc)
      ::operator delete(block);
    else
      unmap_large_block(block, bytes);
  }

  friend bool operator==(const table_allocator&, const table_allocator&) { return true; }

private:
  static constexpr std::size_t largest_of_malloc = 1000;
};

} // namespace oryn::tarva::library
