// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The second of the three levels of operations: what is to be done on which device. The kinds that work on ranges of elements
// are in ir/range_operations.h.
#pragma once

#include "base/completion_state.h"
#include "ir/logical_operation.h"
#include "memory/device_memory.h"
#include "memory/host_memory.h"
#include "objects/library_device.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace oryn::tarva::library {

// One side of a hand-over from the commands of one device to those of another. The operations and the commands of a pair have
// equal fields.
class hand_over {
public:
  hand_over(std::shared_ptr<library_device> release_device, std::shared_ptr<library_device> acquire_device,
            std::uint64_t sync_id)
      : release_device_(std::move(release_device)), acquire_device_(std::move(acquire_device)),
        sync_id_(sync_id) {}

  const std::shared_ptr<library_device>& get_release_device() const { return release_device_; }
  const std::shared_ptr<library_device>& get_acquire_device() const { return acquire_device_; }
  std::uint64_t get_sync_id() const { return sync_id_; }

protected:
  // The end of the text form.
  std::string fields_text() const;

private:
  std::shared_ptr<library_device> release_device_;
  std::shared_ptr<library_device> acquire_device_;
  std::uint64_t sync_id_;
};

namespace physical_ir {

// The kinds of physical operation. A switch over them that leaves one out does not compile.
enum class operation_kind : std::uint8_t {
  allocate_device_memory,
  allocate_host_memory,
  free_host_memory,
  free_device_memory,
  fill_on_device,
  fill_on_host,
  kernel,
  copy_same_device,
  copy_host_to_device,
  copy_device_to_host,
  copy_host_to_host,
  convert_endianness_host,
  convert_endianness_device,
  synchronize_device_to_device_release,
  synchronize_device_to_device_acquire,
};

using logical_pointer = std::shared_ptr<logical_ir::logical_operation>;
using device_pointer = std::shared_ptr<library_device>;

// A part of a logical operation whose place is decided. Counts its device commands down and passes completion, errors and
// times on to its logical operation. Made on the thread that starts the operation, ended on that which runs its
// commands; no lock of its own.
class physical_operation : private completion_state {
public:
  const operation_kind kind; // of the class below, of which there is one for each
  const logical_pointer logical_operation;
  const device_pointer device; // whose dispatcher runs it, also for work on host memory

  virtual ~physical_operation() = default;
  physical_operation(const physical_operation&) = delete;
  physical_operation& operator=(const physical_operation&) = delete;

  virtual std::string to_string() const = 0;

  using completion_state::has_succeeded;

