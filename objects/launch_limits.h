// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What a launch of a kernel must respect, and what its parameters take, as far as the device's answers tell.
#pragma once

#include "base/thread_annotations.h"
#include "properties/data_type.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace oryn::tarva::library {

using size_triple = std::array<std::uint64_t, 3>;

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

// How OpenCL answers to arguments that are tried on a kernel that is never launched. Each answer is a status.
//
// OpenCL tells little of a kernel's parameters, and some implementations nothing; a wrong argument may end the process. So what
// a parameter takes is found out by trying: zeros of each size, a null, and a size of local memory.
struct parameter_answers {
  std::array<std::int32_t, 8> zeros{}; // as many as the power of two that is the index
  std::int32_t null = 0;               // of the size of a pointer
  std::int32_t local = 0;

  std::int32_t to_zeros(std::size_t size) const {
    return zeros[static_cast<std::size_t>(std::countr_zero(size))];
  }
};

enum class parameter_kind : std::uint8_t {
  unknown, // the device does not tell
  value,
  memory,
  local_memory,
  // These no argument can be.
  image,
  sampler,
  device_queue,
  other_value, // of a size that no data type has
};

// What one parameter takes. A set of what can be given is one number: the sizes of values, which are powers of two, are its low
// bits, and these are the others.
struct kernel_parameter {
  static constexpr std::uint16_t memory_or_null = 0x100, local_memory = 0x200, anything = 0x3FF;
  static_assert(all_value_sizes < memory_or_null);

  parameter_kind kind = parameter_kind::unknown;
  std::uint16_t accepted = anything;
};

// What the answers tell of the parameter.
kernel_parameter judge(const parameter_answers& answers);

// What all kernels of one name of a program have in common. To learn it takes several calls for each parameter.
struct kernel_signature {
  std::vector<kernel_parameter> parameters;
  std::optional<size_triple> required_group_size; // as the attributes tell, if it had to be looked for there

  // A device that tells nothing may do so for the moment only.
  bool tells_something() const;
};

// The size in the attribute reqd_work_group_size, which implementations write with and without blanks.
std::optional<size_triple> find_required_group_size(const std::vector<std::string>& attribute_words);

// What a launch must respect, read once when the kernel is made, or later if that failed. A limit that the
// device cannot tell is absent, and is then left to the device.
struct launch_limits {
  bool has_global_offset = true; // false: the offset must be (0,0,0)
  bool zero_global_size_is_allowed = false;
  bool local_size_must_divide = true; // the global size, in each dimension
  std::optional<std::uint64_t> argument_count;
  std::optional<std::uint64_t> work_group_size;       // work-items of one group
  std::optional<size_triple> work_item_sizes;         // work-items of one group in each dimension
  std::optional<size_triple> compile_work_group_size; // absent also if none is fixed
  std::optional<std::uint64_t> local_memory_bytes;
  std::optional<std::uint64_t> allocation_bytes; // of one memory object
  std::optional<std::uint32_t> address_bits;     // global ids must be countable with as many
  std::span<const kernel_parameter> parameters;  // as long as the kernel lives; empty: not told
};

// What has been learnt of the kernels of one program, by their names. Each program has one, and any thread may use it.
class signature_table {
public:
  // Null: not learnt yet.
  std::shared_ptr<const kernel_signature> find(const std::string& name) const TARVA_EXCLUDES(lock_);
  void keep(const std::string& name, std::shared_ptr<const kernel_signature> signature) TARVA_EXCLUDES(lock_);
  // Whoever makes a kernel and learns its signature holds it, so that one does so at a time. Taken before `lock_`.
  mutex& learning_lock() TARVA_RETURNS_LOCK(learning_lock_) { return learning_lock_; }

private:
  mutex learning_lock_;
  mutable mutex lock_;
  std::unordered_map<std::string, std::shared_ptr<const kernel_signature>> known_ TARVA_GUARDED_BY(lock_);
};

// For square and cubic work-groups: the largest integers whose square and cube are not above `value`.
std::uint64_t integer_square_root(std::uint64_t value);
std::uint64_t integer_cube_root(std::uint64_t value);

} // namespace oryn::tarva::library
