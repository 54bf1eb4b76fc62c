// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The price of handing work to a thread and being told of its end, at its lowest: a mutex and a condition variable each
// way, and everybody woken after the lock is let go.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace benchmarks {

// Is to outlive whoever may still be opening it.
class latch {
public:
  void open() {
    {
      const std::lock_guard guard(lock_);
      is_open_ = true;
    }
    opened_.notify_one();
  }
  // And closes it again.
  void wait() {
    std::unique_lock guard(lock_);
    opened_.wait(guard, [this] { return is_open_; });
    is_open_ = false;
  }

private:
  std::mutex lock_;
  std::condition_variable opened_;
  bool is_open_ = false;
};

// Runs one piece of work at a time.
class worker {
public:
  worker() : thread_([this] { run(); }) {}
  worker(const worker&) = delete;
  worker& operator=(const worker&) = delete;
  ~worker() {
    post(nullptr);
    thread_.join();
  }

  // `work` has to live until it has been done.
  void post(const std::function<void()>* work) {
    {
      const std::lock_guard guard(lock_);
      work_ = work;
      has_work_ = true;
    }
    posted_.notify_one();
  }

  // There and back.
  void do_and_wait(const std::function<void()>& work) {
    const std::function<void()> reporting = [this, &work] {
      work();
      done_.open();
    };
    post(&reporting);
    done_.wait();
  }

private:
  void run() {
    while (true) {
      const std::function<void()>* work = nullptr;
      {
        std::unique_lock guard(lock_);
        posted_.wait(guard, [this] { return has_work_; });
        has_work_ = false;
        work = work_;
      }
      if (work == nullptr)
        return;
      (*work)();
    }
  }

  std::mutex lock_;
  std::condition_variable posted_;
  bool has_work_ = false;
  const std::function<void()>* work_ = nullptr;
  latch done_;
  std::thread thread_;
};

} // namespace benchmarks
