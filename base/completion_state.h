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
// Each transition is one atomic step, as one operation makes many of them. The lock guards the making of the pipe only.
class completion_state {
public:
  enum class part_outcome { pending, last, last_after_error };

  explicit completion_state(const completion_texts& texts) : texts_(texts) {}
  // Logs what was left undone, unless an exception unwinds it: then a request was refused on the way down.
  ~completion_state();
  completion_state(const completion_state&) = delete;
  completion_state& operator=(const completion_state&) = delete;

  // Made for the first who asks, since few are ever waited for; from then on always the same.
  const notifier& get_pipe() const;
  bool is_complete() const { return has_failed() || has_succeeded(); }
  bool has_failed() const { return outcome_ == outcome::failed; }
  // Complete without an error.
  bool has_succeeded() const { return outcome_ == outcome::succeeded; }
  std::exception_ptr get_error() const { return has_failed() ? error_ : nullptr; }

  void enable_profiling();
  bool is_profiling_enabled() const { return profiling_enabled_; }
  void add_elapsed_time(std::uint64_t nanoseconds);

  // The number of parts that will report; once, before submission.
  void set_part_count(std::uint64_t count);
  void set_submitted();
  // One part has ended. The last one completes the whole; the pipe is closed then, unless an error closed it.
  part_outcome part_complete();
  // The two halves of part_complete(): true if the part was the last; completes the whole.
  bool count_part();
  part_outcome complete_parts() { return succeed() ? part_outcome::last : part_outcome::last_after_error; }
  // Completes something that has no parts, and closes the pipe.
  void set_complete();
  // True if this error is the first: it is kept and the pipe is closed. A later one is dropped.
  bool set_error(const std::exception_ptr& error);
  // Ends with the error what is not going to run, whether or not it has been submitted. Nothing else drives it any more.
  void refuse(const std::exception_ptr& error) noexcept;

private:
  static constexpr std::uint64_t never_set = ~std::uint64_t{0};

  // While it is `failing`, one thread is putting the error where all can read it once it has `failed`.
  enum class outcome : std::uint8_t { pending, failing, failed, succeeded };

  bool succeed();
  void make_pipe() const;
  void close_pipe() const;

  const completion_texts& texts_;
  mutable std::mutex lock_;
  mutable std::optional<notifier> pipe_;
  mutable std::atomic<bool> has_pipe_ = false;
  std::atomic<bool> profiling_enabled_ = false;
  std::atomic<bool> submitted_ = false;
  std::atomic<outcome> outcome_ = outcome::pending;
  std::atomic<std::uint64_t> elapsed_time_ = 0;
  std::atomic<std::uint64_t> outstanding_parts_ = never_set;
  std::exception_ptr error_; // never changes once the outcome is `failed`
};

} // namespace oryn::tarva::library
