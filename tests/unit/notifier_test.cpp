// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Waking and waiting, and the lock that is passed on in order.
#include "base/fair_mutex.h"
#include "base/notifier.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <numeric>
#include <sched.h>
#include <stdexcept>
#include <thread>
#include <vector>

namespace oryn::tarva::library {
namespace {

void busy_wait(const char* microseconds) {
  setenv("TARVA_BUSY_WAIT_US", microseconds, 1);
  read_busy_wait_limit();
}

TEST(notifier, asks_once_before_it_sleeps_and_never_when_closed) {
  notifier bell;
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

// The sender changes the condition and rings at any moment of the waiters' way into their sleep.
void ring_at_any_moment() {
  constexpr int rounds = 10000, waiter_count = 3;
  notifier bell, answer;
  std::atomic<int> sent = 0, seen = 0;
  std::vector<std::thread> waiters;
  for (int waiter = 0; waiter < waiter_count; ++waiter)
    waiters.emplace_back([&] {
      for (int round = 1; round <= rounds; ++round) {
        while (sent < round)
          bell.wait([&] { return sent >= round; });
        ++seen;
        answer.notify();
      }
    });
  for (int round = 1; round <= rounds; ++round) {
    sent = round;
    bell.notify();
    const int all_seen = waiter_count * round;
    while (seen < all_seen)
      answer.wait([&] { return seen >= all_seen; });
  }
  for (std::thread& each : waiters)
    each.join();
  bell.close();
  answer.close();
}

TEST(notifier, no_wake_up_is_lost) {
  for (const char* microseconds : {"0", "20"}) {
    busy_wait(microseconds);
    ring_at_any_moment();
  }
}

TEST(busy_wait, is_read_from_the_environment) {
  using row = std::pair<const char*, int>;
  for (const auto& [text, limit] :
       {row{"200", 200}, row{"1000", 1000}, row{"1001", 1000}, row{"0", 0}, row{"", 0}, row{"-5", 0},
        row{"20x", 0}, row{"1.5", 0}, row{"99999999999999999999", 1000}}) {
    busy_wait(text);
    EXPECT_EQ(busy_wait_limit.load().count(), limit) << text;
  }
  unsetenv("TARVA_BUSY_WAIT_US");
  read_busy_wait_limit();
  EXPECT_EQ(busy_wait_limit.load().count(), 0);
}

// What a thread has learnt is its own: each of them begins anew.
TEST(busy_wait, looks_where_that_may_pay_and_nowhere_else) {
  event_count events;
  const event_count::ticket old = events.get_ticket();
  events.notify_all();
  const auto looks = [&] { return look_before_sleep(events, old); };
  EXPECT_FALSE(looks()) << "nobody has asked for it";
  busy_wait("1");
  cpu_set_t allowed;
  ASSERT_EQ(sched_getaffinity(0, sizeof(allowed), &allowed), 0);
  if (CPU_COUNT(&allowed) > 1)
    std::thread([&] {
      EXPECT_TRUE(looks());
      for (int i = 0; i < 8; ++i)
        EXPECT_FALSE(look_before_sleep(events, events.get_ticket()));
      EXPECT_FALSE(looks()) << "it has not paid of late";
      bool has_looked = false;
      for (int i = 0; i < 1000 && !has_looked; ++i)
        has_looked = looks();
      EXPECT_TRUE(has_looked && looks()) << "it has paid again";
    }).join();
  std::thread([&] {
    CPU_ZERO(&allowed);
    CPU_SET(sched_getcpu(), &allowed);
    EXPECT_EQ(sched_setaffinity(0, sizeof(allowed), &allowed), 0);
    EXPECT_FALSE(looks()) << "nobody else could run";
  }).join();
  busy_wait("0");
}

// The woken waiter drops the only one while the sender is still on its way out.
TEST(notifier, survives_its_end_in_the_sender) {
  for (int round = 0; round < 2000; ++round) {
    auto owned = std::make_unique<notifier>();
    const notifier& senders = *owned;
    std::thread waiter([owned = std::move(owned)]() mutable {
      while (!owned->is_closed())
        owned->wait([] { return false; });
      owned.reset();
    });
    senders.close();
    waiter.join();
  }
}

TEST(fair_mutex, passes_the_turn_on_in_the_order_of_joining) {
  constexpr std::size_t count = 8;
  fair_mutex queues[2];
  std::vector<fair_mutex::place> places[2] = {std::vector<fair_mutex::place>(count),
                                              std::vector<fair_mutex::place>(count)};
  std::vector<std::size_t> order;
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < count; ++i)
    for (std::size_t queue = 0; queue < 2; ++queue)
      EXPECT_EQ(places[queue][i].join(queues[queue]), i == 0);
  struct sigaction wake {};
  wake.sa_handler = [](int) {};
  ASSERT_EQ(sigaction(SIGUSR1, &wake, nullptr), 0);
  // Those who wait begin to wait in the reverse order, each for two queues; and what wakes them first is no turn.
  for (std::size_t i = count; i-- > 0;) {
    for (int round = 0; i == 0 && round < 20; ++round) {
      for (std::thread& each : threads)
        pthread_kill(each.native_handle(), SIGUSR1);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    threads.emplace_back([&, i] {
      for (auto& each : places)
        each[i].wait_for_turn();
      order.push_back(i);
      for (std::size_t queue = 0; queue < 2; ++queue)
        places[queue][i].leave();
    });
  }
  for (std::thread& each : threads)
    each.join();
  std::vector<std::size_t> expected(count);
  std::iota(expected.begin(), expected.end(), 0U);
  EXPECT_EQ(order, expected);
  fair_mutex::place after;
  EXPECT_TRUE(after.join(queues[0])) << "nobody is left in the queue";
  EXPECT_EQ(after.give_up(), nullptr);
}

} // namespace
} // namespace oryn::tarva::library
