#pragma once

#include "access/opencl/kernel.h"
#include "objects/kernel_signature.h"
#include "objects/library_kernel.h"
#include "opencl/opencl_version.h"
#include "properties/catalogue_owner.h"
#include "properties/kernel_catalogue.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace oryn::tarva::library {

class opencl_kernel : public catalogue_owner<library_kernel, get_kernel_catalogue> {
public:
  using catalogue_owner::catalogue_owner;
};

// A kernel of one OpenCL version. Never changes; launches set their arguments on clones.
template <version V>
class opencl_version_kernel final : public opencl_kernel {
public:
  // `signature` is null if it is not known yet: then it is learnt, as far as the device tells.
  opencl_version_kernel(std::shared_ptr<library_program> program, const std::string& name,
                        skerv::opencl::kernel<V> kernel, std::shared_ptr<const kernel_signature> signature);
  ~opencl_version_kernel() override;

  size_triple get_preferred_work_group_size(std::uint64_t work_dim) override;
  size_triple get_compile_work_group_size() override;
  std::uint32_t get_max_compute_units() override;
  size_triple get_max_global_size() override;
  const launch_limits& get_launch_limits() const override;
  const std::shared_ptr<const kernel_signature>& get_signature() const { return signature_; }

  // A fresh OpenCL kernel of the same program and name.
  skerv::opencl::kernel<V> clone_kernel() const { return kernel_.clone(); }

private:
  version_number get_catalogue_version() const override { return static_cast<version_number>(V); }
  bool read_value(const kernel_catalogue::row& wanted, property_value& value) override;

  launch_limits read_limits() const;
  void learn_signature();
  void add_signature(launch_limits& limits) const;
  bool has_non_uniform_groups() const;
  size_triple get_address_space_limit() const;

  skerv::opencl::kernel<V> kernel_;
  skerv::opencl::device<V> device_;
  std::shared_ptr<const kernel_signature> signature_;
  mutable std::mutex limits_lock_;
  mutable std::optional<launch_limits> limits_; // never changes once it is there
  mutable std::atomic<bool> has_limits_ = false;
};

using opencl_1_0_kernel = opencl_version_kernel<version::v1_0>;
using opencl_1_1_kernel = opencl_version_kernel<version::v1_1>;
using opencl_1_2_kernel = opencl_version_kernel<version::v1_2>;
using opencl_2_0_kernel = opencl_version_kernel<version::v2_0>;
using opencl_2_1_kernel = opencl_version_kernel<version::v2_1>;
using opencl_2_2_kernel = opencl_version_kernel<version::v2_2>;

} // namespace oryn::tarva::library
