#include "base/notifier.h"

#include "base/busy_wait.h"
#include "base/event_count.h"
#include "base/logging.h"

#include <algorithm>
#include <atomic>
#include <forward_list>
#include <mutex>
#include <stdexcept>

namespace oryn::tarva::library {

namespace internal {

struct notifier_internals {
  event_count events;
  std::atomic<bool> closed = false;
  std::atomic<bool> has_wait_any = false;
  std::mutex lock;                                                    // guards the list
  std::forward_list<std::shared_ptr<event_count>> wait_any_notifiers; // each once

  notifier_internals() = default;
  notifier_internals(const notifier_internals&) = delete;
  notifier_internals& operator=(const notifier_internals&) = delete;
  ~notifier_internals() {
    if (!closed || !wait_any_notifiers.empty())
      warn_of_what_is_left();
  }

  void wake() {
    events.notify_all();
    if (has_wait_any)
      wake_wait_any();
  }

private:
  void wake_wait_any() {
    const std::lock_guard guard(lock);
    for (const auto& each : wait_any_notifiers)
      each->notify_all();
  }

  [[gnu::cold]] void warn_of_what_is_left() const {
    if (!wait_any_notifiers.empty())
      log_warning("Destroying notifier internals, but wait_any_notifiers set is non-empty.");
    if (!closed)
      log_warning("Destroying notifier that was never closed.  The notifier should have been closed.");
  }
};

} // namespace internal

notifier::notifier() : internals_(std::make_shared<internal::notifier_internals>()) {}

bool notifier::is_closed() const {
  return internals_->closed;
}

// The senders' copy of the shared pointer keeps alive what they wake when the woken waiter drops the last notifier.

void notifier::notify() const {
  const auto internals = internals_;
  if (internals->closed)
    throw std::logic_error("Attempting to call notify on a notifier that has its notification pipe closed.");
  internals->wake();
}

void notifier::close() const {
  const auto internals = internals_;
  internals->closed = true;
  internals->wake();
}

void notifier::wait(const std::function<bool()>& predicate) const {
  const auto internals = internals_;
  const event_count::ticket seen = internals->events.get_ticket();
  if (internals->closed)
    return;
  if (!predicate)
    throw std::bad_function_call();
  if (predicate())
    return;
  if (!look_before_sleep(internals->events, seen))
    internals->events.wait(seen);
}

// A sender that comes too early to see the registration has closed before, or changed what the waiter will look at.
void notifier::register_wait_any(std::shared_ptr<event_count> events) const {
  const std::lock_guard guard(internals_->lock);
  internals_->has_wait_any = true;
  if (internals_->closed)
    throw std::logic_error(
        "Registering a wait_any for a notifier that has been closed.  This shouldn't be possible.");
  auto& all = internals_->wait_any_notifiers;
  if (std::find(all.begin(), all.end(), events) == all.end())
    all.push_front(std::move(events));
}

void notifier::unregister_wait_any(const std::shared_ptr<event_count>& events) const {
  const std::lock_guard guard(internals_->lock);
  if (internals_->wait_any_notifiers.remove(events) == 0)
    throw std::logic_error(
        "Unregistering a wait_any from a notifier, but the wait_any is not found.  This shouldn't be possible.");
  internals_->has_wait_any = !internals_->wait_any_notifiers.empty();
}

} // namespace oryn::tarva::library
