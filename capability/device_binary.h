// Telling binaries that would end the process from those that can be handed to OpenCL.
#pragma once

#include "capability/quirks.h"

#include <cstddef>

namespace qv {

// Whether an implementation with these quirks can be given the binary: as far as it can be told, the binary
// is one of its own and whole. An implementation without such quirks can be given anything.
bool is_harmless_binary(const quirks& known, const unsigned char* binary, std::size_t length);

} // namespace qv
