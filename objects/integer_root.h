#pragma once

#include <cstdint>

namespace oryn::tarva::library {

// The largest integers whose square and cube are not above `value`.
std::uint64_t integer_square_root(std::uint64_t value);
std::uint64_t integer_cube_root(std::uint64_t value);

} // namespace oryn::tarva::library
