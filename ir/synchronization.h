#pragma once

#include "ir/device_command.h"

namespace oryn::tarva::library::device_ir {

// One side of a hand-over from one device's command sequence to another's; a pair has equal fields.
class synchronization_command : public device_command {
public:
  using device_pointer = std::shared_ptr<library_device>;

  const device_pointer& get_release_device() const { return release_device_; }
  const device_pointer& get_acquire_device() const { return acquire_device_; }
  std::uint64_t get_sync_id() const { return sync_id_; }
  std::string to_string() const override;

protected:
  synchronization_command(command_kind kind, const char* head,
                          std::shared_ptr<physical_ir::physical_operation> operation,
                          device_pointer release_device, device_pointer acquire_device, std::uint64_t sync_id)
      : device_command(kind, std::move(operation)), head_(head), release_device_(std::move(release_device)),
        acquire_device_(std::move(acquire_device)), sync_id_(sync_id) {}

private:
  const char* head_; // the text form up to the fields
  device_pointer release_device_;
  device_pointer acquire_device_;
  std::uint64_t sync_id_;
};

// Holds its list back until the signal has come; the dispatcher drives it.
class synchronization_acquire final : public synchronization_command {
public:
  synchronization_acquire(std::shared_ptr<physical_ir::physical_operation> operation,
                          device_pointer release_device, device_pointer acquire_device, std::uint64_t sync_id)
      : synchronization_command(command_kind::synchronization_acquire, "synchronization_acquire: {",
                                std::move(operation), std::move(release_device), std::move(acquire_device),
                                sync_id) {}
};

class synchronization_release final : public synchronization_command {
public:
  synchronization_release(std::shared_ptr<physical_ir::physical_operation> operation,
                          device_pointer release_device, device_pointer acquire_device, std::uint64_t sync_id)
      : synchronization_command(command_kind::synchronization_release, "synchronization_release: {",
                                std::move(operation), std::move(release_device), std::move(acquire_device),
                                sync_id) {}

  // Signals the acquiring dispatcher without waiting for it. A failure ends this command and does not leave.
  void run();
};

} // namespace oryn::tarva::library::device_ir
