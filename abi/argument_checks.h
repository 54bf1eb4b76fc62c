#pragma once

#include <stdexcept>

namespace oryn::tarva::library {

// For arguments that must not be NULL.
inline void require(const void* argument, const char* message) {
  if (!argument)
    throw std::invalid_argument(message);
}

} // namespace oryn::tarva::library
