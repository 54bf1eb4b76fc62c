// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "ir/physical_operation.h"

namespace oryn::tarva::library {

std::string hand_over::fields_text() const {
  return "release_device=" + std::to_string(release_device_->get_unique_identifier()) +
         ", acquire_device=" + std::to_string(acquire_device_->get_unique_identifier()) +
         ", sync_id=" + std::to_string(sync_id_) + "}";
}

} // namespace oryn::tarva::library

namespace oryn::tarva::library::physical_ir {

namespace {

constexpr completion_texts texts = {
    .profiling_after_submission =
        "Attempting to enable profiling on a physical operation that has already been submitted.",
    .already_submitted =
        "Attempting to set a physical operation to submitted state, but it was already submitted.",
    .complete_before_submission =
        "Attempting to set a physical operation to be complete, but it was never submitted.",
    .error_before_submission =
        "Attempting to set a physical operation to an error state, but it was never submitted.",
    .already_complete = "Attempting to set a physical operation to be complete, but it was already complete.",
    .count_after_submission = "Setting a device command count on a physical operation, but the physical "
                              "operation was already submitted.",
    .count_already_set =
        "Setting a device command count on a physical operation, but the device command count "
        "was already set.",
    .part_before_submission =
        "Attempting to set a device command as completed on a physical operation that was "
        "never submitted.",
    .part_at_zero = "Notifying a physical operation that a device command has completed, but the count of "
                    "outstanding device commands is zero.",
    .part_without_count = "Notifying a physical operation that a device command has completed, but the count "
                          "of outstanding device commands was never set.",
    .destroyed_incomplete = "Destroying a physical operation that was not completed.",
    .destroyed_open = "Destroying a physical operation that did not close its notification pipe.",
    .destroyed_with_exception = "Caught an exception while destroying a physical operation.",
};

} // namespace

physical_operation::physical_operation(operation_kind kind, logical_pointer logical_operation,
                                       device_pointer device)
    : completion_state(texts), kind(kind), logical_operation(std::move(logical_operation)),
      device(std::move(device)) {}

// An error from elsewhere may have come first. The last end is told all the same, and the level above knows what to do.
void physical_operation::device_command_complete() {
  if (!count_part())
    return;
  succeed();
  logical_operation->physical_operation_complete();
}

// The first error of any command is that of the whole. Later ones say nothing more.
void physical_operation::set_error(const std::exception_ptr& error) {
  if (completion_state::set_error(error))
    logical_operation->set_error(error);
}

void physical_operation::add_elapsed_time(std::uint64_t nanoseconds) {
  completion_state::add_elapsed_time(nanoseconds);
  logical_operation->add_elapsed_time(nanoseconds);
}

namespace {

template <class Memory>
std::string identifier(const std::shared_ptr<Memory>& memory) {
  return std::to_string(memory->get_unique_identifier());
}

template <class Memory>
std::string shape_text(const std::shared_ptr<Memory>& memory) {
  return "memory_id=" + identifier(memory) + ", type=" + data_type_name(memory->get_type()) +
         ", count=" + std::to_string(memory->get_size()) + "}";
}

} // namespace

// The shape is set here and not when the operation runs: later operations of the graph are made with it.
allocate_device_memory::allocate_device_memory(logical_pointer operation,
                                               std::shared_ptr<device_memory> memory, data_type type,
                                               std::uint64_t count)
    : block_operation(operation_kind::allocate_device_memory, std::move(operation), std::move(memory)) {
  get_memory()->set_allocation(type, count);
}

std::string allocate_device_memory::to_string() const {
  if (!get_memory()->is_set_up())
    return "allocate_device_memory: { <not set> }";
  return "allocate_device_memory: {" + shape_text(get_memory());
}

allocate_host_memory::allocate_host_memory(logical_pointer operation, device_pointer device,
                                           std::shared_ptr<host_memory> memory, data_type type,
                                           std::uint64_t count)
    : block_operation(operation_kind::allocate_host_memory, std::move(operation), std::move(device),
                      std::move(memory)) {
  get_memory()->set_allocation(type, count);
}

std::string allocate_host_memory::to_string() const {
  if (!get_memory()->is_set_up())
    return "allocate_host_memory: { <not set> }";
  return "allocate_host_memory: {" + shape_text(get_memory());
}

std::string free_device_memory::to_string() const {
  return "free_device_memory: {memory_object_id=" + identifier(get_memory()) + "}";
}

std::string free_host_memory::to_string() const {
  return "host_memory: {memory_object_id=" + identifier(get_memory()) + "}";
}

std::string convert_endianness_device::to_string() const {
  return "convert_endianness_device: {memory_id=" + identifier(get_memory()) + "}";
}

std::string convert_endianness_host::to_string() const {
  return "convert_endianness_host: {memory_id=" + identifier(get_memory()) + "}";
}

std::string kernel::to_string() const {
  return "kernel: { <omitted> }";
}

} // namespace oryn::tarva::library::physical_ir
