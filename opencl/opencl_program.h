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

template <version V>
class opencl_version_device;

class opencl_program : public catalogue_owner<library_program, get_program_catalogue> {
public:
  using catalogue_owner::catalogue_owner;
};

// A built program of one OpenCL version, for any thread. It never changes, but for what it learns of its kernels.
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

  opencl_version_device<V>& device_; // which the base class keeps alive, or which keeps this alive
  std::unique_ptr<skerv::opencl::program<V>> program_;
  signature_table signatures_;
};

using opencl_1_0_program = opencl_version_program<version::v1_0>;
using opencl_1_1_program = opencl_version_program<version::v1_1>;
using opencl_1_2_program = opencl_version_program<version::v1_2>;
using opencl_2_0_program = opencl_version_program<version::v2_0>;
using opencl_2_1_program = opencl_version_program<version::v2_1>;
using opencl_2_2_program = opencl_version_program<version::v2_2>;

} // namespace oryn::tarva::library
