// Where the content of each memory object is.
#pragma once

#include "base/address_map.h"
#include "ir/physical_operation.h"

#include <memory>
#include <utility>

namespace oryn::tarva::library {

class device_memory;
class host_memory;

// Where the content of one memory object is, on the host or on a device, and its byte order: in exactly one of two blocks,
// which it keeps. No lock of its own, like all of this file: the scheduler's guards it.
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
  void set_little_endian(bool little_endian) { little_endian_ = little_endian; }

  bool is_on_host() const { return host_block_ != nullptr; }
  bool is_on_device() const { return device_block_ != nullptr; }
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

class library_memory;

// The state of every live memory object.
class memory_table {
public:
  // Both refuse an object that is there already, or is not. What they return holds until the next change.
  memory_state& add(const std::shared_ptr<library_memory>& memory);
  memory_state& find(const std::shared_ptr<library_memory>& memory);
  // Yields the last state of the object, without a block if it is not there.
  memory_state remove(const std::shared_ptr<library_memory>& memory);

private:
  struct entry {
    std::shared_ptr<library_memory> memory; // lives for as long as it has a state
    memory_state state;
  };

  address_map<entry> states_;
};

// Frees the block of the state, if that still holds storage.
void free_block(const memory_state& state);

// The movement of one object's content to the device of a launch, with what it takes to find out where the content is if
// the launch fails: the operations that were to bring it there, each of which has succeeded or not. A block is freed only
// when its content has arrived elsewhere, so that a failed move loses nothing.
struct block_move {
  std::shared_ptr<library_memory> memory{};
  memory_state before{};
  std::shared_ptr<device_memory> destination{};
  std::shared_ptr<physical_ir::physical_operation> arrival{}; // brings the content to `destination`
  // If the byte order is changed on the way:
  std::shared_ptr<physical_ir::physical_operation> conversion{};
  // If the content passes through a block on the host:
  std::shared_ptr<host_memory> staging{};
  std::shared_ptr<physical_ir::physical_operation> staged{}; // brings the content to `staging`

  // Gives the object the state of the block that holds its content, and frees the others. When every command has ended.
  void settle_after_failure(memory_table& table) const;
};

} // namespace oryn::tarva::library
