// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

/// @file
/// The types that elements of memory objects, arguments and constants can have.
#ifndef TARVA_TYPES_HPP
#define TARVA_TYPES_HPP

#include <tarva_abi.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace tarva {

/// A 16-bit floating-point number, IEEE 754 binary16. It is for storing: convert it to compute with it.
struct half {
  std::uint16_t bits;

  half() = default;
  /// Rounds to the nearest, and to even in the middle; what is too large becomes infinite.
  explicit half(float value) noexcept;
  explicit operator float() const noexcept;
  friend bool operator==(half a, half b) noexcept { return static_cast<float>(a) == static_cast<float>(b); }
  friend bool operator!=(half a, half b) noexcept { return !(a == b); }
};

/// A truth value of 4 bytes, as the library has it. OpenCL knows none for kernels.
struct boolean {
  std::uint32_t value;

  boolean() = default;
  constexpr boolean(bool from) noexcept : value(from) {}
  constexpr operator bool() const noexcept { return value != 0; }
};

/// A vector of OpenCL: 2, 3, 4, 8 or 16 components, of which three take the room of four.
template <class T, std::size_t N>
struct alignas(sizeof(T) * (N == 3 ? 4 : N)) vec {
  static_assert(N == 2 || N == 3 || N == 4 || N == 8 || N == 16, "OpenCL has vectors of 2, 3, 4, 8 and 16");
  T components[N == 3 ? 4 : N];

  constexpr T& operator[](std::size_t index) noexcept { return components[index]; }
  constexpr const T& operator[](std::size_t index) const noexcept { return components[index]; }
  static constexpr std::size_t size() noexcept { return N; }

  friend constexpr bool operator==(const vec& a, const vec& b) noexcept {
    for (std::size_t i = 0; i < N; ++i)
      if (a[i] != b[i])
        return false;
    return true;
  }
  friend constexpr bool operator!=(const vec& a, const vec& b) noexcept { return !(a == b); }
};

/// The names that OpenCL gives its vectors: tarva::float4, tarva::uchar16 and so on.
#define TARVA_NAME_VECTORS(name, component)                                                                  \
  using name##2 = vec<component, 2>;                                                                         \
  using name##3 = vec<component, 3>;                                                                         \
  using name##4 = vec<component, 4>;                                                                         \
  using name##8 = vec<component, 8>;                                                                         \
  using name##16 = vec<component, 16>
TARVA_NAME_VECTORS(char, std::int8_t);
TARVA_NAME_VECTORS(uchar, std::uint8_t);
TARVA_NAME_VECTORS(short, std::int16_t);
TARVA_NAME_VECTORS(ushort, std::uint16_t);
TARVA_NAME_VECTORS(int, std::int32_t);
TARVA_NAME_VECTORS(uint, std::uint32_t);
TARVA_NAME_VECTORS(long, std::int64_t);
TARVA_NAME_VECTORS(ulong, std::uint64_t);
TARVA_NAME_VECTORS(half, half);
TARVA_NAME_VECTORS(float, float);
TARVA_NAME_VECTORS(double, double);
#undef TARVA_NAME_VECTORS

namespace detail {

/// The number of a scalar type, or TARVA_ABI_TYPE_NONE. Characters are text, and bool is tarva::boolean.
template <class T>
constexpr tarva_abi_data_type scalar_type() noexcept {
  constexpr bool is_odd = std::is_same_v<T, bool> || std::is_same_v<T, wchar_t> ||
                          std::is_same_v<T, char16_t> || std::is_same_v<T, char32_t>;
  constexpr int rank = sizeof(T) == 1 ? 0 : sizeof(T) == 2 ? 1 : sizeof(T) == 4 ? 2 : 3;
  if constexpr (std::is_same_v<T, char>)
    return TARVA_ABI_TYPE_STRING;
  else if constexpr (std::is_same_v<T, boolean>)
    return TARVA_ABI_TYPE_BOOLEAN;
  else if constexpr (std::is_integral_v<T> && !is_odd && sizeof(T) <= 8)
    return TARVA_ABI_TYPE_UINT8 + 2 * rank + std::is_signed_v<T>;
  else if constexpr (std::is_same_v<T, std::byte>)
    return TARVA_ABI_TYPE_UINT8;
  else if constexpr (std::is_same_v<T, half>)
    return TARVA_ABI_TYPE_HALF;
  else if constexpr (std::is_same_v<T, float>)
    return TARVA_ABI_TYPE_FLOAT;
  else if constexpr (std::is_same_v<T, double>)
    return TARVA_ABI_TYPE_DOUBLE;
  else
    return TARVA_ABI_TYPE_NONE;
}

} // namespace detail

