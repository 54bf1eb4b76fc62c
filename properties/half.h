#pragma once

#include <cstdint>

namespace oryn::tarva::library {

// A 16-bit floating-point value as it lies in memory: sign, five bits of exponent, ten of mantissa.
struct half {
  std::uint16_t bits = 0;
};

float half_to_float(half value);

} // namespace oryn::tarva::library
