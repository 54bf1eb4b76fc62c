// A request that fails takes nothing with it: no kernel works on content that never arrived, no content is
// lost, and the next request finds everything as it was.
#include "tests/scripted/scripted_test.h"

#include <optional>
#include <random>

namespace scripted {

using namespace caller;
using op = qv::operation;

struct failing {
  const char* what;
  void (*plan)(op, int, std::int32_t);
  op operation;
  std::int32_t value;
  int places;            // the first, the second, ... of that operation fails in turn
  std::size_t moved = 0; // how many of the objects are on another device before
};

// A launch of a kernel with three memory objects, which come from the host or from another device.
const failing launch_failures[] = {
    {"no memory on the device", fail_call, op::create_buffer, -4, 3},
    {"capability library fails", fail_transport, op::create_buffer, -1, 2},
    {"write to the device", fail_event, op::enqueue_write_buffer, -5, 3},
    {"event that cannot be read", fail_call, op::get_event_info, -6, 1},
    {"kernel", fail_event, op::enqueue_nd_range_kernel, -1000, 1},
    {"no memory on the second device", fail_call, op::create_buffer, -4, 3, 3},
    {"read from the first device", fail_event, op::enqueue_read_buffer, -5, 3, 3},
    {"write to the second device", fail_event, op::enqueue_write_buffer, -5, 3, 3},
    {"read of one of three", fail_event, op::enqueue_read_buffer, -5, 1, 1},
    {"write of objects from both", fail_event, op::enqueue_write_buffer, -5, 3, 1},
    {"memory for objects from both", fail_call, op::create_buffer, -4, 3, 2},
};

class failures : public each_version {
protected:
  static std::vector<std::int32_t> swapped(std::vector<std::int32_t> values) {
    for (std::int32_t& value : values)
      value = static_cast<std::int32_t>(__builtin_bswap32(static_cast<std::uint32_t>(value)));
    return values;
  }
  void expect_silence() {
    forget_calls();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const auto calls = take_calls();
    for (const op late : {op::enqueue_nd_range_kernel, op::enqueue_read_buffer, op::enqueue_write_buffer,
                          op::enqueue_copy_buffer, op::enqueue_fill_buffer, op::finish, op::create_buffer})
      EXPECT_EQ(count(calls, late), 0u) << "a command ran after its request had returned";
  }
  void try_launch(const failing& row, int place, role target) {
    SCOPED_TRACE(::testing::Message() << row.what << ", number " << place);
    const auto sum = kernel(version(), "sum", target);
    const memory a = make(counted(5)), out = make(counted(5, 1000)), b = make(counted(5, 10));
    const std::pair<const memory*, std::vector<std::int32_t>> objects[] = {
        {&a, counted(5)}, {&out, counted(5, 1000)}, {&b, counted(5, 10)}};
    for (std::size_t i = 0; i < row.moved; ++i)
      bring(kernel(version(), "add", role::second), {objects[i].first});

    row.plan(row.operation, place, row.value);
    EXPECT_EQ(launch(sum, {argument(out), argument(a), argument(b)}, line(5)), outcome());
    EXPECT_TRUE(no_failure_left());
    expect_silence();
    for (const auto& [object, content] : objects) {
      const auto left = read<std::int32_t>(*object, 5);
      // One that had arrived at the device before the failure stays there, in that order.
      EXPECT_TRUE(left == content || (target == role::big_endian && left == swapped(content)));
    }

    EXPECT_EQ(launch(sum, {argument(out), argument(a), argument(b)}, line(5)), outcome());
    const auto order = [&](const std::vector<std::int32_t>& v) {
      return target == role::big_endian ? swapped(v) : v;
    };
    EXPECT_EQ(order(read<std::int32_t>(out, 5)), (std::vector<std::int32_t>{11, 13, 15, 17, 19}));
    EXPECT_EQ(order(read<std::int32_t>(a, 5)), counted(5));
    EXPECT_EQ(order(read<std::int32_t>(b, 5)), counted(5, 10));
  }
};
INSTANTIATE_TEST_SUITE_P(scripted, failures, ::testing::Range(1u, version_count + 1), version_name);

TEST_P(failures, a_failed_launch_loses_nothing_and_can_be_repeated) {
  for (const failing& row : launch_failures)
    for (int place = 1; place <= row.places; ++place)
      try_launch(row, place, role::first);
}

TEST_P(failures, a_failed_change_of_byte_order_is_not_repeated) {
  for (const failing& row : launch_failures)
    for (int place = 1; place <= row.places && row.moved == 0; ++place)
      try_launch(row, place, role::big_endian);
}

// One thread does anything to a few objects, on devices of both byte orders and two versions, while this or that fails.
// Beside it a model of what each object holds, as it is stored, and where.
class conversation {
public:
  struct stop {
    caller::kernel add;
    bool little_endian;
  };
  conversation(std::vector<stop> stops, unsigned seed) : stops_(std::move(stops)), random_(seed) {}