/// The number that the library has for a type. A program that has vectors of its own specialises this for them:
/// they must be trivially copyable and as large as the library's.
template <class T>
struct element {
  static constexpr tarva_abi_data_type type = detail::scalar_type<T>();
};

/// The numbers of vectors follow each other: five widths for each component, in the order of the components.
template <class T, std::size_t N>
struct element<vec<T, N>> {
  static_assert(detail::scalar_type<T>() >= TARVA_ABI_TYPE_UINT8, "no component of an OpenCL vector");
  static constexpr int width = N == 16 ? 4 : N == 8 ? 3 : N - 2;
  static constexpr tarva_abi_data_type type =
      TARVA_ABI_TYPE_UINT8V2 + 5 * (detail::scalar_type<T>() - TARVA_ABI_TYPE_UINT8) + width;
};

/// Whether T can be an element of a memory object, an argument or a constant.
template <class T>
inline constexpr bool is_element = element<T>::type != TARVA_ABI_TYPE_NONE&& std::is_trivially_copyable_v<T>;

/// What the compiler says to a value that is none.
#define TARVA_NO_VALUE                                                                                       \
  "no type of OpenCL: bool is tarva::boolean, and a kernel takes a struct as vectors of 16 bytes, such as "  \
  "tarva::float4, or from a memory object of its bytes: tarva::memory<std::byte>(tarva::bytes_of(struct))"

inline half::half(float value) noexcept {
  std::uint32_t from = 0;
  std::memcpy(&from, &value, sizeof from);
  const std::uint32_t sign = (from >> 16) & 0x8000, magnitude = from & 0x7fffffff;
  std::uint32_t result = 0;
  if (magnitude > 0x7f800000) { // not a number
    result = 0x7e00;
  } else if (magnitude >= 0x477ff000) { // 65520, which is rounded to infinity, and more
    result = 0x7c00;
  } else {
    // Below the normal numbers, from 2^-14 down, the mantissa loses a bit with each step of the exponent.
    const std::uint32_t exponent = magnitude >> 23;
    const std::uint32_t mantissa =
        exponent < 113 ? (magnitude & 0x7fffff) | 0x800000 : magnitude - 0x38000000;
    const std::uint32_t shift = exponent >= 113 ? 13 : exponent < 102 ? 25 : 126 - exponent;
    const std::uint32_t rest = mantissa & ((1u << shift) - 1), middle = 1u << (shift - 1);
    result = mantissa >> shift;
    result += rest > middle || (rest == middle && (result & 1) != 0);
  }
  bits = static_cast<std::uint16_t>(sign | result);
}

inline half::operator float() const noexcept {
  const std::uint32_t sign = (bits & 0x8000u) << 16, exponent = (bits >> 10) & 0x1f, mantissa = bits & 0x3ffu;
  if (exponent == 0) { // zero, or a number too small for an exponent
    const float value = static_cast<float>(mantissa) / 16777216.0F;
    return sign == 0 ? value : -value;
  }
  const std::uint32_t to = sign | (exponent == 31 ? 0x7f800000u : (exponent + 112) << 23) | mantissa << 13;
  float value = 0;
  std::memcpy(&value, &to, sizeof value);
  return value;
}

} // namespace tarva

#endif
