// The lock that is passed on in order.
#include "base/fair_mutex.h"

#include <gtest/gtest.h>

#include <csignal>
#include <numeric>
#include <thread>
#include <vector>

namespace oryn::tarva::library {
namespace {

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

TEST(fair_mutex, admits_one_at_a_time_at_any_moment) {
  fair_mutex lock;
  int entered = 0, left = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i)
    threads.emplace_back([&] {
      for (int round = 0; round < 2000; ++round) {
        const fair_mutex::guard guard(lock);
        ASSERT_EQ(entered++, left);
        if (round % 16 == 0)
          std::this_thread::yield();
        ++left;
      }
    });
  for (std::thread& each : threads)
    each.join();
  EXPECT_EQ(left, 8 * 2000);
}

} // namespace
} // namespace oryn::tarva::library
