// A request that fails takes nothing with it: no kernel works on content that never arrived, no content is
// lost, and the next request finds everything as it was.
#include "tests/scripted/scripted_test.h"

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

TEST_P(failures, content_caught_between_big_endian_devices_keeps_its_order) {
  const std::uint32_t other = version() % version_count + 1;
  const auto here = kernel(version(), "add", role::big_endian),
             there = kernel(other, "add", role::big_endian);
  const memory numbers = make(counted(4));
  const std::int32_t amount = 1;
  must(launch(here, {argument(numbers), argument(amount)}, line(4)));
  fail_event(op::enqueue_write_buffer, 1, -5);
  EXPECT_EQ(launch(there, {argument(numbers), argument(amount)}, line(4)), outcome());
  EXPECT_EQ(swapped(read<std::int32_t>(numbers, 4)), counted(4, 2));
  const std::int32_t pattern = 8;
  must(fill(numbers, &pattern, 0, 1));
  EXPECT_EQ(launch(there, {argument(numbers), argument(amount)}, line(4)), outcome());
  EXPECT_EQ(swapped(read<std::int32_t>(numbers, 4)), (std::vector<std::int32_t>{9, 4, 5, 6}));
}

// Whether it failed on the way or not: between devices the bytes stay as they are, on each way there and back.
TEST_P(failures, a_move_to_another_byte_order_goes_on_as_it_began) {
  const std::uint32_t other = version() % version_count + 1;
  const caller::kernel kernels[] = {kernel(version(), "add"), kernel(other, "add", role::big_endian)};
  void (*const plans[])() = {nullptr, [] { fail_event(op::enqueue_write_buffer, 1, -5); },
                             [] { fail_call(op::create_buffer, 1, -4); }};
  const std::int32_t amount = 1;
  for (const std::size_t from : {0, 1}) {
    std::vector<std::vector<std::int32_t>> results;
    for (auto* const plan : plans) {
      const memory numbers = make(counted(4));
      must(launch(kernels[from], {argument(numbers), argument(amount)}, line(4)));
      for (const std::size_t to : {1 - from, from}) {
        if (plan != nullptr) {
          plan();
          must(launch(kernels[to], {argument(numbers), argument(amount)}, line(4)));
          EXPECT_TRUE(no_failure_left());
        }
        must(launch(kernels[to], {argument(numbers), argument(amount)}, line(4)));
      }
      results.push_back(read<std::int32_t>(numbers, 4));
    }
    EXPECT_EQ(results, std::vector(3, results.back()));
  }
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
