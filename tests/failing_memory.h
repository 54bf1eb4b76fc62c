// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Replaces the memory of the executable that includes this, in one of its files, so that it can run out.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

inline constexpr std::size_t endless = SIZE_MAX;
// How many allocations of this thread still succeed.
inline thread_local std::size_t allocations_left = endless;

// The allocation of any thread that fails, 1 being the next; and whether all behind it fail, too.
inline std::atomic<std::size_t> failing_allocation = endless;
inline std::atomic<bool> failure_lasts = false;
inline std::atomic<bool> has_failed = false;
inline bool (*is_exempt)() = [] { return false; };

inline bool fails_now() {
  if (failing_allocation == endless || is_exempt() || failing_allocation-- > 1)
    return false;
  failing_allocation = failure_lasts ? 1 : endless;
  has_failed = true;
  return true;
}

// Inlined, the pair of operators looks to g++ like malloc and free used on each other.
[[gnu::noinline]] void* operator new(std::size_t size) {
  if (allocations_left == 0 || fails_now())
    throw std::bad_alloc();
  if (allocations_left != endless)
    --allocations_left;
  if (void* const memory = std::malloc(size != 0 ? size : 1))
    return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
