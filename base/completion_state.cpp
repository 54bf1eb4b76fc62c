#include "base/completion_state.h"

#include "base/logging.h"

#include <stdexcept>

namespace oryn::tarva::library {

completion_state::~completion_state() {
  try {
    if (!complete_)
      log_warning("{}", texts_.destroyed_incomplete);
    if (!pipe_.is_closed())
      log_warning("{}", texts_.destroyed_open);
  } catch (...) {
    log_warning("{}", texts_.destroyed_with_exception);
  }
}

bool completion_state::is_complete() const {
  const std::lock_guard guard(lock_);
  return complete_;
}

bool completion_state::has_succeeded() const {
  const std::lock_guard guard(lock_);
  return complete_ && !error_;
}

std::exception_ptr completion_state::get_error() const {
  const std::lock_guard guard(lock_);
  return error_;
}

void completion_state::enable_profiling() {
  const std::lock_guard guard(lock_);
  if (submitted_)
    throw std::logic_error(texts_.profiling_after_submission);
  profiling_enabled_ = true;
}

bool completion_state::is_profiling_enabled() const {
  const std::lock_guard guard(lock_);
  return profiling_enabled_;
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
  {
    const std::lock_guard guard(lock_);
    if (!submitted_)
      throw std::logic_error(texts_.part_before_submission);
    if (outstanding_parts_ == 0)
      throw std::logic_error(texts_.part_at_zero);
    if (outstanding_parts_ == never_set)
      throw std::logic_error(texts_.part_without_count);
    failed = error_ != nullptr;
    if (--outstanding_parts_ != 0)
      return part_outcome::pending;
    complete_ = true;
  }
  if (failed)
    return part_outcome::last_after_error;
  pipe_.close();
  return part_outcome::last;
}

void completion_state::set_complete() {
  {
    const std::lock_guard guard(lock_);
    if (!submitted_)
      throw std::logic_error(texts_.complete_before_submission);
    if (complete_)
      throw std::logic_error(texts_.already_complete);
    complete_ = true;
  }
  pipe_.close();
}

bool completion_state::set_error(const std::exception_ptr& error) {
  {
    const std::lock_guard guard(lock_);
    // First of all, so that a second failure of the same request can never throw.
    if (error_)
      return false;
    if (!submitted_)
      throw std::logic_error(texts_.error_before_submission);
    if (complete_)
      throw std::logic_error(texts_.already_complete);
    complete_ = true;
    error_ = error;
  }
  pipe_.close();
  return true;
}

} // namespace oryn::tarva::library
