#pragma once

#include "base/notifier.h"

#include <atomic>
#include <cstdint>
#include <exception>
#include <mutex>
#include <optional>

namespace oryn::tarva::library {

// The words of one level's state machine.
struct completion_texts {
  const char* profiling_after_submission;
  const char* already_submitted;
  const char* complete_before_submission;
  const char* error_before_submission;
  const char* already_complete;
  const char* count_after_submission;
  const char* count_already_set;
  const char* part_before_submission;
  const char* part_at_zero;
  const char* part_without_count;
  const char* destroyed_incomplete;
  const char* destroyed_open;
  const char* destroyed_with_exception;
};

// The state machine that logical operations, physical operations and device commands share: created, counted,
// submitted, then succeeded or failed. Refuses repeated transitions, except a repeated error: the first
// stands.
//
// The lock is a leaf: it is never held while the notification pipe is closed or another level is told.
class completion_state {
public:
  enum class part_outcome { pending, last, last_after_error };

  explicit completion_state(const completion_texts& texts) : texts_(texts) {}
  // Logs what was left undone.
  ~completion_state();
  completion_state(const completion_state&) = delete;
  completion_state& operator=(const completion_state&) = delete;

  // Made for the first who asks, since few are ever waited for.
  notifier get_pipe() const;
  bool is_complete() const { return complete_; }
  bool has_failed() const { return failed_; }
  // Complete without an error.
  bool has_succeeded() const;
  std::exception_ptr get_error() const;

  void enable_profiling();
  bool is_profiling_enabled() const { return profiling_enabled_; }
  void add_elapsed_time(std::uint64_t nanoseconds);

  // The number of parts that will report; once, before submission.
  void set_part_count(std::uint64_t count);
  void set_submitted();
  // One part has ended. The last one completes the whole; the pipe is closed then, unless an error closed it.
  part_outcome part_complete();
  // Completes something that has no parts, and closes the pipe.
  void set_complete();
  // True if this error is the first: it is kept and the pipe is closed. A later one is dropped.
  bool set_error(const std::exception_ptr& error);

private:
  static constexpr std::uint64_t never_set = ~std::uint64_t{0};

  const completion_texts& texts_;
  mutable std::mutex lock_;
  mutable std::optional<notifier> pipe_;
  std::uint64_t elapsed_time_ = 0;
  std::uint64_t outstanding_parts_ = never_set;
  bool submitted_ = false;
  // Written with the lock held; read without it, as each is asked for many times in the life of one operation.
  std::atomic<bool> complete_ = false;
  std::atomic<bool> failed_ = false;
  std::atomic<bool> profiling_enabled_ = false;
  std::exception_ptr error_; // never changes once `failed_` is set
};

} // namespace oryn::tarva::library
