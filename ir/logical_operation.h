#pragma once

#include "base/completion_state.h"
#include "base/notifier.h"
#include "ir/logical_operation_visitor.h"

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace oryn::tarva::library {

class library_future;
class library_memory;

namespace logical_ir {

// One request of the user, with no decision yet on where or how it runs, and the record of its progress.
class logical_operation : public std::enable_shared_from_this<logical_operation> {
public:
  using visitor = operation_visitor;

  virtual ~logical_operation();
  logical_operation(const logical_operation&) = delete;
  logical_operation& operator=(const logical_operation&) = delete;

  // The memory objects that the request names, in argument order, with repeats.
  virtual std::vector<std::shared_ptr<library_memory>> memory_objects() const = 0;
  virtual std::uint64_t byte_count() const = 0;
  virtual std::string to_string() const = 0;
  virtual void accept(visitor& visitor) const { visitor.visit_unknown(); }

  std::shared_ptr<library_future> get_future();
  notifier get_notification_pipe() const { return state_.get_pipe(); }
  bool is_complete() const { return state_.is_complete(); }
  std::exception_ptr get_error() const { return state_.get_error(); }
  // Sleeps until the operation has succeeded or failed. Whoever is woken when the process has failed ends it when its time
  // is up.
  void wait_until_complete() const;
  void wake_waiters() const noexcept;

  void set_physical_operation_count(std::uint64_t count) { state_.set_part_count(count); }
  void set_submitted() { state_.set_submitted(); }
  void physical_operation_complete() { state_.part_complete(); }
  void set_error(const std::exception_ptr& error) { state_.set_error(error); }
  void refuse(const std::exception_ptr& error) noexcept { state_.refuse(error); }
  void add_elapsed_time(std::uint64_t nanoseconds) { state_.add_elapsed_time(nanoseconds); }
  void enable_profiling() { state_.enable_profiling(); }

  // An error completes the operation at once, while commands of it may still run. These three let the
  // scheduler wait for the last of them: `count` commands are on their way to a worker; one has ended; wait
  // until all have. The pipe of the operation is made with the first count, before any work is handed over: then no
  // wait can fail while workers are at it.
  void add_device_commands(std::uint64_t count);
  void device_commands_ended(std::uint64_t count);
  void wait_until_commands_ended();

protected:
  logical_operation();

private:
  completion_state state_;
  std::atomic<std::uint64_t> running_commands_ = 0;
  event_count commands_ended_;
};

} // namespace logical_ir
} // namespace oryn::tarva::library
