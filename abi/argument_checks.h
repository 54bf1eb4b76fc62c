#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

namespace oryn::tarva::library {

// For arguments that must not be NULL.
inline void require(const void* argument, const char* message) {
  if (!argument)
    throw std::invalid_argument(message);
}

// For the number of elements in an array of the caller's: no process can hold more bytes than an address offset counts.
template <typename element>
void require_countable(std::uint64_t count, const char* elements) {
  if (count > static_cast<std::uint64_t>(std::numeric_limits<std::ptrdiff_t>::max()) / sizeof(element))
    throw std::length_error("The number of " + std::string(elements) + " is " + std::to_string(count) +
                            ", but no process can hold as many.");
}

} // namespace oryn::tarva::library
