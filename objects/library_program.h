// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Programs for one device, and their kernels.
#pragma once

#include "objects/launch_limits.h"
#include "properties/catalogue.h"
#include "properties/program_and_kernel_catalogues.h"
#include "properties/property_interface.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace oryn::tarva::library {

class library_device;
class library_program;
namespace physical_ir {
class physical_operation;
}
namespace device_ir {
class device_command;
}

// A named entry point of a program. Holds no arguments and never changes, so any thread may use it. It keeps its program
// alive.
class library_kernel : public property_interface, public std::enable_shared_from_this<library_kernel> {
public:
  library_kernel(std::shared_ptr<library_program> program, std::string name);
  ~library_kernel() override;
  library_kernel(const library_kernel&) = delete;
  library_kernel& operator=(const library_kernel&) = delete;

  // These four ask OpenCL each time, and may throw what it says.
  // A work-group size that suits the kernel in 1, 2 or 3 dimensions.
  virtual size_triple get_preferred_work_group_size(std::uint64_t work_dim) = 0;
  // The size fixed at compile time, or (0,0,0).
  virtual size_triple get_compile_work_group_size() = 0;
  virtual std::uint32_t get_max_compute_units() = 0;
  virtual size_triple get_max_global_size() = 0;
  // Read once, then kept, since each launch looks at them. The reference holds as long as the kernel.
  virtual const launch_limits& get_launch_limits() const = 0;
  // The command that carries out a launch, which is of the class physical_ir::kernel, on the kernel's own device.
  virtual std::shared_ptr<device_ir::device_command>
  make_launch_command(const std::shared_ptr<physical_ir::physical_operation>& launch) const = 0;

  std::uint64_t get_unique_identifier() const { return unique_identifier_; }
  const std::shared_ptr<library_program>& get_program() const { return program_; }
  // By which the program was asked for it.
  const std::string& get_name() const { return name_; }

private:
  const std::uint64_t unique_identifier_;
  const std::shared_ptr<library_program> program_;
  const std::string name_;
};

// A program that was built for one device. It keeps its device alive, except for the device's own program of built-in
// kernels, which the device itself holds: that pointer back would keep both for ever. Any thread may use it.
class library_program : public property_interface, public std::enable_shared_from_this<library_program> {
public:
  library_program(bool is_builtin, const std::shared_ptr<library_device>& device, std::string name);
  ~library_program() override;
  library_program(const library_program&) = delete;
  library_program& operator=(const library_program&) = delete;

  // A new kernel object at each call.
  virtual std::shared_ptr<library_kernel> get_kernel(const std::string& name) = 0;
  virtual std::vector<std::string> get_kernel_names() = 0;

  std::uint64_t get_unique_identifier() const { return unique_identifier_; }
  // Not null for a program that the user can name: its device lives until the stop.
  std::shared_ptr<library_device> get_device() const { return device_ ? device_ : builtin_device_.lock(); }
  // The caller's label, or "Builtin Kernels".
  const std::string& get_name() const { return name_; }
  bool is_builtin() const { return is_builtin_; }

private:
  const std::uint64_t unique_identifier_;
  const std::shared_ptr<library_device> device_;
  const std::weak_ptr<library_device> builtin_device_;
  const std::string name_;
  const bool is_builtin_;
};

// Stands for no program at all: that of a failed build, or of a device without built-in kernels. It has the properties that need
// no OpenCL, and no kernel.
class empty_program : public catalogue_owner<library_program, get_program_catalogue> {
public:
  using catalogue_owner::catalogue_owner;

  std::shared_ptr<library_kernel> get_kernel(const std::string& name) override;
  std::vector<std::string> get_kernel_names() override;

private:
  // There is nothing of OpenCL below an empty program.
  version_number get_catalogue_version() const override { return 0; }
  bool read_value(const program_catalogue::row& wanted, property_value& value) override;
};

} // namespace oryn::tarva::library
