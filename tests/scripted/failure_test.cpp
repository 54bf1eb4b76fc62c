// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// An operation that fails takes nothing with it: no kernel works on content that never arrived, no content is
// lost, and the next operation finds everything as it was.
#include "tests/scripted/scripted_test.h"

#include <optional>
#include <random>

namespace scripted {

using namespace caller;
using op = qv::operation;

class failures : public each_version {};
INSTANTIATE_TEST_SUITE_P(scripted, failures, ::testing::Range(1u, version_count + 1), version_name);

// One thread does anything to a few objects, on devices of both byte orders and two versions, while this or that fails.
// Beside it a model of what each object holds, as it is stored, and where.
class conversation {
public:
  struct stop {
    caller::kernel add, sum;
    bool is_little;
  };
  conversation(std::vector<stop> stops, unsigned seed) : stops_(std::move(stops)), random_(seed) {}

  void take_step() {
    if (objects_.size() < 3)
      return objects_.push_back({allocate(TARVA_ABI_TYPE_INT32, size)});
    planned_.reset();
    if (below(3) == 0)
      planned_ = fallible[below(std::size(fallible))];
    const std::size_t which = below(objects_.size()), start = below(size), count = 1 + below(size - start);
    modelled &one = objects_[which], &other = objects_[(which + 1) % objects_.size()];
    const stop& there = stops_[below(stops_.size())];
    const auto value = static_cast<std::int32_t>(below(100));
    switch (below(9)) {
    case 0:
      return static_cast<void>(objects_.erase(objects_.begin() + static_cast<std::ptrdiff_t>(which)));
    case 1:
      write_raw(plan(one), start, count, numbers(size, value).data());
      return put(one, start, count, value);
    case 2:
      must(fill(plan(one), &value, start, count));
      return put(one, start, count, (one.at ? one.at->is_little : one.is_little) ? value : turned(value));
    case 3:
      return copy_range(one, start, other, below(size - count + 1), count);
    case 4:
      return check(one, start, count);
    case 5:
      return strand(one, there);
    default:
      return launch_on(one, there, value);
    }
  }

private:
  using numbers = std::vector<std::int32_t>;
  static constexpr std::size_t size = 6;
  static constexpr op fallible[] = {op::enqueue_write_buffer, op::enqueue_read_buffer,
                                    op::enqueue_copy_buffer,  op::enqueue_nd_range_kernel,
                                    op::enqueue_fill_buffer,  op::create_buffer};
  struct modelled {
    memory object;
    std::array<std::optional<std::int32_t>, size> content{};
    bool has_content = false, is_little = true, is_between = false;
    const stop* at = nullptr; // on the host
  };

  std::size_t below(std::size_t bound) { return static_cast<std::size_t>(random_() % bound); }
  static std::int32_t turned(std::int32_t value) {
    return static_cast<std::int32_t>(__builtin_bswap32(static_cast<std::uint32_t>(value)));
  }
  const memory& plan(const modelled& one) {
    if (planned_ && planned_ != op::create_buffer)
      fail_event(*planned_, 1, -5);
    else if (planned_ &&
             one.at == nullptr) // else it depends on which of two devices is ahead what is left of a move
      fail_call(*planned_, 1, -4);
    else
      planned_.reset();
    return one.object;
  }
  // What has failed of the operation, if anything.
  std::optional<op> failure() { return no_failure_left() ? planned_ : std::nullopt; }

