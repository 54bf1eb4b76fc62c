#pragma once

#include <functional>
#include <memory>

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

private:
  std::shared_ptr<internal::notifier_internals> internals_;
};

} // namespace oryn::tarva::library
