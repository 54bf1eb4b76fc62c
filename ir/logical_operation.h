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

class allocate_memory;
class free_memory;
class fill;
class kernel;
class copy_tarva_to_user;
class copy_user_to_tarva;
class copy_tarva_to_tarva;

// One function for each kind of logical operation.
class operation_visitor {
public:
  virtual ~operation_visitor() = default;

  virtual void visit(const allocate_memory& operation) = 0;
  virtual void visit(const free_memory& operation) = 0;
  virtual void visit(const fill& operation) = 0;
  virtual void visit(const kernel& operation) = 0;
  virtual void visit(const copy_tarva_to_user& operation) = 0;
  virtual void visit(const copy_user_to_tarva& operation) = 0;
  virtual void visit(const copy_tarva_to_tarva& operation) = 0;
  // For an operation of a class that is not among these.
  virtual void visit_unknown() = 0;
};

// What the user asked for, with no decision yet on where or how it runs, and the record of its progress. Made by the thread
// of a caller, ended by the workers of devices, and asked by any thread: all members are atomic or have locks of their own.
class logical_operation : public std::enable_shared_from_this<logical_operation> {
public:
  using visitor = operation_visitor;

  virtual ~logical_operation();
  logical_operation(const logical_operation&) = delete;
  logical_operation& operator=(const logical_operation&) = delete;

  // The memory objects that the operation names, in argument order, with repeats.
  virtual std::vector<std::shared_ptr<library_memory>> memory_objects() const = 0;
  virtual std::string to_string() const = 0;
  virtual void accept(visitor& visitor) const { visitor.visit_unknown(); }

  std::shared_ptr<library_future> get_future();
  bool is_complete() const { return state_.is_complete(); }
  std::exception_ptr get_error() const { return state_.get_error(); }
  // Sleeps until the operation has succeeded or failed. Does not return if a worker has failed for good: then the process
  // ends, at the latest by the thread that waits here.
  void wait_until_complete() const;
  // For a worker that has failed: whoever waits looks again whether there is still something to wait for.
  void wake_waiters() const noexcept;

  // The transitions, in their order; each is allowed once, except that of a second error, which is dropped.
  void set_physical_operation_count(std::uint64_t count) { state_.set_part_count(count); }
  void set_submitted() { state_.set_submitted(); }
  void physical_operation_complete();
  void set_error(const std::exception_ptr& error) { state_.set_error(error); }
  // Fails an operation that is not going to run, whether or not it was submitted.
  void refuse(const std::exception_ptr& error) noexcept { state_.refuse(error); }
  void add_elapsed_time(std::uint64_t nanoseconds) { state_.add_elapsed_time(nanoseconds); }
  void enable_profiling() { state_.enable_profiling(); }

  // Its place in the order in which a scheduler has accepted operations, if several of them may go on at a time; 0 otherwise.
  // Set before the work is handed over.
  void set_acceptance_number(std::uint64_t number) { acceptance_number_ = number; }
  std::uint64_t get_acceptance_number() const { return acceptance_number_; }

  // Passes the turn of the operation on, on the thread that completes it, so that others need not wait until the caller's
  // thread has woken. Called when all of the work has succeeded, just before the operation is complete. Yields who comes next.
  class turn_holder {
  public:
    virtual fair_mutex::place* give_up_turn() noexcept = 0;

  protected:
    ~turn_holder() = default;
  };
  // Before the work is handed over; for a holder that lives until the operation is complete.
  void set_turn_holder(turn_holder& holder) { turn_holder_ = &holder; }

  // An error completes the operation at once, while commands of it may still run. With these three the scheduler waits for
  // the last of them: `count` commands are on their way to a worker; as many have ended; wait until all have.
  // The first count also makes what a wait needs, so that no wait can fail for want of memory while workers are busy.
  void add_device_commands(std::uint64_t count);
  void device_commands_ended(std::uint64_t count);
  void wait_until_commands_ended();

protected:
  logical_operation();

private:
  completion_state state_;
  turn_holder* turn_holder_ = nullptr;
  std::uint64_t acceptance_number_ = 0;
  std::atomic<std::uint64_t> running_commands_ = 0;
  event_count commands_ended_;
};

} // namespace logical_ir

