// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Blocks of memory on a device.
#pragma once

#include "properties/data_type.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace oryn::tarva::library {

class library_device;

// Storage on one device, as the device has made it. Keeps the device alive.
//
// Made by the device (library_device::allocate_memory), owned by one device_memory. It never changes.
struct device_memory_allocation {
  device_memory_allocation(std::shared_ptr<library_device> device, data_type type, std::uint64_t size,
                           void* opencl_buffer)
      : device(std::move(device)), opencl_buffer(opencl_buffer), size(size), type(type) {}
  virtual ~device_memory_allocation() = default;
  device_memory_allocation(const device_memory_allocation&) = delete;
  device_memory_allocation& operator=(const device_memory_allocation&) = delete;

  const std::shared_ptr<library_device> device;
  void* const
      opencl_buffer; // the handle by which OpenCL knows it, in the context of the device; the derived class owns it
  const std::uint64_t size;
  const data_type type;
};

// A typed block of storage on one device: described once when its operation is lowered, then allocated, used and freed by the
// commands of the device's worker. Sizes are numbers of elements. It has no lock: the commands of one block run one after the
// other, and callers touch it again only when they have ended.
//
// What is wrong with a use of it throws std::logic_error and changes nothing.
class device_memory {
public:
  explicit device_memory(std::shared_ptr<library_device> device);
  ~device_memory();
  device_memory(const device_memory&) = delete;
  device_memory& operator=(const device_memory&) = delete;

  std::uint64_t get_unique_identifier() const { return identifier_; }
  bool is_set_up() const { return set_up_; }
  data_type get_type() const;
  std::uint64_t get_size() const;
  const std::shared_ptr<library_device>& get_device() const { return device_; }
  bool has_allocation() const { return allocation_ != nullptr; }
  // False until something is put into the allocation: copies out of it copy nothing. One element makes all of it content.
  bool has_content() const { return has_content_; }
  // Before anything is put in, since what fails half-way may have put in some of it.
  void mark_content() { has_content_ = true; }

  // Describes the block, once. Needs no storage, so that what follows in a graph can be checked before any of it runs.
  void set_allocation(data_type type, std::uint64_t size);
  // Obtains storage, without content. Throws what the device throws if it has none, and is then as before.
  void allocate();
  void free();
  // From allocate() to free().
  device_memory_allocation& get_allocation() const {
    if (!allocation_)
      refuse_missing_allocation();
    return *allocation_;
  }

private:
  [[noreturn]] static void refuse_missing_allocation();

  const std::uint64_t identifier_;
  const std::shared_ptr<library_device> device_; // outlives the allocation below
  std::unique_ptr<device_memory_allocation> allocation_;
  data_type type_{};
  std::uint64_t size_ = 0;
  bool set_up_ = false;
  bool has_content_ = false;
};

} // namespace oryn::tarva::library
