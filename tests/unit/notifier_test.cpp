#include "base/notifier.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

namespace oryn::tarva::library {
namespace {

using namespace std::chrono_literals;

// A notifier that is closed when the test ends, as every notifier should be.
class notifier_test : public testing::Test {
protected:
  ~notifier_test() override { bell.close(); }
  notifier bell;
};

TEST_F(notifier_test, asks_once_before_it_sleeps_and_never_when_closed) {
  int asked = 0;
  bell.wait([&] { return ++asked > 0; });
  EXPECT_EQ(1, asked);
  EXPECT_THROW(bell.wait(nullptr), std::bad_function_call);
  bell.notify();
  EXPECT_FALSE(bell.is_closed());
  bell.close();
  EXPECT_TRUE(bell.is_closed());
  bell.wait([&] { return ++asked > 0; });
  EXPECT_EQ(1, asked);
  EXPECT_NO_THROW(bell.wait(nullptr));
  EXPECT_NO_THROW(bell.close());
  EXPECT_THROW(bell.notify(), std::logic_error);
}

TEST_F(notifier_test, a_ring_without_a_waiter_is_forgotten) {
  bell.notify();
  std::atomic<bool> returned = false;
  std::thread waiter([&] {
    bell.wait([] { return false; });
    returned = true;
  });
  std::this_thread::sleep_for(50ms);
  EXPECT_FALSE(returned);
  bell.close();
  waiter.join();
}

TEST_F(notifier_test, every_waiter_wakes) {
  std::atomic<int> asleep = 0;
  std::atomic<bool> rung = false;
  std::vector<std::thread> waiters;
  for (int waiter = 0; waiter < 8; ++waiter)
    waiters.emplace_back([&] {
      ++asleep;
      while (!rung)
        bell.wait([&] { return rung.load(); });
    });
  while (asleep < 8)
    std::this_thread::yield();
  rung = true;
  bell.notify();
  for (auto& waiter : waiters)
    waiter.join();
}

// The sender changes the condition and rings at any moment of the waiter's way into its sleep.
TEST_F(notifier_test, no_wake_up_is_lost) {
  constexpr int ROUNDS = 20000;
  notifier answer;
  std::atomic<int> sent = 0;
  std::atomic<int> seen = 0;
  std::thread waiter([&] {
    for (int round = 1; round <= ROUNDS; ++round) {
      while (sent < round)
        bell.wait([&] { return sent >= round; });
      seen = round;
      answer.notify();
    }
  });
  for (int round = 1; round <= ROUNDS; ++round) {
    sent = round;
    bell.notify();
    while (seen < round)
      answer.wait([&] { return seen >= round; });
  }
  waiter.join();
  answer.close();
}

// The woken waiter drops the last notifier while the sender may still be on its way out.
TEST(notifier, survives_its_owners_on_both_sides) {
  for (int round = 0; round < 2000; ++round) {
    auto owned = std::make_unique<notifier>();
    const notifier senders_copy = *owned;
    std::thread waiter([owned = std::move(owned)]() mutable {
      while (!owned->is_closed())
        owned->wait([] { return false; });
      owned.reset();
    });
    senders_copy.close();
    waiter.join();
  }
}

TEST(notifier, outlives_the_object_that_a_waiter_waits_on) {
  auto owned = std::make_unique<notifier>();
  const notifier copy = *owned;
  std::atomic<bool> entered = false;
  std::thread waiter([&, raw = owned.get()] {
    raw->wait([&] {
      entered = true;
      return false;
    });
  });
  while (!entered)
    std::this_thread::yield();
  std::this_thread::sleep_for(20ms);
  owned.reset();
  copy.close();
  waiter.join();
}

} // namespace
} // namespace oryn::tarva::library
