#pragma once

#include <cstdint>

namespace oryn::tarva::library {

// The kinds of intermediate representation, with the values of the public interface.
namespace ir_type {

inline constexpr std::uint64_t source_1_0 = 1;
inline constexpr std::uint64_t source_1_1 = 2;
inline constexpr std::uint64_t source_1_2 = 3;
inline constexpr std::uint64_t source_2_0 = 4;
inline constexpr std::uint64_t source_2_1 = 5;
inline constexpr std::uint64_t spir_1_2 = 6;
inline constexpr std::uint64_t spir_2_0 = 7;
inline constexpr std::uint64_t spir_v = 8;
inline constexpr std::uint64_t device_binary = 9;

} // namespace ir_type
} // namespace oryn::tarva::library
