// The lock that is passed on in order.
#include "base/fair_mutex.h"

#include <gtest/gtest.h>

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
  // Those who wait begin to wait in the reverse order, each for two queues.
  for (std::size_t i = count; i-- > 0;)
    threads.emplace_back([&, i] {
      for (auto& each : places)
        each[i].wait_for_turn();
      order.push_back(i);
      for (std::size_t queue = 0; queue < 2; ++queue)
        places[queue][i].leave();
    });
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
