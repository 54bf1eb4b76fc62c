#pragma once

#include "objects/launch_limits.h"
#include "properties/property_interface.h"

#include <cstdint>
#include <memory>
#include <string>

namespace oryn::tarva::library {

class library_program;
namespace physical_ir {
class kernel;
class physical_operation;
} // namespace physical_ir
namespace device_ir {
class device_command;
}

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
  // The command that carries out `launch`, which is what `operation` points to, on the kernel's own device.
  virtual std::shared_ptr<device_ir::device_command>
  make_launch_command(const std::shared_ptr<physical_ir::physical_operation>& operation,
                      const physical_ir::kernel& launch) const = 0;

  std::uint64_t get_unique_identifier() const { return unique_identifier_; }
  const std::shared_ptr<library_program>& get_program() const { return program_; }
  // By which the program was asked for it.
  const std::string& get_name() const { return name_; }

private:
  const std::uint64_t unique_identifier_;
  const std::shared_ptr<library_program> program_;
  const std::string name_;
};

// The largest integers whose square and cube are not above `value`.
std::uint64_t integer_square_root(std::uint64_t value);
std::uint64_t integer_cube_root(std::uint64_t value);

} // namespace oryn::tarva::library
