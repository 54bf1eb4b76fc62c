// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "memory/device_memory.h"

#include "base/logging.h"
#include "base/unique_identifier.h"
#include "objects/library_device.h"

#include <stdexcept>

namespace oryn::tarva::library {

device_memory::device_memory(std::shared_ptr<library_device> device)
    : identifier_(library::get_unique_identifier()), device_(std::move(device)) {
  if (!device_)
    throw std::logic_error("Cannot initialize device memory with an empty device.");
}

// A block that still has storage was forgotten by whoever was to free it. The storage is given back, and the line tells.
device_memory::~device_memory() {
  if (!allocation_)
    return;
  log_warning(
      "Destroying a device memory object that still contains memory.  It should have been free'd.  TARVA "
      "will now free the memory.");
  try {
    device_->free_memory(allocation_);
  } catch (...) {
    // Nothing more can be done for the block than to destroy the allocation.
  }
}

data_type device_memory::get_type() const {
  if (!set_up_)
    throw std::logic_error(
        "Attempting to query the type of a device memory object that has not been set up.");
  return type_;
}

std::uint64_t device_memory::get_size() const {
  if (!set_up_)
    throw std::logic_error(
        "Attempting to query the size of a device memory object that has not been set up.");
  return size_;
}

void device_memory::set_allocation(data_type type, std::uint64_t size) {
  if (set_up_)
    throw std::logic_error("Attempting to call set_allocation on a device memory object that has already had "
                           "its allocation set.");
  type_ = type;
  size_ = size;
  set_up_ = true;
}

void device_memory::allocate() {
  if (!set_up_)
    throw std::logic_error("Attempting to allocate memory for a device memory object that has not had an "
                           "allocation set.");
  if (allocation_)
    throw std::logic_error("Attempting to allocate memory for a device memory object that already contains "
                           "allocated memory.");
  allocation_ = device_->allocate_memory(type_, size_);
  has_content_ = false;
}

// The block has let go of the storage before the device is asked, so that a failure there cannot make it freed twice.
void device_memory::free() {
  if (!allocation_)
    throw std::logic_error(
        "Attempting to free memory for a device memory object that contains no memory: either "
        "this is a double-free, or memory was never allocated.");
  std::unique_ptr<device_memory_allocation> allocation = std::move(allocation_);
  device_->free_memory(allocation);
}

void device_memory::refuse_missing_allocation() {
  throw std::logic_error(
      "Attempting to obtain a reference to a device allocation from a device memory object "
      "that does not contain an allocation.");
}

} // namespace oryn::tarva::library
