#include "base/reader_writer_lock.h"

#include <gtest/gtest.h>

#include <deque>
#include <thread>
#include <vector>

namespace oryn::tarva::library {

namespace {

struct reader {
  explicit reader(reader_writer_lock& lock) : guard(lock) {}
  const reader_writer_lock::shared_guard guard;
};

TEST(reader_writer_lock, admits_several_readers_or_one_writer) {
  reader_writer_lock lock;
  const auto admits_writer = [&lock] {
    bool is_admitted = false;
    std::thread([&] {
      if (const std::unique_lock writer(lock, std::try_to_lock); writer)
        is_admitted = true;
    }).join();
    return is_admitted;
  };

  // Each of them alone keeps a writer out, and one that was kept out leaves nothing locked.
  for (std::size_t alone = 0; alone < reader_writer_lock::most_readers; ++alone) {
    std::deque<reader> readers;
    for (std::size_t i = 0; i < reader_writer_lock::most_readers; ++i)
      readers.emplace_back(lock);
    while (readers.size() > alone + 1)
      readers.pop_back();
    while (readers.size() > 1)
      readers.pop_front();
    EXPECT_FALSE(admits_writer());
  }
  EXPECT_TRUE(admits_writer());
  lock.lock();
  EXPECT_FALSE(admits_writer());
  lock.unlock();

  int first = 0;
  int second = 0;
  std::vector<std::thread> threads;
  threads.reserve(6);
  for (int number = 0; number < 6; ++number)
    threads.emplace_back([&, number] {
      for (int i = 0; i < 2000; ++i)
        if (number < 2) {
          const std::lock_guard writer(lock);
          ++first;
          std::this_thread::yield(); // a reader that came in now would see it
          ++second;
        } else {
          const reader one(lock);
          ASSERT_EQ(first, second);
        }
    });
  for (std::thread& each : threads)
    each.join();
  EXPECT_EQ(4000, first);
}

} // namespace
} // namespace oryn::tarva::library
