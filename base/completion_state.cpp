#include "base/completion_state.h"

#include "base/logging.h"

#include <stdexcept>

namespace oryn::tarva::library {

namespace {

// Wakes whoever waits for the end. One who asks for the pipe only afterwards closes it himself.
void close(const std::optional<notifier>& pipe) {
  if (pipe)
    pipe->close();
}

} // namespace

completion_state::~completion_state() {
  try {
    if (!complete_) {
      log_warning("{}", texts_.destroyed_incomplete);
      get_pipe(); // that it is open is told by it, too, when it goes
    }
    if (pipe_ && !pipe_->is_closed())
      log_warning("{}", texts_.destroyed_open);
  } catch (...) {
    log_warning("{}", texts_.destroyed_with_exception);
  }
}

notifier completion_state::get_pipe() const {
  std::unique_lock guard(lock_);
  if (!pipe_)
    pipe_.emplace();
  const notifier pipe = *pipe_;
  const bool has_ended = complete_;
  guard.unlock();
  if (has_ended)
    pipe.close(); // nobody did, if it is new
  return pipe;
}

bool completion_state::has_succeeded() const {
  const std::lock_guard guard(lock_);
  return complete_ && !failed_;
}

std::exception_ptr completion_state::get_error() const {
  return failed_ ? error_ : nullptr;
}

void completion_state::enable_profiling() {
  const std::lock_guard guard(lock_);
  if (submitted_)
    throw std::logic_error(texts_.profiling_after_submission);
  profiling_enabled_ = true;
}

void completion_state::add_elapsed_time(std::uint64_t nanoseconds) {
  const std::lock_guard guard(lock_);
  elapsed_time_ += nanoseconds;
}

void completion_state::set_part_count(std::uint64_t count) {
  const std::lock_guard guard(lock_);
  if (submitted_)
    throw std::logic_error(texts_.count_after_submission);
  if (outstanding_parts_ != never_set)
    throw std::logic_error(texts_.count_already_set);
  outstanding_parts_ = count;
}

void completion_state::set_submitted() {
  const std::lock_guard guard(lock_);
  if (submitted_)
    throw std::logic_error(texts_.already_submitted);
  submitted_ = true;
}

completion_state::part_outcome completion_state::part_complete() {
  bool failed = false;
  std::optional<notifier> pipe;
  {
    const std::lock_guard guard(lock_);
    if (!submitted_)
      throw std::logic_error(texts_.part_before_submission);
    if (outstanding_parts_ == 0)
      throw std::logic_error(texts_.part_at_zero);
    if (outstanding_parts_ == never_set)
      throw std::logic_error(texts_.part_without_count);
    failed = failed_;
    if (--outstanding_parts_ != 0)
      return part_outcome::pending;
    complete_ = true;
    pipe = pipe_;
  }
  if (failed)
    return part_outcome::last_after_error;
  close(pipe);
  return part_outcome::last;
}

void completion_state::set_complete() {
  std::optional<notifier> pipe;
  {
    const std::lock_guard guard(lock_);
    if (!submitted_)
      throw std::logic_error(texts_.complete_before_submission);
    if (complete_)
      throw std::logic_error(texts_.already_complete);
    complete_ = true;
    pipe = pipe_;
  }
  close(pipe);
}

bool completion_state::set_error(const std::exception_ptr& error) {
  std::optional<notifier> pipe;
  {
    const std::lock_guard guard(lock_);
    // First of all, so that a second failure of the same request can never throw.
    if (failed_)
      return false;
    if (!submitted_)
      throw std::logic_error(texts_.error_before_submission);
    if (complete_)
      throw std::logic_error(texts_.already_complete);
    error_ = error;
    failed_ = error != nullptr;
    complete_ = true;
    pipe = pipe_;
  }
  close(pipe);
  return true;
}

} // namespace oryn::tarva::library
