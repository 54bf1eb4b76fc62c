// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The programs of the six OpenCL versions: one class, written once.
#pragma once

#include "access/opencl/program.h"
#include "objects/launch_limits.h"
#include "objects/library_program.h"
#include "opencl/opencl_version.h"
#include "properties/catalogue.h"
#include "properties/program_and_kernel_catalogues.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace oryn::tarva::library {

// What the programs of all versions share: the properties of the program catalogue.
class opencl_program : public catalogue_owner<library_program, get_program_catalogue> {
public:
  using catalogue_owner::catalogue_owner;
};

// A built program of one OpenCL version, for any thread. It never changes, but for what it learns of its kernels, for which its
// signature_table has locks.
template <version V>
class opencl_version_program final : public opencl_program {
public:
  opencl_version_program(bool is_builtin, opencl_version_device<V>& device,
                         const skerv::opencl::program<V>& program, const std::string& name);
  ~opencl_version_program() override;

  std::shared_ptr<library_kernel> get_kernel(const std::string& name) override;
  std::vector<std::string> get_kernel_names() override;
  // The program as compiled for its device.
  std::vector<std::uint8_t> get_binary();

private:
  version_number get_catalogue_version() const override { return static_cast<version_number>(V); }
  bool read_value(const program_catalogue::row& wanted, property_value& value) override;

  opencl_version_device<V>&
      device_; // kept alive by the base class; of a built-in program it is the one that keeps this
  std::unique_ptr<skerv::opencl::program<V>> program_;
  signature_table signatures_;
};

} // namespace oryn::tarva::library
