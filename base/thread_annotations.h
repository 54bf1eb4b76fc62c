// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Locks that the compiler understands. With -Wthread-safety, clang refuses code that touches a member without the lock
// that guards it, takes a lock twice, or leaves a function with it held. The standard library's own locks carry no such
// annotations, so those of this header take their place: they cost nothing and mean the same.
//
//   oryn::mutex lock_;
//   std::size_t count_ TARVA_GUARDED_BY(lock_) = 0;
//   void count_one() TARVA_REQUIRES(lock_);           // whoever calls it holds the lock
//   void count_one_more() TARVA_EXCLUDES(lock_) {     // takes the lock by itself
//     const oryn::lock_guard guard(lock_);
//     count_one();
//   }
//
// The analysis looks at one function at a time. A lambda is a function of its own: one that runs with the lock held says so,
// `[this]() TARVA_REQUIRES(lock_) { … }`. Constructors and destructors are not looked at, since nobody else has the object.
//
// This header needs nothing but the standard library, so that each library of the project can include it.
#pragma once

#include <mutex>

#ifdef __clang__
#define TARVA_ANNOTATE(attribute) __attribute__((attribute))
#else
#define TARVA_ANNOTATE(attribute)
#endif

// For classes: a lock, and what holds one for as long as it lives.
#define TARVA_LOCK_CLASS TARVA_ANNOTATE(capability("mutex"))
#define TARVA_LOCK_HOLDER_CLASS TARVA_ANNOTATE(scoped_lockable)

// For data: the lock that guards it, or that guards what it points to.
#define TARVA_GUARDED_BY(lock) TARVA_ANNOTATE(guarded_by(lock))
#define TARVA_POINTS_TO_GUARDED_BY(lock) TARVA_ANNOTATE(pt_guarded_by(lock))

// For functions: the locks that a caller holds (for reading at least), or must not hold.
#define TARVA_REQUIRES(...) TARVA_ANNOTATE(requires_capability(__VA_ARGS__))
#define TARVA_REQUIRES_SHARED(...) TARVA_ANNOTATE(requires_shared_capability(__VA_ARGS__))
#define TARVA_EXCLUDES(...) TARVA_ANNOTATE(locks_excluded(__VA_ARGS__))

// For functions that take or leave a lock and return; without an argument the lock is the object itself. The first argument
// of TARVA_TRY_ACQUIRE is what the function returns if it has the lock.
#define TARVA_ACQUIRE(...) TARVA_ANNOTATE(acquire_capability(__VA_ARGS__))
#define TARVA_ACQUIRE_SHARED(...) TARVA_ANNOTATE(acquire_shared_capability(__VA_ARGS__))
#define TARVA_TRY_ACQUIRE(...) TARVA_ANNOTATE(try_acquire_capability(__VA_ARGS__))
#define TARVA_RELEASE(...) TARVA_ANNOTATE(release_capability(__VA_ARGS__))
#define TARVA_RELEASE_SHARED(...) TARVA_ANNOTATE(release_shared_capability(__VA_ARGS__))

// For functions that give out a lock, and for those that the analysis cannot follow: the latter say why.
#define TARVA_RETURNS_LOCK(lock) TARVA_ANNOTATE(lock_returned(lock))
#define TARVA_NOT_ANALYSED TARVA_ANNOTATE(no_thread_safety_analysis)

namespace oryn {

// std::mutex with annotations.
class TARVA_LOCK_CLASS mutex {
public:
  void lock() TARVA_ACQUIRE() { mutex_.lock(); }
  bool try_lock() TARVA_TRY_ACQUIRE(true) { return mutex_.try_lock(); }
  void unlock() TARVA_RELEASE() { mutex_.unlock(); }

private:
  friend class lock_guard;
  friend class unique_lock;

  std::mutex mutex_;
};

// std::lock_guard with annotations.
class TARVA_LOCK_HOLDER_CLASS lock_guard {
public:
  explicit lock_guard(mutex& lock) TARVA_ACQUIRE(lock) : lock_(lock.mutex_) {}
  // For a lock that is held already, as after try_lock().
  lock_guard(mutex& lock, std::adopt_lock_t held) TARVA_REQUIRES(lock) : lock_(lock.mutex_, held) {}
  lock_guard(const lock_guard&) = delete;
  lock_guard& operator=(const lock_guard&) = delete;
  ~lock_guard() TARVA_RELEASE() = default;

private:
  const std::lock_guard<std::mutex> lock_;
};

// std::unique_lock with annotations: it can be unlocked early, taken again, and waited with. It cannot be moved, since the
// analysis would lose sight of it.
class TARVA_LOCK_HOLDER_CLASS unique_lock {
public:
  explicit unique_lock(mutex& lock) TARVA_ACQUIRE(lock) : lock_(lock.mutex_) {}
  unique_lock(const unique_lock&) = delete;
  unique_lock& operator=(const unique_lock&) = delete;
  ~unique_lock() TARVA_RELEASE() = default;

  void lock() TARVA_ACQUIRE() { lock_.lock(); }
  void unlock() TARVA_RELEASE() { lock_.unlock(); }

  // For std::condition_variable::wait and its like.
  std::unique_lock<std::mutex>& native() { return lock_; }

private:
  std::unique_lock<std::mutex> lock_;
};

} // namespace oryn
