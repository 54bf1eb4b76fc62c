// What a kernel's parameter takes, as far as the device's answers tell.
#pragma once

#include "properties/data_type.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace oryn::tarva::library {

// The sizes that an element of some data type has. Each is a power of two, so that a set of them is their sum.
inline constexpr std::uint8_t all_value_sizes = [] {
  std::uint8_t all = 0;
  for (const std::uint8_t size : element_sizes)
    all = static_cast<std::uint8_t>(all | size);
  return all;
}();
static_assert(std::all_of(element_sizes.begin() + 1, element_sizes.end(),
                          [](std::uint8_t size) { return std::has_single_bit(size); }));

// A null value of this size is a size of local memory, and nothing else: no pointer and no data type has it.
inline constexpr std::size_t local_size_to_try = 24;
static_assert(local_size_to_try != sizeof(void*) && !std::has_single_bit(local_size_to_try));

// How OpenCL answers to arguments that are tried on a kernel that is never launched.
struct parameter_answers {
  std::array<std::int32_t, 8> zeros{}; // as many as the power of two that is the index
  std::int32_t null = 0;               // of the size of a pointer
  std::int32_t local = 0;

  std::int32_t to_zeros(std::size_t size) const {
    return zeros[static_cast<std::size_t>(std::countr_zero(size))];
  }
};

struct kernel_parameter {
  enum class kind : std::uint8_t {
    untold,
    value,
    memory,
    local_memory,
    // These no argument can be.
    image,
    sampler,
    device_queue,
    other_value, // of a size that no data type has
  };

  // What can be given: values of these sizes, and these.
  static constexpr std::uint16_t memory_or_null = 0x100, local_memory = 0x200, anything = 0x3FF;
  static_assert(all_value_sizes < memory_or_null);

  kind of = kind::untold;
  std::uint16_t fitting = anything;

  bool takes(std::uint64_t what) const { return (fitting & what) != 0; }
};

kernel_parameter judge(const parameter_answers& answers);

} // namespace oryn::tarva::library
