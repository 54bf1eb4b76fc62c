// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Where the content of one memory object is, and who is next to use it. The scheduler keeps one of these for each object.
#pragma once

#include "base/fair_mutex.h"
#include "memory/device_memory.h"

#include <memory>
#include <utility>

namespace oryn::tarva::library {

class host_memory;
class library_memory;

// Where the content of one memory object is, on the host or on a device, and its byte order: in exactly one of two blocks,
// which it keeps. No lock of its own: the scheduler guards it.
// In a state without any block the object is not in the table.
class memory_state {
public:
  void set_host_block(std::shared_ptr<host_memory> block) {
    host_block_ = std::move(block);
    device_block_.reset();
    is_between_devices_ = false;
  }
  void set_device_block(std::shared_ptr<device_memory> block) {
    device_block_ = std::move(block);
    host_block_.reset();
    is_between_devices_ = false;
  }
  // Content that a failed move has left half-way between two devices. Such a move does not change the byte order, and
  // the one that takes it further must not, either.
  void set_staging_block(std::shared_ptr<host_memory> block) {
    set_host_block(std::move(block));
    is_between_devices_ = true;
  }
  // That of the content as it stands in the block. Host blocks begin little-endian, like the host itself.
  void set_little_endian(bool little_endian) { little_endian_ = little_endian; }

  bool is_on_host() const { return host_block_ != nullptr; }
  bool is_on_device() const { return device_block_ != nullptr; }
  bool is_on(const std::shared_ptr<library_device>& device) const {
    return device_block_ && device_block_->get_device() == device;
  }
  bool is_between_devices() const { return is_between_devices_; }
  const std::shared_ptr<host_memory>& get_host_block() const { return host_block_; }
  const std::shared_ptr<device_memory>& get_device_block() const { return device_block_; }
  bool is_little_endian() const { return little_endian_; }

private:
  bool little_endian_ = true;
  bool is_between_devices_ = false;
  std::shared_ptr<host_memory> host_block_;
  std::shared_ptr<device_memory> device_block_;
};

// The entry of one memory object in the table of a scheduler. It stands in the object itself, so that nothing has to be
// looked up and no entry ever moves because others come or go.
struct memory_entry {
  std::shared_ptr<library_memory>
      memory; // the object itself while it is in the table, where it thus stays alive
  memory_state state;
  // Of the table's list.
  library_memory* before = nullptr;
  library_memory* after = nullptr;
  // For a scheduler under which operations wait for objects: who uses this one, and who is next.
  fair_mutex turns;
};

} // namespace oryn::tarva::library
