// How futures end in the C++ layer, over functions that do nothing but count.
#include <gtest/gtest.h>
#include <tarva.hpp>

extern int ended_futures; // of the stub

namespace {

TEST(futures, end_exactly_once) {
  const tarva::memory<float> memory(4);
  std::vector<float> numbers(4);
  const auto ended_by = [&](auto use) {
    const int before = ended_futures;
    use(memory.async_read(numbers));
    return ended_futures - before;
  };
  EXPECT_EQ(ended_by([](tarva::future<> left) { EXPECT_TRUE(left.valid()); }), 1);
  EXPECT_EQ(ended_by([](tarva::future<> waited) { waited.get(); }), 1);
  EXPECT_EQ(ended_by([](tarva::future<> moved) { const tarva::future<> to(std::move(moved)); }), 1);
  EXPECT_EQ(ended_by([](tarva::future<> kept) { kept.abandon(); }), 1);
  EXPECT_EQ(ended_by([&](tarva::future<> replaced) { replaced = memory.async_read(numbers); }), 2);
}

} // namespace
