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

  // What went wrong first, or nothing.
  std::string run(unsigned threads, std::chrono::seconds duration) {
    const auto start = std::chrono::steady_clock::now();
    std::vector<std::thread> running;
    for (unsigned i = 0; i < threads; ++i)
      running.emplace_back([this, i, end = start + duration] { work(i, end); });
    std::this_thread::sleep_for(duration / 3);
    const std::uint64_t before = resident_bytes();
    for (std::thread& one : running)
      one.join();
    for (reading& left : readings_)
      check(left);
    expect(read<std::int32_t>(shared_, 4) == numbers(4, shared_sum_), "wrong content of what all share");
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
    memory object;
    numbers content;
  };
  // A read that any thread may wait for.
  struct reading {
    tarva_abi_future_s* future;
    std::unique_ptr<numbers> into;
    numbers expected;
  };

  void work(unsigned seed, std::chrono::steady_clock::time_point end) {
    std::mt19937 random(seed);
    std::vector<owned> mine;
    numbers abandoned(64);
    try {
      while (std::chrono::steady_clock::now() < end && !failed_)
        step(random, mine, abandoned);
      for (owned& one : mine)
        expect(read<std::int32_t>(one.object, one.content.size()) == one.content, "wrong content at the end");
    } catch (const std::exception& error) {
      fail(error.what());
    }
  }

  void step(std::mt19937& random, std::vector<owned>& mine, numbers& abandoned) {
    const auto below = [&](std::size_t size) { return static_cast<std::size_t>(random() % size); };
    if (++operations_ % 1000 == 0)
      tidy_();
    if (mine.size() < 2) {
      mine.push_back({nullptr, numbers(1 + below(64), static_cast<std::int32_t>(below(1000)))});
      mine.back().object = make(mine.back().content);
      return;
    }
    owned& one = mine[below(mine.size())];
    const std::size_t size = one.content.size(), start = below(size), count = 1 + below(size - start);
    const auto from = one.content.begin() + static_cast<std::ptrdiff_t>(start);
    const auto amount = static_cast<std::int32_t>(below(100));
    switch (below(10)) {
    case 0:
      return static_cast<void>(mine.erase(mine.begin() + (&one - mine.data())));
    case 1: {
      std::fill_n(from, count, amount);
      return must(write_raw(one.object, start, count, &*from));
    }
    case 2: {
      std::fill_n(from, count, amount);
      return must(fill(one.object, &amount, start, count));
    }
    case 3: {
      owned& other = mine[&one == &mine[0] ? 1 : 0];
      const std::size_t most = std::min(count, other.content.size());
      std::copy_n(from, most, other.content.begin());
      return must(copy(one.object, start, other.object, 0, most));
    }
    case 4: {
      tarva_abi_future_s* future = nullptr;
      must(call<tarva_abi_async_read_memory>(one.object.get(), std::uint64_t{0}, std::uint64_t{size},
                                             static_cast<void*>(abandoned.data()), &future));
      return tarva_abi_abandon_future(nullptr, future);
    }
    case 5: {
      reading begun{nullptr, std::make_unique<numbers>(size), one.content};
      must(call<tarva_abi_async_read_memory>(one.object.get(), std::uint64_t{0}, std::uint64_t{size},
                                             static_cast<void*>(begun.into->data()), &begun.future));
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
      return expect(read<std::int32_t>(one.object, count, start) ==
                        numbers(from, from + static_cast<std::ptrdiff_t>(count)),
                    "wrong content");
    case 8:
      shared_sum_ += amount;
      return must(launch(kernels_[below(kernels_.size())], {argument(shared_), argument(amount)}, line(4)));
    default:
      for (std::int32_t& value : one.content)
        value += amount;
      return must(
          launch(kernels_[below(kernels_.size())], {argument(one.object), argument(amount)}, line(size)));
    }
  }

  void check(reading& begun) {
    must(wait(begun.future));
    expect(*begun.into == begun.expected, "wrong content in a future");
  }
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
  const memory shared_ = make(numbers(4));
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
