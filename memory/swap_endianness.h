#pragma once

#include "properties/data_type.h"

#include <cstdint>

namespace oryn::tarva::library {

// Reverses the byte order of `count` elements of `type`, component by component and in place, from element
// `offset` of the block at `base` on. The fourth slot of a 3-component vector is not preserved; a boolean is
// left as it is.
void swap_endianness(void* base, data_type type, std::uint64_t offset, std::uint64_t count);

} // namespace oryn::tarva::library
