#include "properties/half.h"

#include <cmath>
#include <limits>

namespace oryn::tarva::library {
namespace {

float magnitude(int exponent, int mantissa) {
  if (exponent == 31)
    return mantissa == 0 ? std::numeric_limits<float>::infinity() : std::numeric_limits<float>::quiet_NaN();
  if (exponent == 0)
    return std::ldexp(static_cast<float>(mantissa), -24);
  return std::ldexp(static_cast<float>(mantissa + 1024), exponent - 25);
}

} // namespace

float half_to_float(half value) {
  const float result = magnitude((value.bits >> 10) & 0x1f, value.bits & 0x3ff);
  return std::copysign(result, (value.bits & 0x8000) != 0 ? -1.0f : 1.0f);
}

} // namespace oryn::tarva::library