  // Counted and submitted before any of its commands is handed over; after that the commands report here.
  void set_device_command_count(std::uint64_t count) { set_part_count(count); }
  using completion_state::set_submitted;
  void device_command_complete();
  void set_error(const std::exception_ptr& error);
  void add_elapsed_time(std::uint64_t nanoseconds);
  using completion_state::enable_profiling;

protected:
  physical_operation(operation_kind kind, logical_pointer logical_operation, device_pointer device);
};

// The kinds. `create` takes the logical operation first, then the device where a class takes one, then the fields
// in order.

// On one block. On host memory the device is given; on device memory it is the block's own.
template <class Memory>
class block_operation : public physical_operation {
public:
  const std::shared_ptr<Memory>& get_memory() const { return memory_; }

protected:
  block_operation(operation_kind kind, logical_pointer operation, device_pointer device,
                  std::shared_ptr<Memory> memory)
      : physical_operation(kind, std::move(operation), std::move(device)), memory_(std::move(memory)) {}
  block_operation(operation_kind kind, logical_pointer operation, std::shared_ptr<Memory> memory)
      : physical_operation(kind, std::move(operation), memory->get_device()), memory_(std::move(memory)) {}

private:
  std::shared_ptr<Memory> memory_;
};

// What comes after an allocation in a graph must know the shape of the block, so it is set when the operation is made; the
// storage comes into being when it runs.
class allocate_device_memory final : public block_operation<device_memory>,
                                     public made_shared<allocate_device_memory> {
public:
  allocate_device_memory(logical_pointer operation, std::shared_ptr<device_memory> memory, data_type type,
                         std::uint64_t count);
  std::string to_string() const override;
};

class allocate_host_memory final : public block_operation<host_memory>,
                                   public made_shared<allocate_host_memory> {
public:
  allocate_host_memory(logical_pointer operation, device_pointer device, std::shared_ptr<host_memory> memory,
                       data_type type, std::uint64_t count);
  std::string to_string() const override;
};

// Frees a block. A block whose content moves elsewhere is given the operation that brings the content there, and is kept if
// that one has failed.
template <class Memory>
class free_operation : public block_operation<Memory> {
public:
  bool content_is_needed() const { return mover_ && !mover_->has_succeeded(); }

protected:
  template <class... Arguments>
  explicit free_operation(std::shared_ptr<physical_operation> mover, Arguments&&... arguments)
      : block_operation<Memory>(std::forward<Arguments>(arguments)...), mover_(std::move(mover)) {}

private:
  std::shared_ptr<physical_operation> mover_;
};

// The end of a memory object on a device, or of the block that it has left.
class free_device_memory final : public free_operation<device_memory>,
                                 public made_shared<free_device_memory> {
public:
  free_device_memory(logical_pointer operation, std::shared_ptr<device_memory> memory,
                     std::shared_ptr<physical_operation> mover = {})
      : free_operation(std::move(mover), operation_kind::free_device_memory, std::move(operation),
                       std::move(memory)) {}
  std::string to_string() const override;
};

// The same on the host; also the end of staging.
class free_host_memory final : public free_operation<host_memory>, public made_shared<free_host_memory> {
public:
  free_host_memory(logical_pointer operation, device_pointer device, std::shared_ptr<host_memory> memory,
                   std::shared_ptr<physical_operation> mover = {})
      : free_operation(std::move(mover), operation_kind::free_host_memory, std::move(operation),
                       std::move(device), std::move(memory)) {}
  std::string to_string() const override;
};

// Reverses the byte order of all that is in a block on a device. No OpenCL command does that, so it goes through the host.
class convert_endianness_device final : public block_operation<device_memory>,
                                        public made_shared<convert_endianness_device> {
public:
  convert_endianness_device(logical_pointer operation, std::shared_ptr<device_memory> memory)
      : block_operation(operation_kind::convert_endianness_device, std::move(operation), std::move(memory)) {}
  std::string to_string() const override;
};

// The same in a block on the host, in place: what a launch does before it copies content to a device of the other byte order.
class convert_endianness_host final : public block_operation<host_memory>,
                                      public made_shared<convert_endianness_host> {
public:
  convert_endianness_host(logical_pointer operation, device_pointer device,
                          std::shared_ptr<host_memory> memory)
      : block_operation(operation_kind::convert_endianness_host, std::move(operation), std::move(device),
                        std::move(memory)) {}
  std::string to_string() const override;
};

// The launch itself, when all content has arrived: its arguments are blocks, and its range is as it will be told to OpenCL.
class kernel final : public physical_operation, public made_shared<kernel> {
public:
  // `launch` is what `operation` points to.
  kernel(logical_pointer operation, device_pointer device, const logical_ir::kernel& launch,
         const nd_range& range, std::vector<kernel_argument_typed_device_memory_array> blocks)
      : physical_operation(operation_kind::kernel, std::move(operation), std::move(device)), launch(launch),
        range(range), blocks(std::move(blocks)) {}

  const logical_ir::kernel& launch; // the kernel object and the arguments
  const nd_range range;
  const std::vector<kernel_argument_typed_device_memory_array>
      blocks; // one for each memory argument, in order
  std::string to_string() const override;
};

class synchronization_operation : public physical_operation, public hand_over {
public:
  std::string to_string() const override { return head_ + (", " + fields_text()); }

protected:
  synchronization_operation(operation_kind kind, const char* head, logical_pointer operation,
                            const device_pointer& device, hand_over between)
      : physical_operation(kind, std::move(operation), device), hand_over(std::move(between)), head_(head) {}

private:
  const char* head_; // the text form up to the fields
};

// On the device that waits.
class synchronize_device_to_device_acquire final : public synchronization_operation,
                                                   public made_shared<synchronize_device_to_device_acquire> {
public:
  synchronize_device_to_device_acquire(logical_pointer operation, const device_pointer& release_device,
                                       const device_pointer& acquire_device, std::uint64_t sync_id)
      : synchronization_operation(operation_kind::synchronize_device_to_device_acquire,
                                  "synchronize_device_to_device_acquire: {", std::move(operation),
                                  acquire_device, {release_device, acquire_device, sync_id}) {}
};

// On the device that is waited for. The acquire's graph never has an edge to this one's.
class synchronize_device_to_device_release final : public synchronization_operation,
                                                   public made_shared<synchronize_device_to_device_release> {
public:
  synchronize_device_to_device_release(logical_pointer operation, const device_pointer& release_device,
                                       const device_pointer& acquire_device, std::uint64_t sync_id)
      : synchronization_operation(operation_kind::synchronize_device_to_device_release,
                                  "synchronize_device_to_device_release: {", std::move(operation),
                                  release_device, {release_device, acquire_device, sync_id}) {}
};

} // namespace physical_ir
} // namespace oryn::tarva::library
