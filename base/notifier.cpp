#include "base/notifier.h"

#include "base/logging.h"

#include <condition_variable>
#include <mutex>
#include <stdexcept>

namespace oryn::tarva::library {

namespace internal {

struct notifier_internals {
  std::condition_variable condition;
  std::mutex lock;
  bool closed = false;

  notifier_internals() = default;
  notifier_internals(const notifier_internals&) = delete;
  notifier_internals& operator=(const notifier_internals&) = delete;
  ~notifier_internals() {
    if (!closed)
      log_warning("Destroying notifier that was never closed.  The notifier should have been closed.");
  }
};

} // namespace internal

namespace {

// Orders the senders; always taken before a notifier's own lock.
constinit std::mutex registry_lock;

} // namespace

notifier::notifier() : internals_(std::make_shared<internal::notifier_internals>()) {}

bool notifier::is_closed() const {
  const std::lock_guard guard(internals_->lock);
  return internals_->closed;
}

// Both senders wake after the locks are let go: a waiter that is woken under the lock would run straight into
// it. None is missed, since a waiter holds the lock from its predicate until it sleeps. The copy of the
// shared pointer keeps the condition variable alive when the woken waiter drops the last notifier.

void notifier::notify() const {
  const auto internals = internals_;
  {
    const std::lock_guard registry_guard(registry_lock);
    const std::lock_guard guard(internals->lock);
    if (internals->closed)
      throw std::logic_error(
          "Attempting to call notify on a notifier that has its notification pipe closed.");
  }
  internals->condition.notify_all();
}

void notifier::close() const {
  const auto internals = internals_;
  {
    const std::lock_guard registry_guard(registry_lock);
    const std::lock_guard guard(internals->lock);
    internals->closed = true;
  }
  internals->condition.notify_all();
}

void notifier::wait(const std::function<bool()>& predicate) const {
  const auto internals = internals_;
  std::unique_lock guard(internals->lock);
  if (internals->closed)
    return;
  if (!predicate)
    throw std::bad_function_call();
  if (predicate())
    return;
  internals->condition.wait(guard);
}

} // namespace oryn::tarva::library
