// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What each kind of physical operation becomes on a device of OpenCL.
#include "opencl/opencl_device_command.h"

#include "objects/library_program.h"

#include <stdexcept>

namespace oryn::tarva::library::device_ir::opencl {

namespace {

// Makes the commands of one operation. The work of a host function call is a lambda that shares the blocks it needs.
class command_generator {
public:
  using sequence = std::vector<std::shared_ptr<device_command>>;

  command_generator(const std::shared_ptr<physical_ir::physical_operation>& operation, opencl_queues& queues)
      : operation_(operation), queues_(queues) {}

  sequence generate() {
    using kind = physical_ir::operation_kind;
    switch (operation_->kind) {
    case kind::allocate_device_memory:
      allocate(as<physical_ir::allocate_device_memory>().get_memory());
      break;
    case kind::allocate_host_memory:
      allocate(as<physical_ir::allocate_host_memory>().get_memory());
      break;
    case kind::free_device_memory:
      free(as<physical_ir::free_device_memory>());
      break;
    case kind::free_host_memory:
      free(as<physical_ir::free_host_memory>());
      break;
    case kind::fill_on_device:
      add_fill(as<physical_ir::fill_on_device>().get_fill());
      break;
    case kind::fill_on_host:
      add_host_work([fill = as<physical_ir::fill_on_host>().get_fill()](const auto&) {
        fill.memory->fill(fill.value, fill.start, fill.count);
      });
      break;
    case kind::kernel:
      add(as<physical_ir::kernel>().launch.kernel_object->make_launch_command(operation_));
      break;
    case kind::copy_same_device:
      add_copy(as<physical_ir::copy_same_device>().get_copy());
      break;
    case kind::copy_host_to_device:
      add_copy(as<physical_ir::copy_host_to_device>().get_copy());
      break;
    case kind::copy_device_to_host:
      add_copy(as<physical_ir::copy_device_to_host>().get_copy());
      break;
    case kind::copy_host_to_host:
      add_host_work([copy = as<physical_ir::copy_host_to_host>().get_copy()](const auto&) {
        copy.source->copy_to(copy.destination, copy.source_start, copy.destination_start, copy.count);
      });
      break;
    case kind::convert_endianness_host:
      add_host_work([memory = as<physical_ir::convert_endianness_host>().get_memory()](const auto&) {
        memory->convert_endianness();
      });
      break;
    case kind::convert_endianness_device:
      add_staged_conversion(as<physical_ir::convert_endianness_device>().get_memory());
      break;
    case kind::synchronize_device_to_device_release:
      add_synchronization<synchronization_release>(as<physical_ir::synchronize_device_to_device_release>());
      break;
    case kind::synchronize_device_to_device_acquire:
      add_synchronization<synchronization_acquire>(as<physical_ir::synchronize_device_to_device_acquire>());
      break;
    }
    return std::move(sequence_);
  }

private:
  template <class Operation>
  const Operation& as() const {
    return static_cast<const Operation&>(*operation_);
  }

  void add(std::shared_ptr<device_command> command) { sequence_.push_back(std::move(command)); }

  void add_host_work(host_function_call::function work) {
    add(host_function_call::create(operation_, std::move(work)));
  }

  void add_fill(const device_fill& fill) {
    if (auto command = queues_.make_fill(operation_, fill))
      add(std::move(command));
    else
      add_staged_fill(fill);
  }

  template <class Copy>
  void add_copy(Copy copy) {
    add(queues_.make_copy(operation_, std::move(copy)));
  }

  template <class Command, class Operation>
  void add_synchronization(const Operation& operation) {
    add(std::make_shared<Command>(operation_, operation));
  }

  // The storage is obtained when the command runs, so what fails then fails the command.
  template <class Memory>
  void allocate(const std::shared_ptr<Memory>& memory) {
    add_host_work([memory](const auto&) { memory->allocate(); });
  }

  // A block whose content has not arrived elsewhere is kept: it still holds what the user has. The physical operation
  // lives as long as its commands.
  template <class Operation>
  void free(const Operation& operation) {
    add_host_work([&operation](const auto&) {
      if (!operation.content_is_needed())
        operation.get_memory()->free();
    });
  }

  // In a version without a fill command a block on the host is filled, in the byte order of the device, and copied: the result is
  // that of a fill.
  void add_staged_fill(const device_fill& fill) {
    auto staging = std::make_shared<host_memory>();
    staging->set_allocation(fill.memory->get_type(), fill.count);
    add_host_work([staging, value = fill.value, count = fill.count](const auto& command) {
      staging->allocate();
      std::vector<std::uint8_t> bytes = value;
      if (!command->get_device().is_little_endian())
        swap_endianness(bytes.data(), staging->get_type(), 0, 1);
      staging->fill(bytes, 0, count);
    });
    add_copy(host_to_device_copy{staging, 0, fill.memory, fill.start, fill.count});
    free_staging(staging);
  }

  // Copies the content to the host, reverses its byte order there, and copies it back, as one sequence of this device's worker.
  void add_staged_conversion(const std::shared_ptr<device_memory>& memory) {
    const std::uint64_t size = memory->get_size();
    auto staging = std::make_shared<host_memory>();
    staging->set_allocation(memory->get_type(), size);
    allocate(staging);
    add_copy(device_to_host_copy{memory, 0, staging, 0, size});
    add_host_work([staging](const auto&) { staging->convert_endianness(); });
    add_copy(host_to_device_copy{staging, 0, memory, 0, size});
    free_staging(staging);
  }

  void free_staging(const std::shared_ptr<host_memory>& staging) {
    add_host_work([staging](const auto&) { staging->free(); });
  }

  const std::shared_ptr<physical_ir::physical_operation>& operation_; // the caller's
  opencl_queues& queues_;
  sequence sequence_;
};

} // namespace

std::vector<std::shared_ptr<device_command>>
generate_device_command_sequence(const std::shared_ptr<physical_ir::physical_operation>& operation,
                                 opencl_queues& queues) {
  if (!operation)
    throw std::logic_error("Unknown physical IR node type.");
  return command_generator(operation, queues).generate();
}

} // namespace oryn::tarva::library::device_ir::opencl