  void take_step() {
    if (objects_.size() < 3)
      return objects_.push_back(modelled(allocate(TARVA_ABI_TYPE_INT32, size)));
    if (below(3) == 0)
      planned_ = fallible[below(std::size(fallible))];
    const std::size_t which = below(objects_.size()), start = below(size), count = 1 + below(size - start);
    modelled& one = objects_[which];
    modelled& other = objects_[(which + 1) % objects_.size()];
    const auto value = static_cast<std::int32_t>(below(100));
    switch (below(8)) {
    case 0:
      return static_cast<void>(objects_.erase(objects_.begin() + static_cast<std::ptrdiff_t>(which)));
    case 1:
      return put(one, start, count, value, write_raw(plan(one), start, count, numbers(size, value).data()));
    case 2:
      return put(one, start, count, one.fills_little(stops_) ? value : turned(value),
                 fill(plan(one), &value, start, count));
    case 3:
      return copy_range(one, start, other, below(size - count + 1), count);
    case 4:
      return check(one, start, count);
    default:
      return launch_on(one, static_cast<int>(below(stops_.size())), value);
    }
  }

private:
  using numbers = std::vector<std::int32_t>;
  static constexpr std::size_t size = 6;
  static constexpr op fallible[] = {op::enqueue_write_buffer, op::enqueue_read_buffer,
                                    op::enqueue_copy_buffer,  op::enqueue_nd_range_kernel,
                                    op::enqueue_fill_buffer,  op::create_buffer};
  struct modelled {
    explicit modelled(memory made) : object(std::move(made)) {}
    bool fills_little(const std::vector<stop>& stops) const {
      return at < 0 ? is_little : stops[static_cast<std::size_t>(at)].little_endian;
    }
    memory object;
    std::vector<std::optional<std::int32_t>> content = std::vector<std::optional<std::int32_t>>(size);
    bool has_content = false, is_little = true, is_between = false;
    int at = -1; // the host, or one of the stops
  };

