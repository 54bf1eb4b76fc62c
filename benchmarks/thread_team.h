// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Threads that do the same at the same time, and are there already when they are needed.
#pragma once

#include <barrier>
#include <cstddef>
#include <functional>
#include <thread>
#include <vector>

namespace benchmarks {

class thread_team {
public:
  explicit thread_team(std::size_t size) : gate_(static_cast<std::ptrdiff_t>(size) + 1) {
    for (std::size_t i = 0; i < size; ++i)
      threads_.emplace_back([this, i] { run(i); });
  }
  thread_team(const thread_team&) = delete;
  thread_team& operator=(const thread_team&) = delete;
  ~thread_team() {
    work_ = nullptr;
    gate_.arrive_and_wait();
    for (std::thread& thread : threads_)
      thread.join();
  }

  // Returns when each thread has done `work`, which is told the thread's number.
  void do_together(const std::function<void(std::size_t)>& work) {
    work_ = &work;
    gate_.arrive_and_wait();
    gate_.arrive_and_wait();
  }

private:
  void run(std::size_t number) {
    while (true) {
      gate_.arrive_and_wait();
      if (work_ == nullptr)
        return;
      (*work_)(number);
      gate_.arrive_and_wait();
    }
  }

  std::barrier<> gate_;
  const std::function<void(std::size_t)>* work_ = nullptr;
  std::vector<std::thread> threads_;
};

} // namespace benchmarks
