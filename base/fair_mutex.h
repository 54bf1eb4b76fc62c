// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// A lock that is passed on in the order in which threads have asked for it.
#pragma once

#include "base/thread_annotations.h"

#include <atomic>
#include <cstdint>
#include <utility>

namespace oryn::tarva::library {

// std::mutex lets whoever comes first take it, and wakes sleepers who then find it taken again: under many threads some are
// served several times as often as others, and each turn costs switches that bring nothing. This one is a queue. Whoever
// leaves it passes the turn to the thread that has waited longest, and wakes that one alone.
//
// The queue is a linked list of places, which stand on the stacks of the threads in it. Without contention, to take the lock
// and to leave it are one atomic step each. It takes no memory, and nobody polls: whoever has to wait sleeps.
//
// Any thread may stand in it, but in no more than one place. It can be destroyed once everybody has left.
class TARVA_LOCK_CLASS fair_mutex {
public:
  // A place in the queue: join, wait for the turn, leave. Threads that stand in several queues join all of them first.
  class place {
  public:
    place() = default;
    place(const place&) = delete;
    place& operator=(const place&) = delete;
    virtual ~place() = default;

    // Never sleeps, and settles the order. True if the turn has come at once.
    bool join(fair_mutex& queue) noexcept {
      queue_ = &queue;
      place* const before = queue.last_.exchange(this, std::memory_order_acq_rel);
      if (before == nullptr)
        state_.store(has_turn, std::memory_order_relaxed);
      else
        before->tell(*this);
      return before == nullptr;
    }
    void wait_for_turn() noexcept {
      if (state_.load(std::memory_order_acquire) != has_turn)
        sleep_until_turn();
    }
    // Passes the turn on, unless it has been given up.
    void leave() noexcept {
      if (queue_ == nullptr)
        return;
      if (place* const next = give_up())
        next->take_turn();
    }

    // The two halves of leave(), which any thread may call for the one whose turn it is. Between them, nobody has the turn.
    // The first yields who comes next, if anybody; this place may then go.
    [[nodiscard]] place* give_up() noexcept {
      place* self = this;
      fair_mutex& queue = *std::exchange(queue_, nullptr);
      const bool is_last = queue.last_.compare_exchange_strong(self, nullptr, std::memory_order_acq_rel);
      return is_last ? nullptr : &find_next();
    }
    // Wakes the thread of this place, or makes sure that it is woken when there is something for it to do. As soon as it may
    // wake, this place may be gone.
    virtual void take_turn() noexcept;

  private:
    enum state : std::uint32_t { waiting, has_turn };
    // Whether whoever comes next has told the one before where its place is.
    enum link : std::uint32_t { untold, told, asked_for };

    void tell(place& next) noexcept;
    place& find_next() noexcept;
    void sleep_until_turn() noexcept;

    fair_mutex* queue_ = nullptr; // in which this place stands
    std::atomic<std::uint32_t> state_ = waiting;
    std::atomic<std::uint32_t> link_ = untold;
    place* next_ = nullptr; // written before `link_` is `told`
  };

  // Holds the lock while it lives.
  class TARVA_LOCK_HOLDER_CLASS guard {
  public:
    explicit guard(fair_mutex& lock) TARVA_ACQUIRE(lock) : lock_(lock) {
      place_.join(lock_);
      place_.wait_for_turn();
    }
    guard(const guard&) = delete;
    guard& operator=(const guard&) = delete;
    ~guard() TARVA_RELEASE() { place_.leave(); }

  private:
    fair_mutex& lock_;
    place place_;
  };

  fair_mutex() = default;
  fair_mutex(const fair_mutex&) = delete;
  fair_mutex& operator=(const fair_mutex&) = delete;

private:
  std::atomic<place*> last_ = nullptr; // null while nobody is in the queue
};

} // namespace oryn::tarva::library
