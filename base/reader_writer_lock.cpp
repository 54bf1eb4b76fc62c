#include "base/reader_writer_lock.h"

#include <sched.h>

namespace oryn::tarva::library {

// By processor rather than by thread: the mutex that was taken here last is still in this processor's cache. If the
// thread is moved meanwhile, or the number is not to be had, any mutex does.
std::mutex& reader_writer_lock::lock_one() {
  const auto first = static_cast<unsigned>(sched_getcpu());
  for (std::size_t i = 0; i < most_readers; ++i) {
    std::mutex& tried = parts_[(first + i) % most_readers].mutex;
    if (tried.try_lock())
      return tried;
  }
  std::mutex& own = parts_[first % most_readers].mutex;
  own.lock();
  return own;
}

// All writers go the same way through the mutexes, so that no two wait for each other.
void reader_writer_lock::lock() {
  for (part& each : parts_)
    each.mutex.lock();
}

bool reader_writer_lock::try_lock() {
  for (std::size_t i = 0; i < most_readers; ++i) {
    if (parts_[i].mutex.try_lock())
      continue;
    while (i > 0)
      parts_[--i].mutex.unlock();
    return false;
  }
  return true;
}

void reader_writer_lock::unlock() {
  for (part& each : parts_)
    each.mutex.unlock();
}

} // namespace oryn::tarva::library
