// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "base/large_block.h"

#include <cstdint>
#include <sys/mman.h>

namespace oryn::tarva::library {

void* map_large_block(std::size_t bytes) {
  constexpr std::size_t page = 4096, huge_page = std::size_t{2} << 20;
  if (bytes > std::numeric_limits<std::size_t>::max() - huge_page - page)
    throw std::bad_alloc();
  // One huge page more than is needed, so that the block can begin at the boundary of one. The rest is given back.
  const std::size_t used = (bytes + page - 1) / page * page;
  void* const mapping =
      mmap(nullptr, used + huge_page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapping == MAP_FAILED)
    throw std::bad_alloc();
  auto* const start = static_cast<std::uint8_t*>(mapping);
  const std::size_t before = (huge_page - reinterpret_cast<std::uintptr_t>(start) % huge_page) % huge_page;
  std::uint8_t* const block = start + before;
  if (before != 0)
    munmap(start, before);
  munmap(block + used, huge_page - before);
  madvise(block, used, MADV_HUGEPAGE); // only advice: without huge pages the block works as well
  return block;
}

void* map_pages(std::size_t bytes) {
  constexpr int at_once = MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE; // less than a fault for each page
  void* const block = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, at_once, -1, 0);
  if (block == MAP_FAILED)
    throw std::bad_alloc();
  return block;
}

void unmap_large_block(void* block, std::size_t bytes) noexcept {
  munmap(block, bytes);
}

} // namespace oryn::tarva::library
