#pragma once

#include <memory>
#include <utility>

namespace oryn::tarva::library {

class device_memory;
class host_memory;

// Where the content of one memory object is, on the host or on a device, and its byte order.
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

} // namespace oryn::tarva::library
