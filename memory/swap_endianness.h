#pragma once

#include "properties/data_type.h"

#include <cstdint>

namespace oryn::tarva::library {

// Reverses the byte order of `count` elements of `type`, component by component and in place, from element
// `offset` of the block at `base` on. The fourth slot of a 3-component vector and a boolean are left as
// they are.
void swap_endianness(void* base, data_type type, std::uint64_t offset, std::uint64_t count);

} // namespace oryn::tarva::library
