// Many threads that read, write, fill, copy, launch, wait, abandon and free at random, each on objects of its own
// and one that all share, with kernels that all share. Two seconds, or as many as TARVA_TEST_SECONDS says.
#pragma once

#include "tests/device/caller.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <fstream>
#include <functional>
#include <mutex>
#include <random>
#include <thread>
#include <unistd.h>

namespace caller {

inline const char* const mix_source =
    "kernel void add(global int* data, int amount) { data[get_global_id(0)] += amount; }";

#ifdef __SANITIZE_ADDRESS__
constexpr bool keeps_freed_memory = true; // and finds by itself what is lost
#else
constexpr bool keeps_freed_memory = false;
#endif

inline std::uint64_t resident_bytes() {
  std::uint64_t total = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return resident * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

class thread_mix {
public:
  // `tidy` is called now and then.
  thread_mix(const std::vector<kernel>& kernels, const std::function<void()>& tidy)
      : kernels_(kernels), tidy_(tidy) {}

  // What went wrong first, or nothing. So many steps of each thread.
  std::string run(unsigned threads, unsigned seed, unsigned steps) {
    std::vector<std::thread> running;
    for (unsigned i = 0; i < threads; ++i)
      running.emplace_back([this, i, seed, steps] {
        work(seed * 1000 + i, [left = steps]() mutable { return left-- != 0; });
      });
    for (std::thread& one : running)
      one.join();
    check_what_is_left();
    return failure_;
  }
  // For so long.
  std::string run(unsigned threads, std::chrono::seconds duration) {
    const auto start = std::chrono::steady_clock::now();
    std::vector<std::thread> running;
    for (unsigned i = 0; i < threads; ++i)
      running.emplace_back([this, i, end = start + duration] {
        work(i, [end] { return std::chrono::steady_clock::now() < end; });
      });
    std::this_thread::sleep_for(duration / 3);
    const std::uint64_t before = resident_bytes();
    for (std::thread& one : running)
      one.join();
    check_what_is_left();
    const auto growth = static_cast<std::int64_t>(resident_bytes() - before);
    std::printf("%llu operations, %lld KiB of growth after the first third\n",
                static_cast<unsigned long long>(operations_), static_cast<long long>(growth / 1024));
    if (!keeps_freed_memory && growth > std::int64_t{64} << 20)
      fail("the process has grown");
    return failure_;
  }

private:
  using numbers = std::vector<std::int32_t>;
  struct owned {
    tarva::memory<std::int32_t> object;
    numbers content;
  };
  // A read that any thread may wait for.
  struct reading {
    tarva::future<numbers> future;
    numbers expected;
  };

  void check_what_is_left() {
    for (reading& left : readings_)
      check(left);
    expect(shared_.read() == numbers(4, shared_sum_), "wrong content of what all share");
  }

  template <class Condition>
  void work(unsigned seed, Condition goes_on) {
    std::mt19937 random(seed);
    std::vector<owned> mine;
    numbers abandoned(64);
    try {
      while (goes_on() && !failed_)
        step(random, mine, abandoned);
      for (owned& one : mine)
        expect(one.object.read() == one.content, "wrong content at the end");
    } catch (const std::exception& error) {
      fail(error.what());
    }
  }

  void step(std::mt19937& random, std::vector<owned>& mine, numbers& abandoned) {
    const auto below = [&](std::size_t size) { return static_cast<std::size_t>(random() % size); };
    if (++operations_ % 1000 == 0)
      tidy_();
    if (mine.size() < 2) {
      const numbers content(1 + below(64), static_cast<std::int32_t>(below(1000)));
      return mine.push_back({tarva::memory(content), content});
    }
    owned& one = mine[below(mine.size())];
    const std::size_t size = one.content.size(), start = below(size), count = 1 + below(size - start);
    const auto from = one.content.begin() + static_cast<std::ptrdiff_t>(start);
    const auto part = one.object.part(start, count);
    const auto amount = static_cast<std::int32_t>(below(100));
    switch (below(10)) {
    case 0:
      return static_cast<void>(mine.erase(mine.begin() + (&one - mine.data())));
    case 1: {
      std::fill_n(from, count, amount);
      return part.write({&*from, count});
    }
    case 2: {
      std::fill_n(from, count, amount);
      return part.fill(amount);
    }
    case 3: {
      owned& other = mine[&one == &mine[0] ? 1 : 0];
      const std::size_t most = std::min(count, other.content.size());
      std::copy_n(from, most, other.content.begin());
      return part.part(0, most).copy_to(other.object.part(0, most));
    }
    case 4:
      return one.object.async_read({abandoned.data(), size}).abandon();
    case 5: {
      reading begun{one.object.async_read(), one.content};
      const std::lock_guard guard(lock_);
      return readings_.push_back(std::move(begun));
    }
    case 6: {
      std::unique_lock guard(lock_);
      if (readings_.empty())
        return;
      reading begun = std::move(readings_.front());
      readings_.pop_front();
      guard.unlock();
      return check(begun);
    }
    case 7:
      return expect(part.read() == numbers(from, from + static_cast<std::ptrdiff_t>(count)), "wrong content");
    case 8:
      shared_sum_ += amount;
      return kernels_[below(kernels_.size())](tarva::range::items(4), shared_, amount);
    default:
      for (std::int32_t& value : one.content)
        value += amount;
      return kernels_[below(kernels_.size())](tarva::range::items(size), one.object, amount);
    }
  }

  void check(reading& begun) { expect(begun.future.get() == begun.expected, "wrong content in a future"); }
  void expect(bool holds, const char* what) {
    if (!holds)
      fail(what);
  }
  void fail(const std::string& what) {
    const std::lock_guard guard(lock_);
    if (!failed_.exchange(true))
      failure_ = what;
  }

  const std::vector<kernel>& kernels_;
  const std::function<void()>& tidy_;
  const tarva::memory<std::int32_t> shared_{numbers(4)};
  std::atomic<std::int32_t> shared_sum_ = 0;
  std::atomic<std::uint64_t> operations_ = 0;
  std::atomic<bool> failed_ = false;
  std::mutex lock_;
  std::deque<reading> readings_;
  std::string failure_;
};

inline std::string mix_threads(
    const std::vector<kernel>& kernels, const std::function<void()>& tidy = [] {}) {
  const char* const seconds = std::getenv("TARVA_TEST_SECONDS");
  return thread_mix(kernels, tidy).run(32, std::chrono::seconds(seconds ? std::atoi(seconds) : 2));
}

} // namespace caller
