// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The kernels of the six OpenCL versions: one class, written once.
#pragma once

#include "access/opencl/kernel.h"
#include "base/thread_annotations.h"
#include "objects/library_program.h"
#include "opencl/opencl_version.h"
#include "properties/catalogue.h"
#include "properties/program_and_kernel_catalogues.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>

namespace oryn::tarva::library {

namespace device_ir::opencl {
template <version V>
class opencl_version_queues;
}

// What the kernels of all versions share: the properties of the kernel catalogue.
class opencl_kernel : public catalogue_owner<library_kernel, get_kernel_catalogue> {
public:
  using catalogue_owner::catalogue_owner;
};

// A kernel of one OpenCL version, for any thread. It never changes, but for its limits if they could not be read at first; launches
// set their arguments on clones.
template <version V>
class opencl_version_kernel final : public opencl_kernel {
public:
  // `signature` is null if it is not known yet: then it is learnt, as far as the device tells.
  opencl_version_kernel(std::shared_ptr<library_program> program, opencl_version_device<V>& device,
                        const std::string& name, skerv::opencl::kernel<V> kernel,
                        std::shared_ptr<const kernel_signature> signature);
  ~opencl_version_kernel() override;

  size_triple get_preferred_work_group_size(std::uint64_t work_dim) override;
  size_triple get_compile_work_group_size() override;
  std::uint32_t get_max_compute_units() override;
  size_triple get_max_global_size() override;
  const launch_limits& get_launch_limits() const override TARVA_EXCLUDES(limits_lock_);
  std::shared_ptr<device_ir::device_command>
  make_launch_command(const std::shared_ptr<physical_ir::physical_operation>& launch) const override;

  const std::shared_ptr<const kernel_signature>& get_signature() const { return signature_; }

private:
  version_number get_catalogue_version() const override { return static_cast<version_number>(V); }
  bool read_value(const kernel_catalogue::row& wanted, property_value& value) override;

  void add_signature(launch_limits& limits) const;
  size_triple get_address_space_limit() const;

  skerv::opencl::kernel<V> kernel_;
  device_ir::opencl::opencl_version_queues<V>& queues_; // of the device, which the program keeps alive
  skerv::opencl::device<V> device_;
  std::shared_ptr<const kernel_signature>
      signature_;                                // null if the device tells nothing; set by the constructor
  mutable mutex limits_lock_;                    // for who finds no limits yet
  mutable std::optional<launch_limits> limits_;  // written once, before `has_limits_`
  mutable std::atomic<bool> has_limits_ = false; // from then on `limits_` is read without the lock
};

} // namespace oryn::tarva::library
