// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The first of the three levels of operations: what a caller asks for, and how it ended.
#pragma once

#include "base/completion_state.h"
#include "base/fair_mutex.h"
#include "base/notifier.h"
#include "ir/nd_range.h"
#include "objects/kernel_arguments.h"

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

class library_future;
class library_kernel;
class library_memory;

namespace logical_ir {

// The kinds of logical operation. A switch over them that leaves one out does not compile.
enum class operation_kind : std::uint8_t {
  allocate_memory,
  free_memory,
  fill,
  kernel,
  copy_tarva_to_user,
  copy_user_to_tarva,
  copy_tarva_to_tarva,
};

// What the user asked for, with no decision yet on where or how it runs, and the record of its progress. Made by the thread
// of a caller, ended by the workers of devices, and asked by any thread: all members are atomic or have locks of their own.
class logical_operation : public completion_state, public std::enable_shared_from_this<logical_operation> {
public:
  const operation_kind kind; // of the class below, of which there is one for each

  virtual ~logical_operation() = default;
  logical_operation(const logical_operation&) = delete;
  logical_operation& operator=(const logical_operation&) = delete;

  // The memory objects that the operation names, in argument order, with repeats.
  virtual std::vector<std::shared_ptr<library_memory>> memory_objects() const = 0;
  virtual std::string to_string() const = 0;

  std::shared_ptr<library_future> get_future();
  // Sleeps until the operation has succeeded or failed. Does not return if a worker has failed for good: then the process
  // ends, at the latest by the thread that waits here.
  void wait_until_complete() const;
  // For a worker that has failed: whoever waits looks again whether there is still something to wait for.
  void wake_waiters() const noexcept { ended_.notify_all(); }

  // Its parts are its physical operations.
  void set_physical_operation_count(std::uint64_t count) { set_part_count(count); }
  void physical_operation_complete();

  // Its place in the order in which a scheduler has accepted operations, if several of them may go on at a time; 0 otherwise.
  // Set before the work is handed over.
  std::uint64_t acceptance_number = 0;

  // A turn that is passed on when all of the work has succeeded, just before the operation is complete: on the thread that
  // completes it, so that others need not wait until the caller's thread has woken. Set before the work is handed over.
  fair_mutex::place* turn = nullptr;

  // An error completes the operation at once, while commands of it may still run. With these three the scheduler waits for
  // the last of them: `count` commands are on their way to a worker; as many have ended; wait until all have.
  void add_device_commands(std::uint64_t count) { running_commands_ += count; }
  void device_commands_ended(std::uint64_t count);
  void wait_until_commands_ended();

protected:
  explicit logical_operation(operation_kind kind);

private:
  std::atomic<std::uint64_t> running_commands_ = 0; // who waits for the last one waits at `ended_`
};

} // namespace logical_ir

// The user's hold on one logical operation, in which all that is known of its end is kept. It adds nothing of its own: several
// futures of one operation tell the same. Never changes, so any thread may hold and ask it.
class library_future {
public:
  explicit library_future(std::shared_ptr<logical_ir::logical_operation> operation)
      : operation_(std::move(operation)) {}
  virtual ~library_future() = default;

  std::shared_ptr<logical_ir::logical_operation> get_operation() const { return operation_; }

private:
  std::shared_ptr<logical_ir::logical_operation> operation_;
};

// Gives a class its factory: operations always live in shared pointers.
template <class Self>
struct made_shared {
  template <class... Arguments>
  static std::shared_ptr<Self> create(Arguments&&... arguments) {
    return std::make_shared<Self>(std::forward<Arguments>(arguments)...);
  }
};

namespace logical_ir {

// The seven kinds. Positions and counts are numbers of elements of the memory object's type.

// On one memory object.
class memory_operation : public logical_operation {
public:
  const std::shared_ptr<library_memory>& get_memory() const { return memory_; }
  std::vector<std::shared_ptr<library_memory>> memory_objects() const override { return {memory_}; }

protected:
  memory_operation(operation_kind kind, std::shared_ptr<library_memory> memory)
      : logical_operation(kind), memory_(std::move(memory)) {}

private:
  std::shared_ptr<library_memory> memory_;
};

// Gives the object its storage, on the host. The object has no content yet.
class allocate_memory final : public memory_operation, public made_shared<allocate_memory> {
public:
  explicit allocate_memory(std::shared_ptr<library_memory> memory)
      : memory_operation(operation_kind::allocate_memory, std::move(memory)) {}
  std::string to_string() const override;
};

// Gives up the object's content, wherever it is. Made by the release of the last handle.
class free_memory final : public memory_operation, public made_shared<free_memory> {
public:
  explicit free_memory(std::shared_ptr<library_memory> memory)
      : memory_operation(operation_kind::free_memory, std::move(memory)) {}
  std::string to_string() const override;
};

// From one object to another, or within one. Neither moves.
class copy_tarva_to_tarva final : public logical_operation, public made_shared<copy_tarva_to_tarva> {
public:
  // The two objects must have the same type.
  copy_tarva_to_tarva(std::shared_ptr<library_memory> source, std::shared_ptr<library_memory> destination,
                      std::uint64_t source_start, std::uint64_t destination_start, std::uint64_t count);

