// How futures and errors end in the C++ layer, over functions that do nothing but count.
#include "stub_interface.h"

#include <gtest/gtest.h>
#include <tarva.hpp>

namespace {

TEST(futures, end_exactly_once) {
  const tarva::memory<float> memory(4);
  std::vector<float> numbers(4);
  const auto ended_by = [&](auto use) {
    const int before = stub.ended_futures;
    use(memory.async_read(numbers));
    return stub.ended_futures - before;
  };
  EXPECT_EQ(ended_by([](tarva::future<> left) { EXPECT_TRUE(left.valid()); }), 1);
  EXPECT_EQ(ended_by([](tarva::future<> waited) { waited.get(); }), 1);
  EXPECT_EQ(ended_by([](tarva::future<> moved) { const tarva::future<> to(std::move(moved)); }), 1);
  EXPECT_EQ(ended_by([](tarva::future<> kept) { kept.abandon(); }), 1);
  EXPECT_EQ(ended_by([&](tarva::future<> replaced) { replaced = memory.async_read(numbers); }), 2);
}

TEST(failures, tell_the_whole_chain) {
  const tarva::memory<float> memory(1);
  stub.next_read_fails = true;
  try {
    (void)memory.read();
    ADD_FAILURE();
  } catch (const tarva::runtime_failure& caught) {
    EXPECT_STREQ(caught.what(), "the outer one: the inner one");
    ASSERT_EQ(caught.chain().size(), 2U);
    EXPECT_EQ(caught.kind(), tarva::failure_kind::other);
    EXPECT_EQ(caught.chain()[1].kind, tarva::failure_kind::out_of_range);
  }
  EXPECT_EQ(stub.freed_errors, 2);
}

} // namespace
