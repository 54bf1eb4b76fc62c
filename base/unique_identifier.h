// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The identifiers of the library's objects: devices, programs, kernels, memory objects and blocks of memory.
#pragma once

#include "base/end_of_process.h"
#include "base/logging.h"

#include <atomic>
#include <cstdint>
#include <limits>

namespace oryn::tarva::library {

namespace internal {

inline constinit std::atomic<std::uint64_t> identifier_pool = 0;

// Draws from a given pool, and ends the process when that has no identifier left.
inline std::uint64_t draw_identifier(std::atomic<std::uint64_t>& pool) {
  const std::uint64_t identifier = pool.fetch_add(1, std::memory_order_relaxed);
  if (identifier == std::numeric_limits<std::uint64_t>::max()) {
    log_critical("Pool of unique identifiers within the library has been exhausted.");
    fail_process();
  }
  return identifier;
}

} // namespace internal

// The next identifier of the one pool that all kinds of object share. The first is 0; none is ever given back. Any
// thread may call it; it takes no lock and no memory.
inline std::uint64_t get_unique_identifier() {
  return internal::draw_identifier(internal::identifier_pool);
}

} // namespace oryn::tarva::library
