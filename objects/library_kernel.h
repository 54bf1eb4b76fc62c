#pragma once

#include "objects/kernel_parameter.h"
#include "properties/property_interface.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace oryn::tarva::library {

class library_program;

using size_triple = std::array<std::uint64_t, 3>;

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

// A named entry point of a program. Holds no arguments and never changes.
class library_kernel : public property_interface, public std::enable_shared_from_this<library_kernel> {
public:
  library_kernel(std::shared_ptr<library_program> program, std::string name);
  ~library_kernel() override;
  library_kernel(const library_kernel&) = delete;
  library_kernel& operator=(const library_kernel&) = delete;

  // A work-group size that suits the kernel in 1, 2 or 3 dimensions.
  virtual size_triple get_preferred_work_group_size(std::uint64_t work_dim) = 0;
  // The size fixed at compile time, or (0,0,0).
  virtual size_triple get_compile_work_group_size() = 0;
  virtual std::uint32_t get_max_compute_units() = 0;
  virtual size_triple get_max_global_size() = 0;
  virtual const launch_limits& get_launch_limits() const = 0;

  std::uint64_t get_unique_identifier() const { return unique_identifier_; }
  const std::shared_ptr<library_program>& get_program() const { return program_; }
  // By which the program was asked for it.
  const std::string& get_name() const { return name_; }

private:
  const std::uint64_t unique_identifier_;
  const std::shared_ptr<library_program> program_;
  const std::string name_;
};

} // namespace oryn::tarva::library
