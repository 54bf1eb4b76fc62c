// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The running library.
#pragma once

#include "abi/bridge.h"
#include "base/end_of_process.h"

#include <tarva_abi.h>

#include <exception>
#include <memory>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

class scheduler;
namespace logical_ir {
class logical_operation;
}

// The devices, the handles and the scheduler: what every exported function works on. The first call makes it; it lives
// until the stop, which base/end_of_process.h describes.
//
// Calls use it on their own threads, any number of them at a time. It has no lock: its members do not change between start
// and stop, and the bridge and the scheduler have locks of their own.
class tarva_singleton final : public stoppable_library {
public:
  // Starts the library: finds the devices and starts a worker for each. If that fails, the process ends with status 1.
  tarva_singleton();

  // The first call starts the library; calls of other threads wait for that. Only for calls that hold a permit: without
  // one the library may be gone.
  static tarva_singleton& get_instance();

  bool has_workers() const override { return !devices_.empty(); }
  void shut_down() noexcept override;

  // All devices, by OpenCL version from 1.0 on.
  const std::vector<std::shared_ptr<library_device>>& get_devices() const { return devices_; }
  scheduler& get_scheduler() { return *scheduler_; }

  // Both run the operation and return when it has ended. They throw what is wrong with it before it begins. A failure
  // after that stays in the operation: the first logs it, since nobody can ask for it; the second returns a handle of the
  // operation's future.
  void submit_without_future(const std::shared_ptr<logical_ir::logical_operation>& operation);
  tarva_abi_future_s* submit_with_future(const std::shared_ptr<logical_ir::logical_operation>& operation);

  std::pair<tarva_abi_result, tarva_abi_error_s*>
  convert_exception(const std::exception_ptr& exception) noexcept;

private:
  void start();
  void initialize_devices();
  void release_devices();

  // In the reverse of the order in which they go.
  std::vector<std::shared_ptr<library_device>> devices_;

public:
  abi_bridge bridge;

private:
  std::shared_ptr<scheduler> scheduler_;
};

} // namespace oryn::tarva::library
