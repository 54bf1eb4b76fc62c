#pragma once

#include <cstddef>
#include <limits>
#include <new>

namespace oryn::tarva::library {

// From here on a block is worth pages of its own, and large ones: faults of ordinary pages decide how long the first
// touch of it takes, and misses of the address translation how long random accesses to it take.
inline constexpr std::size_t large_block_size = std::size_t{4} << 20;

// Zeroed storage straight from the system, backed by huge pages where the system has them. Throws std::bad_alloc.
void* map_large_block(std::size_t bytes);
void unmap_large_block(void* block, std::size_t bytes) noexcept;

// For containers that may become large.
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
