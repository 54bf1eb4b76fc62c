// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The second of the three levels of operations: what is to be done on which device.
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
#include <type_traits>
#include <vector>

namespace oryn::tarva::library {

// The ranges that physical operations and their device commands work on: the same numbers go from the one to the other as they
// are. Positions and counts are numbers of elements.
// They share the blocks, so that these live for as long as anyone works on them.

template <class Source, class Destination>
struct block_copy {
  std::shared_ptr<Source> source;
  std::uint64_t source_start;
  std::shared_ptr<Destination> destination;
  std::uint64_t destination_start;
  std::uint64_t count;
};

using device_to_host_copy = block_copy<device_memory, host_memory>;
using host_to_device_copy = block_copy<host_memory, device_memory>;
using device_copy = block_copy<device_memory, device_memory>;
using host_copy = block_copy<host_memory, host_memory>;

template <class Memory>
struct block_fill {
  std::shared_ptr<Memory> memory;
  std::vector<std::uint8_t> value; // the bytes of one element
  std::uint64_t start;
  std::uint64_t count;
};

using device_fill = block_fill<device_memory>;
using host_fill = block_fill<host_memory>;

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

// The fifteen kinds. `create` takes the logical operation first, then the device where a class takes one, then the fields
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

// From one block to another. The four kinds differ in where the blocks are, and so in what carries the copy out.
template <class Source, class Destination>
class copy_operation : public physical_operation {
public:
  const block_copy<Source, Destination>& get_copy() const { return copy_; }
  const std::shared_ptr<Source>& get_src_memory() const { return copy_.source; }
  const std::shared_ptr<Destination>& get_dest_memory() const { return copy_.destination; }
  std::uint64_t get_src_start_position() const { return copy_.source_start; }
  std::uint64_t get_dest_start_position() const { return copy_.destination_start; }
  std::uint64_t get_count() const { return copy_.count; }
  std::string to_string() const override {
    return std::string(head_) + "src_object_id=" + std::to_string(copy_.source->get_unique_identifier()) +
           ", dest_object_id=" + std::to_string(copy_.destination->get_unique_identifier()) +
           ", src_start_position=" + std::to_string(copy_.source_start) +
           ", dest_start_position=" + std::to_string(copy_.destination_start) +
           ", count=" + std::to_string(copy_.count) + "}";
  }

protected:
  copy_operation(operation_kind kind, const char* head, logical_pointer operation, device_pointer device,
                 block_copy<Source, Destination> copy)
      : physical_operation(kind, std::move(operation), std::move(device)), head_(head),
        copy_(std::move(copy)) {}
  // On the device of the block that is on one.
  copy_operation(operation_kind kind, const char* head, logical_pointer operation,
                 block_copy<Source, Destination> copy)
      : physical_operation(kind, std::move(operation), device_of(copy)), head_(head), copy_(std::move(copy)) {
  }

private:
  static const device_pointer& device_of(const block_copy<Source, Destination>& copy) {
    if constexpr (std::is_same_v<Source, device_memory>)
      return copy.source->get_device();
    else
      return copy.destination->get_device();
  }

