#pragma once

#include <atomic>
#include <cstdint>

namespace oryn::tarva::library {

// The next identifier of the pool that all objects of the library share. The first one is 0; none is given
// back.
std::uint64_t get_unique_identifier();

namespace internal {

// Draws from the given pool, and ends the process when it is spent.
std::uint64_t draw_identifier(std::atomic<std::uint64_t>& pool);

} // namespace internal

} // namespace oryn::tarva::library
