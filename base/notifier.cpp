#include "base/notifier.h"

#include "base/logging.h"

#include <algorithm>
#include <forward_list>
#include <stdexcept>

namespace oryn::tarva::library {

namespace internal {

struct notifier_internals {
  std::condition_variable condition;
  std::mutex lock;
  bool closed = false;
  std::forward_list<std::shared_ptr<std::condition_variable>> wait_any_notifiers; // each once

  notifier_internals() = default;
  notifier_internals(const notifier_internals&) = delete;
  notifier_internals& operator=(const notifier_internals&) = delete;
  ~notifier_internals() {
    if (!closed || !wait_any_notifiers.empty())
      warn_of_what_is_left();
  }

  void wake_wait_any() const {
    for (const auto& each : wait_any_notifiers)
      each->notify_all();
  }

private:
  [[gnu::cold]] void warn_of_what_is_left() const {
    if (!wait_any_notifiers.empty())
      log_warning("Destroying notifier internals, but wait_any_notifiers set is non-empty.");
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
// shared pointer keeps the condition variable alive when the woken waiter drops the last notifier. Those who wait for
// any of several are woken before, since only the lock keeps the set as it is.

void notifier::notify() const {
  const auto internals = internals_;
  {
    const std::lock_guard registry_guard(registry_lock);
    const std::lock_guard guard(internals->lock);
    if (internals->closed)
      throw std::logic_error(
          "Attempting to call notify on a notifier that has its notification pipe closed.");
    internals->wake_wait_any();
  }
  internals->condition.notify_all();
}

void notifier::close() const {
  const auto internals = internals_;
  {
    const std::lock_guard registry_guard(registry_lock);
    const std::lock_guard guard(internals->lock);
    internals->closed = true;
    internals->wake_wait_any();
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

void notifier::register_wait_any(std::shared_ptr<std::condition_variable> condition) const {
  const std::lock_guard guard(internals_->lock);
  if (internals_->closed)
    throw std::logic_error(
        "Registering a wait_any for a notifier that has been closed.  This shouldn't be possible.");
  auto& all = internals_->wait_any_notifiers;
  if (std::find(all.begin(), all.end(), condition) == all.end())
    all.push_front(std::move(condition));
}

void notifier::unregister_wait_any(const std::shared_ptr<std::condition_variable>& condition) const {
  const std::lock_guard guard(internals_->lock);
  if (internals_->wait_any_notifiers.remove(condition) == 0)
    throw std::logic_error(
        "Unregistering a wait_any from a notifier, but the wait_any is not found.  This shouldn't be possible.");
}

std::mutex& notifier::get_registry_lock() {
  return registry_lock;
}

} // namespace oryn::tarva::library