// The user's hold on one logical operation, in which all that is known of its end is kept.
class library_future {
public:
  explicit library_future(std::shared_ptr<logical_ir::logical_operation> operation)
      : operation_(std::move(operation)) {}
  virtual ~library_future() = default;

  std::shared_ptr<logical_ir::logical_operation> get_operation() const { return operation_; }

private:
  std::shared_ptr<logical_ir::logical_operation> operation_;
};

// What every concrete operation has, logical or physical: its factory, since it always lives in a shared pointer, and its
// way to a visitor.
template <class Self, class Base>
class concrete_operation : public Base {
public:
  using Base::Base;

  template <class... Arguments>
  static std::shared_ptr<Self> create(Arguments&&... arguments) {
    return std::make_shared<Self>(std::forward<Arguments>(arguments)...);
  }

  void accept(typename Base::visitor& visitor) const override {
    visitor.visit(static_cast<const Self&>(*this));
  }
};

namespace logical_ir {

// The seven kinds. Positions and counts are numbers of elements of the memory object's type.

// On one memory object.
class memory_operation : public logical_operation {
public:
  explicit memory_operation(std::shared_ptr<library_memory> memory) : memory_(std::move(memory)) {}

  const std::shared_ptr<library_memory>& get_memory() const { return memory_; }
  std::vector<std::shared_ptr<library_memory>> memory_objects() const override { return {memory_}; }

private:
  std::shared_ptr<library_memory> memory_;
};

class allocate_memory final : public concrete_operation<allocate_memory, memory_operation> {
public:
  using concrete_operation::concrete_operation;
  std::string to_string() const override;
};

class free_memory final : public concrete_operation<free_memory, memory_operation> {
public:
  using concrete_operation::concrete_operation;
  std::string to_string() const override;
};

class copy_tarva_to_tarva final : public concrete_operation<copy_tarva_to_tarva, logical_operation> {
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

class copy_tarva_to_user final : public concrete_operation<copy_tarva_to_user, memory_operation> {
public:
  copy_tarva_to_user(std::shared_ptr<library_memory> memory, std::uint64_t source_start, std::uint64_t count,
                     void* user_ptr)
      : concrete_operation(std::move(memory)), src_start_position_(source_start), count_(count),
        user_ptr_(user_ptr) {}

  std::uint64_t get_src_start_position() const { return src_start_position_; }
  std::uint64_t get_count() const { return count_; }
  void* get_user_ptr() const { return user_ptr_; }

  std::string to_string() const override;

private:
  std::uint64_t src_start_position_;
  std::uint64_t count_;
  void* user_ptr_; // the user's destination; not owned
};

class copy_user_to_tarva final : public concrete_operation<copy_user_to_tarva, memory_operation> {
public:
  copy_user_to_tarva(std::shared_ptr<library_memory> memory, std::uint64_t destination_start,
                     std::uint64_t count, const void* src_ptr)
      : concrete_operation(std::move(memory)), dest_start_position_(destination_start), count_(count),
        src_ptr_(src_ptr) {}

  std::uint64_t get_dest_start_position() const { return dest_start_position_; }
  std::uint64_t get_count() const { return count_; }
  const void* get_src_ptr() const { return src_ptr_; }

  std::string to_string() const override;

private:
  std::uint64_t dest_start_position_;
  std::uint64_t count_;
  const void* src_ptr_; // the user's source; not owned
};

class fill final : public concrete_operation<fill, memory_operation> {
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

class kernel final : public concrete_operation<kernel, logical_operation> {
public:
  kernel(std::shared_ptr<library_kernel> kernel_object, kernel_argument_capture arguments,
         const nd_range& range)
      : kernel_object_(std::move(kernel_object)), arguments_(std::move(arguments)), range_(range) {}

  const std::shared_ptr<library_kernel>& get_kernel_object() const { return kernel_object_; }
  const kernel_argument_capture& get_arguments() const { return arguments_; }
  const nd_range& get_range() const { return range_; }

  std::vector<std::shared_ptr<library_memory>> memory_objects() const override;
  std::string to_string() const override;

private:
  std::shared_ptr<library_kernel> kernel_object_;
  kernel_argument_capture arguments_;
  nd_range range_;
};

} // namespace logical_ir

} // namespace oryn::tarva::library