  const std::shared_ptr<library_memory>& get_src_memory() const { return src_memory_; }
  const std::shared_ptr<library_memory>& get_dest_memory() const { return dest_memory_; }
  std::uint64_t get_src_start_position() const { return src_start_position_; }
  std::uint64_t get_dest_start_position() const { return dest_start_position_; }
  std::uint64_t get_count() const { return count_; }

  std::vector<std::shared_ptr<library_memory>> memory_objects() const override;
  std::string to_string() const override;

private:
  std::shared_ptr<library_memory> src_memory_;
  std::shared_ptr<library_memory> dest_memory_;
  std::uint64_t src_start_position_;
  std::uint64_t dest_start_position_;
  std::uint64_t count_;
};

// A read: into storage of the caller's, who keeps it until the future has been waited for.
class copy_tarva_to_user final : public memory_operation, public made_shared<copy_tarva_to_user> {
public:
  copy_tarva_to_user(std::shared_ptr<library_memory> memory, std::uint64_t source_start, std::uint64_t count,
                     void* user_ptr)
      : memory_operation(operation_kind::copy_tarva_to_user, std::move(memory)),
        src_start_position_(source_start), count_(count), user_ptr_(user_ptr) {}

  std::uint64_t get_src_start_position() const { return src_start_position_; }
  std::uint64_t get_count() const { return count_; }
  void* get_user_ptr() const { return user_ptr_; }

  std::string to_string() const override;

private:
  std::uint64_t src_start_position_;
  std::uint64_t count_;
  void* user_ptr_; // the user's destination; not owned
};

// A write: out of storage of the caller's.
class copy_user_to_tarva final : public memory_operation, public made_shared<copy_user_to_tarva> {
public:
  copy_user_to_tarva(std::shared_ptr<library_memory> memory, std::uint64_t destination_start,
                     std::uint64_t count, const void* src_ptr)
      : memory_operation(operation_kind::copy_user_to_tarva, std::move(memory)),
        dest_start_position_(destination_start), count_(count), src_ptr_(src_ptr) {}

  std::uint64_t get_dest_start_position() const { return dest_start_position_; }
  std::uint64_t get_count() const { return count_; }
  const void* get_src_ptr() const { return src_ptr_; }

  std::string to_string() const override;

private:
  std::uint64_t dest_start_position_;
  std::uint64_t count_;
  const void* src_ptr_; // the user's source; not owned
};

// Writes one element over and over into a range of the object.
class fill final : public memory_operation, public made_shared<fill> {
public:
  // Copies one element of the memory's type from `pattern`.
  fill(std::shared_ptr<library_memory> memory, const void* pattern, std::uint64_t start_position,
       std::uint64_t count);

  const std::vector<std::uint8_t>& get_value() const { return value_; }
  std::uint64_t get_start_position() const { return start_position_; }
  std::uint64_t get_count() const { return count_; }

  std::string to_string() const override;

private:
  std::vector<std::uint8_t> value_;
  std::uint64_t start_position_;
  std::uint64_t count_;
};

// A launch. The memory objects among its arguments move to the device of the kernel, which is that of its program.
class kernel final : public logical_operation, public made_shared<kernel> {
public:
  kernel(std::shared_ptr<library_kernel> kernel_object, kernel_argument_capture arguments,
         const nd_range& range)
      : logical_operation(operation_kind::kernel), kernel_object(std::move(kernel_object)),
        arguments(std::move(arguments)), range(range) {}

  const std::shared_ptr<library_kernel> kernel_object;
  const kernel_argument_capture arguments;
  const nd_range range; // as the caller gave it

  std::vector<std::shared_ptr<library_memory>> memory_objects() const override;
  std::string to_string() const override;
};

} // namespace logical_ir

} // namespace oryn::tarva::library
