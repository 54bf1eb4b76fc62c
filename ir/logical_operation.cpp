// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "ir/logical_operation.h"

#include "base/end_of_process.h"
#include "memory/library_memory.h"
#include "objects/library_program.h"

#include <sstream>
#include <stdexcept>

namespace oryn::tarva::library::logical_ir {

namespace {

constexpr completion_texts texts = {
    .profiling_after_submission =
        "Attempting to enable profiling on a logical operation that has already been submitted.",
    .already_submitted =
        "Attempting to set a logical operation to submitted state, but it was already submitted.",
    .complete_before_submission =
        "Attempting to set a logical operation to be complete, but it was never submitted.",
    .error_before_submission =
        "Attempting to set a logical operation to an error state, but it was never submitted.",
    .already_complete = "Attempting to set a logical operation to be complete, but it was already complete.",
    .count_after_submission = "Setting a physical operation count on a logical operation, but the logical "
                              "operation was already submitted.",
    .count_already_set = "Setting a physical operation count on a logical operation, but the physical "
                         "operation count was already set.",
    .part_before_submission =
        "Attempting to set a physical operation as completed on a logical operation that "
        "was never submitted.",
    .part_at_zero = "Notifying a logical operation that a physical operation has completed, but the count of "
                    "outstanding physical operations is zero.",
    .part_without_count = "Notifying a logical operation that a physical operation has completed, but the "
                          "count of outstanding physical operations was never set.",
    .destroyed_incomplete = "Destroying a logical operation that was not completed.",
    .destroyed_open = "Destroying a logical operation that did not close its notification pipe.",
    .destroyed_with_exception = "Caught an exception while destroying a logical operation.",
};

} // namespace

logical_operation::logical_operation(operation_kind kind) : completion_state(texts), kind(kind) {}

std::shared_ptr<library_future> logical_operation::get_future() {
  return std::make_shared<library_future>(shared_from_this());
}

// The last part. The turn is given up before anybody can see that the operation is complete, since the caller may then end it;
// and the next one is started after that, so that the caller is not kept waiting for work that is not its own.
void logical_operation::physical_operation_complete() {
  if (!count_part())
    return;
  fair_mutex::place* const next = turn != nullptr ? turn->give_up() : nullptr;
  succeed();
  if (next != nullptr)
    next->take_turn();
}

// Sleepers wake for any reason, so the condition is asked again each time. Whoever comes too late to be woken by a worker
// that has failed must not fall asleep, either.
void logical_operation::wait_until_complete() const {
  while (true) {
    const event_count::ticket seen = ended_.get_ticket();
    if (is_complete())
      return;
    if (process_has_failed)
      end_process_after_exit_handlers();
    ended_.wait(seen);
  }
}

// Every command reports its own error before its end, so whoever takes the last one sees the error. Without one
// nobody waits for the commands.
void logical_operation::device_commands_ended(std::uint64_t count) {
  if (running_commands_.fetch_sub(count) == count && has_failed())
    ended_.notify_all();
}

void logical_operation::wait_until_commands_ended() {
  while (true) {
    const event_count::ticket seen = ended_.get_ticket();
    if (running_commands_ == 0)
      return;
    ended_.wait(seen);
  }
}

namespace {

std::string text(std::uint64_t number) {
  return std::to_string(number);
}

std::string text(const void* pointer) {
  std::ostringstream stream;
  stream << pointer;
  return stream.str();
}

std::string identifier(const std::shared_ptr<library_memory>& memory) {
  return text(memory->get_unique_identifier());
}

} // namespace

std::string allocate_memory::to_string() const {
  return "allocate_memory: {mem_object_id=" + identifier(get_memory()) +
         ", type=" + data_type_name(get_memory()->get_type()) +
         ", count=" + text(get_memory()->get_num_elements()) + "}";
}

std::string free_memory::to_string() const {
  return "free_memory: {"
         "memory_object_id=" +
         identifier(get_memory()) + "}";
}

// The one refusal that needs no state of the objects, so it comes before the scheduler is asked.
copy_tarva_to_tarva::copy_tarva_to_tarva(std::shared_ptr<library_memory> source,
                                         std::shared_ptr<library_memory> destination,
                                         std::uint64_t source_start, std::uint64_t destination_start,
                                         std::uint64_t count)
    : logical_operation(operation_kind::copy_tarva_to_tarva), src_memory_(std::move(source)),
      dest_memory_(std::move(destination)), src_start_position_(source_start),
      dest_start_position_(destination_start), count_(count) {
  if (src_memory_->get_type() != dest_memory_->get_type())
    throw std::logic_error("Cannot copy between memory objects with different types.");
}

std::vector<std::shared_ptr<library_memory>> copy_tarva_to_tarva::memory_objects() const {
  return {src_memory_, dest_memory_};
}

std::string copy_tarva_to_tarva::to_string() const {
  return "copy_tarva_to_tarva: {"
         "src_object_id=" +
         identifier(src_memory_) + ", dest_object_id=" + identifier(dest_memory_) +
         ", src_start_position=" + text(src_start_position_) +
         ", dest_start_position=" + text(dest_start_position_) + ", count=" + text(count_) + "}";
}

std::string copy_tarva_to_user::to_string() const {
  return "copy_tarva_to_user: {"
         "src_object_id=" +
         identifier(get_memory()) + ", src_start_position=" + text(src_start_position_) +
         ", count=" + text(count_) + ", user_ptr=" + text(user_ptr_) + "}";
}

std::string copy_user_to_tarva::to_string() const {
  return "copy_user_to_tarva: {"
         "dest_object_id=" +
         identifier(get_memory()) + ", dest_start_position=" + text(dest_start_position_) +
         ", count=" + text(count_) + ", src_ptr=" + text(src_ptr_) + "}";
}

fill::fill(std::shared_ptr<library_memory> memory, const void* pattern, std::uint64_t start_position,
           std::uint64_t count)
    : memory_operation(operation_kind::fill, std::move(memory)), start_position_(start_position),
      count_(count) {
  const auto* first = static_cast<const std::uint8_t*>(pattern);
  value_.assign(first, first + element_size(get_memory()->get_type()));
}

std::string fill::to_string() const {
  return "fill: {"
         "memory_object_id=" +
         identifier(get_memory()) + ", start_position=" + text(start_position_) + ", count=" + text(count_) +
         ", value=<omitted>"
         "}";
}

// With repeats: an object that is two arguments is there twice.
std::vector<std::shared_ptr<library_memory>> kernel::memory_objects() const {
  std::vector<std::shared_ptr<library_memory>> objects;
  for (const kernel_argument& argument : arguments.arguments)
    if (const auto* memory = std::get_if<kernel_argument_typed_library_memory_array>(&argument))
      objects.push_back(*memory);
  return objects;
}

std::string kernel::to_string() const {
  return "kernel: {" + library::to_string(range) + "}";
}

} // namespace oryn::tarva::library::logical_ir
