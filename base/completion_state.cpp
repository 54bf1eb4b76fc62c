// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "base/completion_state.h"

#include "base/logging.h"

#include <stdexcept>

namespace oryn::tarva::library {

// Logging takes no memory that it cannot do without, but making a notifier may throw; nothing may leave a destructor.
void completion_state::warn_of_early_end() const noexcept {
  if (std::uncaught_exceptions() != 0)
    return;
  log_warning("{}", texts_.destroyed_incomplete);
  log_warning("{}", texts_.destroyed_open);
  try {
    const notifier left_open; // which says so when it goes
  } catch (...) {
    log_warning("{}", texts_.destroyed_with_exception);
  }
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
  ended_.notify_all();
  return true;
}

// The count is checked and lowered in one step: a report too many is refused, and never wraps around. An error may have
// ended the whole before its last part; then the parts are still counted, as others wait for the last.
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
  ended_.notify_all();
  return true;
}

} // namespace oryn::tarva::library
