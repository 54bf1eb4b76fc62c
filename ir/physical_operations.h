#pragma once

#include "ir/concrete_operation.h"
#include "ir/nd_range.h"
#include "ir/physical_operation.h"
#include "memory/device_memory.h"
#include "memory/host_memory.h"
#include "objects/kernel_arguments.h"

#include <vector>

namespace oryn::tarva::library {

class library_kernel;

// The fifteen kinds of step. Positions and counts are numbers of elements. `create` takes the logical
// operation first, then the device where a class takes one, then the fields in order. Memory is shared, so
// that a step keeps its blocks alive.
namespace physical_ir {

using logical_pointer = std::shared_ptr<logical_ir::logical_operation>;
using device_pointer = std::shared_ptr<library_device>;

// A step on one block. On host memory the device is given; on device memory it is the block's own.
template <class Memory>
class block_operation : public physical_operation {
public:
  const std::shared_ptr<Memory>& get_memory() const { return memory_; }

protected:
  block_operation(logical_pointer operation, device_pointer device, std::shared_ptr<Memory> memory)
      : physical_operation(std::move(operation), std::move(device)), memory_(std::move(memory)) {}
  block_operation(logical_pointer operation, std::shared_ptr<Memory> memory)
      : physical_operation(std::move(operation), memory->get_device()), memory_(std::move(memory)) {}

private:
  std::shared_ptr<Memory> memory_;
};

// The shape of a block must be known to the steps built after this one, so it is set here; the storage comes
// into being when the step runs.
class allocate_device_memory final
    : public concrete_operation<allocate_device_memory, block_operation<device_memory>> {
public:
  allocate_device_memory(logical_pointer operation, std::shared_ptr<device_memory> memory, data_type type,
                         std::uint64_t count);
  std::string to_string() const override;
};

class allocate_host_memory final
    : public concrete_operation<allocate_host_memory, block_operation<host_memory>> {
public:
  allocate_host_memory(logical_pointer operation, device_pointer device, std::shared_ptr<host_memory> memory,
                       data_type type, std::uint64_t count);
  std::string to_string() const override;
};

// Frees a block. A block whose content moves elsewhere is given the step that brings the content there, and
// is kept if that step has failed.
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

class free_device_memory final
    : public concrete_operation<free_device_memory, free_operation<device_memory>> {
public:
  free_device_memory(logical_pointer operation, std::shared_ptr<device_memory> memory,
                     std::shared_ptr<physical_operation> mover = {})
      : concrete_operation(std::move(mover), std::move(operation), std::move(memory)) {}
  std::string to_string() const override;
};

class free_host_memory final : public concrete_operation<free_host_memory, free_operation<host_memory>> {
public:
  free_host_memory(logical_pointer operation, device_pointer device, std::shared_ptr<host_memory> memory,
                   std::shared_ptr<physical_operation> mover = {})
      : concrete_operation(std::move(mover), std::move(operation), std::move(device), std::move(memory)) {}
  std::string to_string() const override;
};

class convert_endianness_device final
    : public concrete_operation<convert_endianness_device, block_operation<device_memory>> {
public:
  convert_endianness_device(logical_pointer operation, std::shared_ptr<device_memory> memory)
      : concrete_operation(std::move(operation), std::move(memory)) {}
  std::string to_string() const override;
};

class convert_endianness_host final
    : public concrete_operation<convert_endianness_host, block_operation<host_memory>> {
public:
  convert_endianness_host(logical_pointer operation, device_pointer device,
                          std::shared_ptr<host_memory> memory)
      : concrete_operation(std::move(operation), std::move(device), std::move(memory)) {}
  std::string to_string() const override;
};

// A step that moves `count` elements between two blocks.
template <class Source, class Destination>
class copy_operation : public physical_operation {
public:
  const std::shared_ptr<Source>& get_src_memory() const { return src_memory_; }
  const std::shared_ptr<Destination>& get_dest_memory() const { return dest_memory_; }
  std::uint64_t get_src_start_position() const { return src_start_position_; }
  std::uint64_t get_dest_start_position() const { return dest_start_position_; }
  std::uint64_t get_count() const { return count_; }
  std::string to_string() const override {
    return head_ + std::string("src_object_id=") + std::to_string(src_memory_->get_unique_identifier()) +
           ", dest_object_id=" + std::to_string(dest_memory_->get_unique_identifier()) +
           ", src_start_position=" + std::to_string(src_start_position_) +
           ", dest_start_position=" + std::to_string(dest_start_position_) +
           ", count=" + std::to_string(count_) + "}";
  }

protected:
  copy_operation(const char* head, logical_pointer operation, device_pointer device,
                 std::shared_ptr<Source> source, std::shared_ptr<Destination> destination,
                 std::uint64_t source_start, std::uint64_t destination_start, std::uint64_t count)
      : physical_operation(std::move(operation), std::move(device)), head_(head),
        src_memory_(std::move(source)), dest_memory_(std::move(destination)),
        src_start_position_(source_start), dest_start_position_(destination_start), count_(count) {}

private:
  const char* head_; // the text form up to the fields
  std::shared_ptr<Source> src_memory_;
  std::shared_ptr<Destination> dest_memory_;
  std::uint64_t src_start_position_;
  std::uint64_t dest_start_position_;
  std::uint64_t count_;
};

class copy_device_to_host final
    : public concrete_operation<copy_device_to_host, copy_operation<device_memory, host_memory>> {
public:
  copy_device_to_host(logical_pointer operation, const std::shared_ptr<device_memory>& source,
                      std::shared_ptr<host_memory> destination, std::uint64_t source_start,
                      std::uint64_t destination_start, std::uint64_t count)
      : concrete_operation("copy_device_to_host: {", std::move(operation), source->get_device(), source,
                           std::move(destination), source_start, destination_start, count) {}
};

class copy_host_to_device final
    : public concrete_operation<copy_host_to_device, copy_operation<host_memory, device_memory>> {
public:
  copy_host_to_device(logical_pointer operation, std::shared_ptr<host_memory> source,
                      const std::shared_ptr<device_memory>& destination, std::uint64_t source_start,
                      std::uint64_t destination_start, std::uint64_t count)
      : concrete_operation("copy_host_to_device: {", std::move(operation), destination->get_device(),
                           std::move(source), destination, source_start, destination_start, count) {}
};

class copy_same_device final
    : public concrete_operation<copy_same_device, copy_operation<device_memory, device_memory>> {
public:
  copy_same_device(logical_pointer operation, const std::shared_ptr<device_memory>& source,
                   std::shared_ptr<device_memory> destination, std::uint64_t source_start,
                   std::uint64_t destination_start, std::uint64_t count)
      : concrete_operation("copy_same_device: {", std::move(operation), source->get_device(), source,
                           std::move(destination), source_start, destination_start, count) {}
};

class copy_host_to_host final
    : public concrete_operation<copy_host_to_host, copy_operation<host_memory, host_memory>> {
public:
  copy_host_to_host(logical_pointer operation, device_pointer device, std::shared_ptr<host_memory> source,
                    std::shared_ptr<host_memory> destination, std::uint64_t source_start,
                    std::uint64_t destination_start, std::uint64_t count)
      : concrete_operation("copy_host_to_host: {", std::move(operation), std::move(device), std::move(source),
                           std::move(destination), source_start, destination_start, count) {}
};

// A step that writes one element's bytes into `count` elements.
template <class Memory>
class fill_operation : public block_operation<Memory> {
public:
  const std::vector<std::uint8_t>& get_value() const { return value_; }
  std::uint64_t get_start_position() const { return start_position_; }
  std::uint64_t get_count() const { return count_; }

protected:
  template <class... Arguments>
  fill_operation(std::vector<std::uint8_t> value, std::uint64_t start_position, std::uint64_t count,
                 Arguments&&... arguments)
      : block_operation<Memory>(std::forward<Arguments>(arguments)...), value_(std::move(value)),
        start_position_(start_position), count_(count) {}

private:
  std::vector<std::uint8_t> value_;
  std::uint64_t start_position_;
  std::uint64_t count_;
};

class fill_on_device final : public concrete_operation<fill_on_device, fill_operation<device_memory>> {
public:
  fill_on_device(logical_pointer operation, std::shared_ptr<device_memory> memory,
                 std::vector<std::uint8_t> value, std::uint64_t start_position, std::uint64_t count)
      : concrete_operation(std::move(value), start_position, count, std::move(operation), std::move(memory)) {
  }
  std::string to_string() const override;
};

class fill_on_host final : public concrete_operation<fill_on_host, fill_operation<host_memory>> {
public:
  fill_on_host(logical_pointer operation, device_pointer device, std::shared_ptr<host_memory> memory,
               std::vector<std::uint8_t> value, std::uint64_t start_position, std::uint64_t count)
      : concrete_operation(std::move(value), start_position, count, std::move(operation), std::move(device),
                           std::move(memory)) {}
  std::string to_string() const override;
};

class kernel final : public concrete_operation<kernel, physical_operation> {
public:
  kernel(logical_pointer operation, device_pointer device, std::shared_ptr<library_kernel> kernel_object,
         kernel_argument_capture arguments, const nd_range& range)
      : concrete_operation(std::move(operation), std::move(device)), kernel_object_(std::move(kernel_object)),
        arguments_(std::move(arguments)), range_(range) {}

