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

// An allocator for containers that may become large. Small storage comes from operator new.
template <class T>
struct large_block_allocator {
  using value_type = T;

  large_block_allocator() = default;
  template <class U>
  large_block_allocator(const large_block_allocator<U>&) {}

  T* allocate(std::size_t count) {
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(T))
      throw std::bad_array_new_length();
    const std::size_t bytes = count * sizeof(T);
    return static_cast<T*>(bytes < large_block_size ? ::operator new(bytes) : map_large_block(bytes));
  }
  void deallocate(T* block, std::size_t count) noexcept {
    const std::size_t bytes = count * sizeof(T);
    if (bytes < large_block_size)
      ::operator delete(block);
    else
      unmap_large_block(block, bytes);
  }

  friend bool operator==(const large_block_allocator&, const large_block_allocator&) { return true; }
};

} // namespace oryn::tarva::library
