#pragma once

#include <functional>
#include <memory>

namespace oryn::tarva::library {

class event_count;

namespace internal {
struct notifier_internals;
}

// A wake-up without data: a doorbell that is rung again and again, or a latch that is closed once. Copies
// share one state. A return from wait() means only that something may have changed: callers loop on their own
// condition, which a sender makes hold before it rings or closes.
class notifier {
public:
  notifier();
  notifier(const notifier&) = default;
  notifier& operator=(const notifier&) = default;

  bool is_closed() const;
  void notify() const;
  void close() const;

  // Returns at once if closed or if the predicate says true; otherwise sleeps until the first wake-up, or looks out for it
  // for a while first where that is asked for. Nothing is missed between the predicate and the sleep.
  void wait(const std::function<bool()>& predicate) const;

  // For a wait on several notifiers at once: until it is unregistered, every ring and the close notify `events`, too. Its
  // waiter registers before it looks at anything. A closed notifier has nothing to wait for.
  void register_wait_any(std::shared_ptr<event_count> events) const;
  void unregister_wait_any(const std::shared_ptr<event_count>& events) const;

private:
  std::shared_ptr<internal::notifier_internals> internals_;
};

} // namespace oryn::tarva::library
