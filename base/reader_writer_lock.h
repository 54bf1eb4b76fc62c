// A lock for tables that many threads read and few change.
#pragma once

#include "base/thread_annotations.h"

#include <array>
#include <cstddef>
#include <mutex>
#include <sched.h>

namespace oryn::tarva::library {

// A distributed reader-writer lock: a reader takes one of several mutexes, a writer takes all of them. With
// std::shared_mutex all readers would share the cache line of one counter, and many readers could keep a writer out for
// very long.
//
// Readers use shared_guard, writers oryn::lock_guard. No thread may take it twice at a time, neither way.
class TARVA_LOCK_CLASS reader_writer_lock {
public:
  // At a time; a further one waits for one of these. Each costs every writer a mutex, 13 ns, twice in every read or write
  // of memory, while a look-up holds its own for about as long: two are enough for many threads that do real work.
  static constexpr std::size_t most_readers = 2;

  reader_writer_lock() = default;
  reader_writer_lock(const reader_writer_lock&) = delete;
  reader_writer_lock& operator=(const reader_writer_lock&) = delete;

  // Holds the lock for a reader while it lives.
  class TARVA_LOCK_HOLDER_CLASS shared_guard {
  public:
    explicit shared_guard(reader_writer_lock& lock) TARVA_ACQUIRE_SHARED(lock) : part_(lock.lock_one()) {}
    shared_guard(const shared_guard&) = delete;
    shared_guard& operator=(const shared_guard&) = delete;
    ~shared_guard() TARVA_RELEASE() { part_.unlock(); }

  private:
    std::mutex& part_;
  };

  // For writers. All of them take the mutexes in the same order, so that no two wait for each other.

  void lock() TARVA_ACQUIRE() {
    for (part& each : parts_)
      each.mutex.lock();
  }

  bool try_lock() TARVA_TRY_ACQUIRE(true) {
    for (std::size_t i = 0; i < most_readers; ++i) {
      if (parts_[i].mutex.try_lock())
        continue;
      while (i > 0)
        parts_[--i].mutex.unlock();
      return false;
    }
    return true;
  }

  void unlock() TARVA_RELEASE() {
    for (part& each : parts_)
      each.mutex.unlock();
  }

private:
  static constexpr std::size_t cache_line = 64;

  struct alignas(cache_line) part {
    std::mutex mutex;
  };

  // Starts with the mutex of this thread's processor: whoever took that one last ran on the same processor, so it is still
  // in its cache. If the thread is moved meanwhile, or the number is not to be had, any mutex will do.
  std::mutex& lock_one() {
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

  std::array<part, most_readers> parts_;
};

} // namespace oryn::tarva::library
