#pragma once

#include "capability/quirks.h"

#include <string_view>

namespace qv {

// False if an implementation with these quirks would end the process over these options of a build. All options
// that OpenCL names are harmless, as far as the implementation can read them.
bool are_harmless_options(const quirks& known, std::string_view options);

} // namespace qv
