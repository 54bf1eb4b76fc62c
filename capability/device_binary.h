// Telling binaries that would end the process from those that can be handed to OpenCL.
#pragma once

#include "capability/implementation_faults.h"

#include <cstddef>

namespace qv {

// Whether an implementation with these faults can be given the binary: as far as it can be told, the binary
// is one of its own and whole. An implementation without such faults can be given anything.
bool is_harmless_binary(const implementation_faults& faults, const unsigned char* binary, std::size_t length);

} // namespace qv
