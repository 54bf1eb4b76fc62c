#include "base/completion_state.h"

#include "base/logging.h"

#include <stdexcept>

namespace oryn::tarva::library {

// Logging takes no memory that it cannot do without, but making a pipe may throw; nothing may leave a destructor.
completion_state::~completion_state() {
  try {
    if (!is_complete()) {
      if (std::uncaught_exceptions() != 0)
        return;
      log_warning("{}", texts_.destroyed_incomplete);
      get_pipe(); // an open pipe logs a warning of its own when it is destroyed, so there must be one
    }
    if (pipe_ && !pipe_->is_closed())
      log_warning("{}", texts_.destroyed_open);
  } catch (...) {
    log_warning("{}", texts_.destroyed_with_exception);
  }
}

// The pipe must be closed at the end, whether it is made before or after that. So both threads write before they read: the
// one that ends the operation stores the outcome and then looks for a pipe, the one that makes the pipe stores it and then
// looks at the outcome. One of them at least sees what the other has done.

const notifier& completion_state::get_pipe() const {
  if (!has_pipe_)
    make_pipe();
  return finished_pipe();
}

void completion_state::make_pipe() const {
  {
    const lock_guard guard(lock_);
    if (pipe_)
      return;
    pipe_.emplace();
    has_pipe_ = true;
  }
  if (is_complete())
    finished_pipe().close();
}

void completion_state::close_pipe() const {
  if (has_pipe_)
    finished_pipe().close();
}

void completion_state::enable_profiling() {
  if (submitted_)
    throw std::logic_error(texts_.profiling_after_submission);
  profiling_enabled_ = true;
}

void completion_state::add_elapsed_time(std::uint64_t nanoseconds) {
  elapsed_time_ += nanoseconds;
}

// The count is set by comparing with `never_set`, so that of two threads that try one is refused.
void completion_state::set_part_count(std::uint64_t count) {
  if (submitted_)
    throw std::logic_error(texts_.count_after_submission);
  std::uint64_t expected = never_set;
  if (!outstanding_parts_.compare_exchange_strong(expected, count))
    throw std::logic_error(texts_.count_already_set);
}

void completion_state::set_submitted() {
  if (submitted_.exchange(true))
    throw std::logic_error(texts_.already_submitted);
}

// False if it has ended before.
bool completion_state::succeed() {
  outcome expected = outcome::pending;
  if (!outcome_.compare_exchange_strong(expected, outcome::succeeded))
    return false;
  close_pipe();
  return true;
}

// The count is checked and lowered in one step: a report too many is refused, and never wraps around. An error may have
// ended the whole before its last part; then the parts are still counted, as others wait for the last.
completion_state::part_outcome completion_state::part_complete() {
  return count_part() ? complete_parts() : part_outcome::pending;
}

bool completion_state::count_part() {
  if (!submitted_)
    throw std::logic_error(texts_.part_before_submission);
  std::uint64_t parts = outstanding_parts_;
  do {
    if (parts == 0)
      throw std::logic_error(texts_.part_at_zero);
    if (parts == never_set)
      throw std::logic_error(texts_.part_without_count);
  } while (!outstanding_parts_.compare_exchange_weak(parts, parts - 1));
  return parts == 1;
}

void completion_state::refuse(const std::exception_ptr& error) noexcept {
  submitted_ = true;
  if (!is_complete())
    set_error(error);
}

void completion_state::set_complete() {
  if (!submitted_)
    throw std::logic_error(texts_.complete_before_submission);
  if (!succeed())
    throw std::logic_error(texts_.already_complete);
}

bool completion_state::set_error(const std::exception_ptr& error) {
  // Asked first, so that a second error can never throw.
  const auto has_an_error = [](outcome seen) { return seen == outcome::failing || seen == outcome::failed; };
  if (has_an_error(outcome_))
    return false;
  if (!submitted_)
    throw std::logic_error(texts_.error_before_submission);
  outcome seen = outcome::pending;
  if (!outcome_.compare_exchange_strong(seen, outcome::failing)) {
    if (has_an_error(seen))
      return false;
    throw std::logic_error(texts_.already_complete);
  }
  // Of several threads with an error one has come this far, so it may store the error without a lock.
  error_ = error;
  outcome_ = error ? outcome::failed : outcome::succeeded;
  close_pipe();
  return true;
}

} // namespace oryn::tarva::library
