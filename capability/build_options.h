#pragma once

#include "capability/implementation_faults.h"

#include <string_view>

namespace qv {

// False if an implementation with `faults` would end the process over these options of a build. All options
// that OpenCL names are harmless, as far as the implementation can read them.
bool are_harmless_options(const implementation_faults& faults, std::string_view options);

} // namespace qv
