// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Many threads that read, write, fill, copy, launch, wait, abandon and free at random, each on objects of its own
// and one that all share, with kernels that all share.
#pragma once

#include "tests/device/caller.h"

#include <algorithm>
#include <atomic>
#include <barrier>
#include <deque>
#include <functional>
#include <mutex>
#include <random>
#include <thread>
#include <utility>

namespace caller {

inline const char* const mix_source =
    "kernel void add(global int* data, int amount) { data[get_global_id(0)] += amount; }";

class thread_mix {
public:
  // `tidy` is called at each thousandth operation, with the number of those before it.
  explicit thread_mix(
      const std::vector<kernel>& kernels, std::function<void(std::uint64_t)> tidy = [](std::uint64_t) {})
      : kernels_(kernels), tidy_(std::move(tidy)) {}

  // So many operations in all. What went wrong first, or nothing.
  std::string run(unsigned threads, unsigned seed, std::uint64_t operations) {
    std::vector<std::thread> running;
    std::barrier together(threads);
    for (unsigned i = 0; i < threads; ++i)
      running.emplace_back([this, &together, first = seed * 1000 + i, operations] {
        together.arrive_and_wait();
        work(first, operations);
        together.arrive_and_wait();
      });
    for (std::thread& one : running)
      one.join();
    for (reading& left : readings_)
      check(left);
    expect(shared_.read() == numbers(4, shared_sum_), "wrong content of what all share");
    return failure_;
  }

private:
  using numbers = std::vector<std::int32_t>;
  struct owned {
    tarva::memory<std::int32_t> object;
    numbers content;
  };
  // A read that any thread may wait for. So many wait.
  static constexpr std::size_t most_readings = 64;
  struct reading {
    tarva::future<numbers> future;
    numbers expected;
  };

  void work(unsigned seed, std::uint64_t operations) {
    std::mt19937 random(seed);
    std::vector<owned> mine;
    numbers abandoned(64);
    try {
      for (std::uint64_t before; (before = operations_++) < operations && !failed_;) {
        if (before % 1000 == 0)
          tidy_(before);
        step(random, mine, abandoned);
      }
      for (owned& one : mine)
        expect(one.object.read() == one.content, "wrong content at the end");
    } catch (const std::exception& error) {
      fail(error.what());
    }
  }

  void step(std::mt19937& random, std::vector<owned>& mine, numbers& abandoned) {
    const auto below = [&](std::size_t size) { return static_cast<std::size_t>(random() % size); };
    if (mine.size() < 2) {
      const numbers content(1 + below(64), static_cast<std::int32_t>(below(1000)));
      return mine.push_back({tarva::memory(content), content});
    }
    owned& one = mine[below(mine.size())];
    const std::size_t size = one.content.size(), start = below(size), count = 1 + below(size - start);
    const auto from = one.content.begin() + static_cast<std::ptrdiff_t>(start);
    const auto part = one.object.part(start, count);
    const auto amount = static_cast<std::int32_t>(below(100));
    switch (below(11)) {
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
      std::unique_lock guard(lock_);
      readings_.push_back(std::move(begun));
      if (readings_.size() < most_readings)
        return;
      begun = std::move(readings_.front());
      readings_.pop_front();
      guard.unlock();
      return check(begun);
    }
    case 6:
      return expect(part.read() == numbers(from, from + static_cast<std::ptrdiff_t>(count)), "wrong content");
    case 7:
      shared_sum_ += amount;
      return kernels_[below(kernels_.size())](tarva::range::items(4), shared_, amount);
    case 8:
      expect(call<tarva_abi_fill_memory>(one.object.get(), &amount, start, size).code ==
                 (start == 0 ? TARVA_ABI_OK : TARVA_ABI_LOGIC_FAILURE),
             "a range beyond the end");
      return std::fill_n(from, start == 0 ? size : 0, amount), void();
    case 9:
      return expect(
          child(root<tarva_abi_get_memory_root_property>(one.object), "NUM_ELEMENTS").get<std::uint64_t>() ==
              size,
          "a wrong property");
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
  const std::function<void(std::uint64_t)> tidy_;
  const tarva::memory<std::int32_t> shared_{numbers(4)};
  std::atomic<std::int32_t> shared_sum_ = 0;
  std::atomic<std::uint64_t> operations_ = 0;
  std::atomic<bool> failed_ = false;
  std::mutex lock_;
  std::deque<reading> readings_;
  std::string failure_;
};

} // namespace caller