  void put(modelled& one, std::size_t start, std::size_t count, std::int32_t stored) {
    one.has_content = true; // half-way counts
    if (!failure())
      std::fill_n(&one.content[start], count, stored);
  }
  void copy_range(modelled& from, std::size_t start, modelled& to, std::size_t target, std::size_t count) {
    must(copy(plan(from), start, to.object, target, count));
    const auto failed = failure();
    to.has_content |= from.has_content && (failed != op::enqueue_read_buffer || to.at == nullptr);
    if (from.has_content && !failed)
      std::copy_n(&from.content[start], count, &to.content[target]);
  }
  void check(const modelled& one, std::size_t start, std::size_t count) {
    constexpr std::int32_t untouched = -12345;
    numbers seen(count, untouched);
    const outcome result = read_raw(plan(one), start, count, seen.data());
    const bool is_read = !failure() && one.has_content;
    EXPECT_TRUE(result == outcome() || !is_read);
    for (std::size_t i = 0; i < count; ++i)
      EXPECT_EQ(seen[i], is_read ? one.content[start + i].value_or(seen[i]) : untouched);
  }
  // What has no content arrives, but something else does not, so that the kernel never comes to it.
  void strand(modelled& one, const stop& there) {
    if (one.at != nullptr || one.has_content)
      return;
    const memory other = make(numbers(size));
    fail_event(op::enqueue_write_buffer, 1, -5);
    must(launch(there.sum, {argument(other), argument(other), argument(one.object)}, line(size)));
    EXPECT_TRUE(no_failure_left());
    arrive(one, there);
  }
  static void arrive(modelled& one, const stop& there) {
    if (one.at == nullptr && !one.is_between &&
        std::exchange(one.is_little, there.is_little) != there.is_little)
      for (auto& value : one.content)
        value = value ? std::optional(turned(*value)) : value;
    one.at = &there;
    one.is_between = false;
  }
  void launch_on(modelled& one, const stop& there, std::int32_t amount) {
    forget_calls();
    must(launch(there.add, {argument(plan(one)), argument(amount)}, line(size)));
    const auto failed = failure();
    const auto calls = take_calls();
    const auto transfers = count(calls, op::enqueue_read_buffer) + count(calls, op::enqueue_write_buffer);
    EXPECT_TRUE(failed || transfers == (!one.has_content || one.at == &there ? 0u
                                        : one.at == nullptr                  ? 1u
                                                                             : 2u));
    if (failed == op::enqueue_write_buffer && one.at != nullptr) {
      one.at = nullptr;
      one.is_between = true;
    } else if (!failed || failed == op::enqueue_nd_range_kernel) {
      arrive(one, there);
      one.has_content = true;
      for (auto& value : one.content)
        if (value && !failed)
          value = there.is_little ? *value + amount : turned(turned(*value) + amount);
    }
  }

  const std::vector<stop> stops_;
  std::mt19937 random_;
  std::vector<modelled> objects_;
  std::optional<op> planned_;
};

TEST_P(failures, a_conversation_at_random_goes_as_its_model) {
  std::vector<conversation::stop> stops;
  for (const std::uint32_t one : {version(), version() % version_count + 1})
    for (const role which : {role::first, role::big_endian})
      stops.push_back({kernel(one, "add", which), kernel(one, "sum", which), which == role::first});
  conversation talk(std::move(stops), version());
  for (int i = 0; i < 3000 && !HasFailure(); ++i)
    talk.take_step();
}

// The work of an allocation tells nobody that it failed, so everything that needs the storage does.
TEST_P(failures, an_object_whose_allocation_failed_cannot_be_used) {
  const memory none = allocate(TARVA_ABI_TYPE_UINT8, std::uint64_t{1} << 62),
               there = make(std::vector<std::uint8_t>(4));
  const auto flag = kernel(version(), "flag");
  must(launch(flag, {argument(there)}, line(1)));
  std::uint8_t byte = 7;
  forget_calls();
  const outcome ends[] = {read_raw(none, 0, 1, &byte), launch(flag, {argument(none)}, line(1)),
                          copy(none, 0, there, 0, 1), write_raw(none, 0, 1, &byte),
                          copy(there, 0, none, 0, 1)};
  for (std::size_t i = 0; i < std::size(ends); ++i)
    EXPECT_EQ(ends[i], logic_failure(std::string("Attempting to get a ") + (i < 3 ? "read" : "write") +
                                     " pointer from a host memory object that does not have any memory "
                                     "allocated."));
  EXPECT_EQ(copy(none, 0, make(std::vector{byte}), 0, 1), outcome()) << "the work of a copy on the host";
  EXPECT_EQ(count(take_calls(), op::create_buffer), 0u);
}

TEST_P(failures, a_future_tells_how_its_transfer_failed) {
  const memory numbers = make(counted(4));
  bring(kernel(version(), "add"), {&numbers});
  std::vector<std::int32_t> host(4);
  fail_event(op::enqueue_write_buffer, 1, -1000);
  EXPECT_EQ(write_raw(numbers, 0, 4, host.data()), other_failure("Unknown OpenCL Error Code: -1000"));
  fail_event(op::enqueue_read_buffer, 1, 2);
  EXPECT_EQ(read_raw(numbers, 0, 4, host.data()), outcome()) << "a status above 0 is no failure";
}

} // namespace scripted
