// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The state machine of operations and commands.
#pragma once

#include "base/notifier.h"

#include <atomic>
#include <cstdint>
#include <exception>

namespace oryn::tarva::library {

// The words of one kind of operation. They live as long as the process.
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
// submitted, then succeeded or failed. Each of them is one. A transition out of order is refused with std::logic_error and changes
// nothing; a second error is no mistake, and the first stands.
//
// The caller's thread creates, counts and submits, workers report ends and errors, and any thread may ask. Each transition
// is one atomic step, without a lock, since one operation makes many of them.
class completion_state {
public:
  explicit completion_state(const completion_texts& texts) : texts_(texts) {}
  // Logs a warning if it has not ended, but not while an exception unwinds the stack: then it was never begun, and the
  // exception tells why.
  ~completion_state() {
    if (!is_complete())
      warn_of_early_end();
  }
  completion_state(const completion_state&) = delete;
  completion_state& operator=(const completion_state&) = delete;

  bool is_complete() const { return outcome_ > outcome::failing; }
  bool has_failed() const { return outcome_ == outcome::failed; }
  // Complete without an error.
  bool has_succeeded() const { return outcome_ == outcome::succeeded; }
  std::exception_ptr get_error() const { return has_failed() ? error_ : nullptr; }

  void enable_profiling();
  bool is_profiling_enabled() const { return profiling_enabled_; }
  void add_elapsed_time(std::uint64_t nanoseconds);

  // The number of parts that will report their end; once, before submission.
  void set_part_count(std::uint64_t count);
  void set_submitted();
  // One part has ended. True if it was the last: then the whole can succeed.
  bool count_part();
  // Completes the whole when its last part has ended, unless an error has done so. False if it has.
  bool succeed();
  // Completes something that has no parts.
  void set_complete();
  // Ends it with this error. False, with nothing changed, if there was an error before.
  bool set_error(const std::exception_ptr& error);
  // Ends with the error what is not going to run, whether or not it has been submitted. No other thread may report to it
  // any more.
  void refuse(const std::exception_ptr& error) noexcept;

protected:
  // Its end wakes those who wait here. The thread that ends it keeps it alive until it has woken them.
  mutable event_count ended_;

private:
  void warn_of_early_end() const noexcept;

  static constexpr std::uint64_t never_set = ~std::uint64_t{0};

  // `failing` while one thread stores the error, which all may read once it is `failed`.
  enum class outcome : std::uint8_t { pending, failing, failed, succeeded };

  const completion_texts& texts_;
  std::atomic<bool> profiling_enabled_ = false;
  std::atomic<bool> submitted_ = false;
  std::atomic<outcome> outcome_ = outcome::pending;
  std::atomic<std::uint64_t> elapsed_time_ = 0;
  std::atomic<std::uint64_t> outstanding_parts_ = never_set;
  std::exception_ptr error_; // written while the outcome is `failing`, read once it is `failed`
};

} // namespace oryn::tarva::library