  const std::shared_ptr<library_kernel>& get_kernel_object() const { return kernel_object_; }
  const kernel_argument_capture& get_arguments() const { return arguments_; }
  const nd_range& get_range() const { return range_; }
  std::string to_string() const override;

private:
  std::shared_ptr<library_kernel> kernel_object_;
  kernel_argument_capture arguments_;
  nd_range range_;
};

// One side of a hand-over between two devices. A pair with equal fields belongs together.
class synchronization_operation : public physical_operation {
public:
  const device_pointer& get_release_device() const { return release_device_; }
  const device_pointer& get_acquire_device() const { return acquire_device_; }
  std::uint64_t get_sync_id() const { return sync_id_; }
  std::string to_string() const override;

protected:
  synchronization_operation(const char* head, logical_pointer operation, const device_pointer& device,
                            device_pointer release_device, device_pointer acquire_device,
                            std::uint64_t sync_id)
      : physical_operation(std::move(operation), device), head_(head),
        release_device_(std::move(release_device)), acquire_device_(std::move(acquire_device)),
        sync_id_(sync_id) {}

private:
  const char* head_; // the text form up to the fields
  device_pointer release_device_;
  device_pointer acquire_device_;
  std::uint64_t sync_id_;
};

class synchronize_device_to_device_acquire final
    : public concrete_operation<synchronize_device_to_device_acquire, synchronization_operation> {
public:
  synchronize_device_to_device_acquire(logical_pointer operation, const device_pointer& release_device,
                                       const device_pointer& acquire_device, std::uint64_t sync_id)
      : concrete_operation("synchronize_device_to_device_acquire: {", std::move(operation), acquire_device,
                           release_device, acquire_device, sync_id) {}
};

class synchronize_device_to_device_release final
    : public concrete_operation<synchronize_device_to_device_release, synchronization_operation> {
public:
  synchronize_device_to_device_release(logical_pointer operation, const device_pointer& release_device,
                                       const device_pointer& acquire_device, std::uint64_t sync_id)
      : concrete_operation("synchronize_device_to_device_release: {", std::move(operation), release_device,
                           release_device, acquire_device, sync_id) {}
};

} // namespace physical_ir
} // namespace oryn::tarva::library