  std::size_t below(std::size_t bound) { return static_cast<std::size_t>(random_() % bound); }
  static std::int32_t turned(std::int32_t value) {
    return static_cast<std::int32_t>(__builtin_bswap32(static_cast<std::uint32_t>(value)));
  }
  const memory& plan(const modelled& one) {
    // Which of two devices is ahead decides what is left of a move without memory at its end.
    if (planned_ == op::create_buffer && one.at < 0)
      fail_call(*planned_, 1, -4);
    else if (planned_ && planned_ != op::create_buffer)
      fail_event(*planned_, 1, -5);
    else
      planned_.reset();
    return one.object;
  }
  // What has failed of the request, if anything.
  std::optional<op> failure() {
    const bool is_pending = !no_failure_left();
    const auto planned = std::exchange(planned_, std::nullopt);
    return is_pending ? std::nullopt : planned;
  }
  void put(modelled& one, std::size_t start, std::size_t count, std::int32_t stored, const outcome&) {
    one.has_content = true; // half-way counts
    if (!failure())
      std::fill_n(one.content.begin() + static_cast<std::ptrdiff_t>(start), count, stored);
  }
  void copy_range(modelled& from, std::size_t start, modelled& to, std::size_t at, std::size_t count) {
    must(copy(plan(from), start, to.object, at, count));
    const auto failed = failure();
    const bool has_left = failed != op::enqueue_read_buffer || to.at < 0;
    to.has_content = to.has_content || (from.has_content && has_left);
    if (from.has_content && !failed)
      std::copy_n(from.content.begin() + static_cast<std::ptrdiff_t>(start), count,
                  to.content.begin() + static_cast<std::ptrdiff_t>(at));
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
  void launch_on(modelled& one, int target, std::int32_t amount) {
    const stop& there = stops_[static_cast<std::size_t>(target)];
    forget_calls();
    must(launch(there.add, {argument(plan(one)), argument(amount)}, line(size)));
    const auto failed = failure();
    const auto calls = take_calls();
    const std::size_t transfers =
        count(calls, op::enqueue_read_buffer) + count(calls, op::enqueue_write_buffer);
    const std::size_t needed = !one.has_content || one.at == target ? 0u : one.at < 0 ? 1u : 2u;
    EXPECT_TRUE(failed || transfers == needed) << transfers;
    if (failed == op::create_buffer || failed == op::enqueue_read_buffer ||
        (failed == op::enqueue_write_buffer && one.at < 0))
      return;
    if (failed == op::enqueue_write_buffer) {
      one.at = -1;
      one.is_between = true;
      return;
    }
    if (one.at < 0 && !one.is_between &&
        std::exchange(one.is_little, there.little_endian) != there.little_endian)
      for (auto& value : one.content)
        value = value ? std::optional(turned(*value)) : value;
    one.at = target;
    one.is_between = false;
    one.has_content = true;
    for (auto& value : one.content)
      if (value && !failed)
        value = there.little_endian ? *value + amount : turned(turned(*value) + amount);
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
      stops.push_back({kernel(one, "add", which), which == role::first});
  conversation talk(std::move(stops), version());
  for (int i = 0; i < 3000 && !HasFailure(); ++i)
    talk.take_step();
}

TEST_P(failures, a_release_that_fails_is_survived) {
  const auto sum = kernel(version(), "sum"), add = kernel(version(), "add", role::second);
  for (const op release : {op::release_mem_object, op::release_event, op::release_kernel})
    for (int place = 1; place <= 3; ++place) {
      SCOPED_TRACE(::testing::Message() << static_cast<int>(release) << ", number " << place);
      const memory out = make(counted(5, 1000)), a = make(counted(5)), b = make(counted(5, 10));
      bring(add, {&out, &a, &b});
      fail_call(release, release == op::release_kernel ? 1 : place, -5);
      EXPECT_EQ(launch(sum, {argument(out), argument(a), argument(b)}, line(5)), outcome());
      EXPECT_TRUE(no_failure_left());
      EXPECT_EQ(read<std::int32_t>(out, 5), (std::vector<std::int32_t>{11, 13, 15, 17, 19}));
      EXPECT_EQ(read<std::int32_t>(b, 5), counted(5, 10));
    }
}

TEST_P(failures, a_future_tells_how_its_transfer_failed) {
  const memory numbers = make(counted(4));
  bring(kernel(version(), "add"), {&numbers});
  std::vector<std::int32_t> host{7, 7, 7, 7};
  fail_event(op::enqueue_read_buffer, 1, -5);
  EXPECT_EQ(read_raw(numbers, 0, 4, host.data()),
            other_failure("Failed to allocate resources on the device."));
  EXPECT_EQ(host, (std::vector<std::int32_t>{7, 7, 7, 7}));
  fail_event(op::enqueue_write_buffer, 1, -1000);
  EXPECT_EQ(write_raw(numbers, 0, 4, host.data()), other_failure("Unknown OpenCL Error Code: -1000"));
  EXPECT_EQ(read<std::int32_t>(numbers, 4), counted(4));

  // The code alone will do, too; and a future may be abandoned.
  tarva_abi_future_s* future = nullptr;
  long code = 0;
  fail_event(op::enqueue_read_buffer, 2, -5);
  for (const bool waits : {false, true}) {
    must(call<tarva_abi_async_read_memory>(numbers.get(), 0, 4, host.data(), &future));
    if (waits)
      must(call<tarva_abi_wait_future>(future, &code, nullptr));
    else
      tarva_abi_abandon_future(nullptr, future);
  }
  EXPECT_EQ(code, TARVA_ABI_RUNTIME_FAILURE);
  EXPECT_EQ(call<tarva_abi_wait_future>(future, &code, nullptr),
            runtime_failure("Lookup of internal type map failed."));
}

TEST_P(failures, failed_fills_and_copies_change_nothing) {
  const memory numbers = make(counted(4)), beside = make(counted(4, 20)), away = make(counted(4, 40));
  const std::int32_t pattern = 9;
  bring(kernel(version(), "add"), {&numbers, &beside});
  bring(kernel(version(), "add", role::second), {&away});

  fail_event(version() >= 3 ? op::enqueue_fill_buffer : op::enqueue_write_buffer, 1, -5);
  EXPECT_EQ(fill(numbers, &pattern, 0, 4), outcome());
  fail_event(op::enqueue_copy_buffer, 1, -5);
  EXPECT_EQ(copy(beside, 0, numbers, 0, 4), outcome());
  for (const op half : {op::enqueue_read_buffer, op::enqueue_write_buffer}) {
    fail_event(half, 1, -5);
    EXPECT_EQ(copy(away, 0, numbers, 0, 4), outcome());
    expect_silence();
  }
  EXPECT_TRUE(no_failure_left());
  EXPECT_EQ(read<std::int32_t>(numbers, 4), counted(4));
  EXPECT_EQ(copy(away, 0, numbers, 0, 4), outcome());
  EXPECT_EQ(read<std::int32_t>(numbers, 4), counted(4, 40));
}

} // namespace scripted
