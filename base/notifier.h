#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

namespace oryn::tarva::library {

namespace internal {
struct notifier_internals;
}

// A wake-up without data: a doorbell that is rung again and again, or a latch that is closed once. Copies
// share one state. A return from wait() means only that something may have changed: callers loop on their own
// condition.
class notifier {
public:
  notifier();
  notifier(const notifier&) = default;
  notifier& operator=(const notifier&) = default;

  bool is_closed() const;
  void notify() const;
  void close() const;

  // Returns at once if closed or if the predicate, which runs under the notifier's lock, says true; otherwise
  // sleeps until the first wake-up.
  void wait(const std::function<bool()>& predicate) const;

  // For a wait on several notifiers at once: until it is unregistered, the condition variable is woken by every ring and
  // by the close, too. Its waiter looks at the notifiers, registers and sleeps with the registry lock: every sender
  // takes that first, so nothing comes between the last look and the sleep. A closed notifier has nothing to wait for.
  void register_wait_any(std::shared_ptr<std::condition_variable> condition) const;
  void unregister_wait_any(const std::shared_ptr<std::condition_variable>& condition) const;
  static std::mutex& get_registry_lock();

private:
  std::shared_ptr<internal::notifier_internals> internals_;
};

} // namespace oryn::tarva::library
