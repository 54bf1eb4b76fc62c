// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "objects/library_device.h"

#include "base/unique_identifier.h"
#include <stdexcept>

namespace oryn::tarva::library {

library_device::library_device() : unique_identifier_(library::get_unique_identifier()) {}

library_device::~library_device() = default;

device_work_dispatcher& library_device::get_dispatcher() {
  if (!dispatcher_)
    throw std::logic_error("Accessing a device dispatcher that is null.");
  return *dispatcher_;
}

void library_device::set_dispatcher(std::unique_ptr<device_work_dispatcher> dispatcher) {
  if (dispatcher_)
    throw std::logic_error("Attempting to set a dispatcher on a library device that already has one set.");
  dispatcher_ = std::move(dispatcher);
}

// For a device of a kind for which nobody has said what its commands are.
std::vector<std::shared_ptr<device_ir::device_command>>
library_device::generate_commands(const std::shared_ptr<physical_ir::physical_operation>&) {
  throw std::logic_error("Unsupported device type found.");
}

void library_device::signal_acquire(const std::shared_ptr<library_device>& release_device,
                                    const std::shared_ptr<library_device>& acquire_device,
                                    std::uint64_t sync_id) {
  get_dispatcher().signal_acquire(release_device, acquire_device, sync_id);
}

} // namespace oryn::tarva::library