  const char* head_; // the text form up to the fields
  block_copy<Source, Destination> copy_;
};

// A read by the user, or the way into staging.
class copy_device_to_host final : public copy_operation<device_memory, host_memory>,
                                  public made_shared<copy_device_to_host> {
public:
  copy_device_to_host(logical_pointer operation, device_to_host_copy copy)
      : copy_operation(operation_kind::copy_device_to_host, "copy_device_to_host: {", std::move(operation),
                       std::move(copy)) {}
};

// A write by the user, or the arrival of content on the device of a launch.
class copy_host_to_device final : public copy_operation<host_memory, device_memory>,
                                  public made_shared<copy_host_to_device> {
public:
  copy_host_to_device(logical_pointer operation, host_to_device_copy copy)
      : copy_operation(operation_kind::copy_host_to_device, "copy_host_to_device: {", std::move(operation),
                       std::move(copy)) {}
};

// Between two blocks of one device, or within one.
class copy_same_device final : public copy_operation<device_memory, device_memory>,
                               public made_shared<copy_same_device> {
public:
  copy_same_device(logical_pointer operation, device_copy copy)
      : copy_operation(operation_kind::copy_same_device, "copy_same_device: {", std::move(operation),
                       std::move(copy)) {}
};

// Without OpenCL: the device only lends its thread.
class copy_host_to_host final : public copy_operation<host_memory, host_memory>,
                                public made_shared<copy_host_to_host> {
public:
  copy_host_to_host(logical_pointer operation, device_pointer device, host_copy copy)
      : copy_operation(operation_kind::copy_host_to_host, "copy_host_to_host: {", std::move(operation),
                       std::move(device), std::move(copy)) {}
};

// Writes one element's bytes into a range of a block, again and again. On the host the bytes have the order of the block; for a
// device they have the host's until they are enqueued.
template <class Memory>
class fill_operation : public physical_operation {
public:
  const block_fill<Memory>& get_fill() const { return fill_; }
  const std::shared_ptr<Memory>& get_memory() const { return fill_.memory; }
  const std::vector<std::uint8_t>& get_value() const { return fill_.value; }
  std::uint64_t get_start_position() const { return fill_.start; }
  std::uint64_t get_count() const { return fill_.count; }

protected:
  fill_operation(operation_kind kind, logical_pointer operation, device_pointer device,
                 block_fill<Memory> fill)
      : physical_operation(kind, std::move(operation), std::move(device)), fill_(std::move(fill)) {}
  fill_operation(operation_kind kind, logical_pointer operation, block_fill<Memory> fill)
      : physical_operation(kind, std::move(operation), fill.memory->get_device()), fill_(std::move(fill)) {}

private:
  block_fill<Memory> fill_;
};

class fill_on_device final : public fill_operation<device_memory>, public made_shared<fill_on_device> {
public:
  fill_on_device(logical_pointer operation, device_fill fill)
      : fill_operation(operation_kind::fill_on_device, std::move(operation), std::move(fill)) {}
  std::string to_string() const override;
};

class fill_on_host final : public fill_operation<host_memory>, public made_shared<fill_on_host> {
public:
  fill_on_host(logical_pointer operation, device_pointer device, host_fill fill)
      : fill_operation(operation_kind::fill_on_host, std::move(operation), std::move(device),
                       std::move(fill)) {}
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

// One side of a hand-over between two devices. A pair with equal fields belongs together.
class synchronization_operation : public physical_operation {
public:
  const device_pointer& get_release_device() const { return release_device_; }
  const device_pointer& get_acquire_device() const { return acquire_device_; }
  std::uint64_t get_sync_id() const { return sync_id_; }
  std::string to_string() const override;

protected:
  synchronization_operation(operation_kind kind, const char* head, logical_pointer operation,
                            const device_pointer& device, device_pointer release_device,
                            device_pointer acquire_device, std::uint64_t sync_id)
      : physical_operation(kind, std::move(operation), device), head_(head),
        release_device_(std::move(release_device)), acquire_device_(std::move(acquire_device)),
        sync_id_(sync_id) {}

private:
  const char* head_; // the text form up to the fields
  device_pointer release_device_;
  device_pointer acquire_device_;
  std::uint64_t sync_id_;
};

// On the device that waits.
class synchronize_device_to_device_acquire final : public synchronization_operation,
                                                   public made_shared<synchronize_device_to_device_acquire> {
public:
  synchronize_device_to_device_acquire(logical_pointer operation, const device_pointer& release_device,
                                       const device_pointer& acquire_device, std::uint64_t sync_id)
      : synchronization_operation(operation_kind::synchronize_device_to_device_acquire,
                                  "synchronize_device_to_device_acquire: {", std::move(operation),
                                  acquire_device, release_device, acquire_device, sync_id) {}
};

// On the device that is waited for. The acquire's graph never has an edge to this one's.
class synchronize_device_to_device_release final : public synchronization_operation,
                                                   public made_shared<synchronize_device_to_device_release> {
public:
  synchronize_device_to_device_release(logical_pointer operation, const device_pointer& release_device,
                                       const device_pointer& acquire_device, std::uint64_t sync_id)
      : synchronization_operation(operation_kind::synchronize_device_to_device_release,
                                  "synchronize_device_to_device_release: {", std::move(operation),
                                  release_device, release_device, acquire_device, sync_id) {}
};

} // namespace physical_ir
} // namespace oryn::tarva::library
