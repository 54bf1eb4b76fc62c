// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Where the content of memory objects goes, under each version: to the device once, between devices, in the
// byte order of the device, and back to the caller.
#include "tests/scripted/scripted_test.h"

namespace scripted {

using namespace caller;
using op = qv::operation;

class movement : public each_version {};
INSTANTIATE_TEST_SUITE_P(scripted, movement, ::testing::Range(1u, version_count + 1), version_name);

TEST_P(movement, a_launch_asks_as_little_as_it_can_on_the_workers_thread) {
  const auto add = kernel(version(), "add");
  const memory numbers = make(counted(8));
  bring(add, {&numbers});
  const std::int32_t amount = 10;
  forget_calls();
  must(launch(add, {argument(numbers), argument(amount)}, line(4)));
  const auto calls = take_calls();
  EXPECT_EQ(count(calls, op::create_kernel), is_opencl() ? 0u : 1u) << "libqv keeps it";
  EXPECT_EQ(count(calls, op::set_kernel_arg), is_opencl() ? 1u : 2u) << "only what has changed";
  EXPECT_EQ(count(calls, op::finish), 2u) << "one finish of each queue for the run";
  for (const call_record& one : calls) {
    EXPECT_EQ(one.device, device_index(version(), role::first));
    EXPECT_EQ(one.capability, version());
    EXPECT_NE(one.thread, std::this_thread::get_id()) << "an OpenCL call of a launch on the caller's thread";
  }
}

TEST_P(movement, an_operation_of_count_0_asks_nothing_of_opencl) {
  const memory numbers = make(counted(4)), others = make(counted(4));
  bring(kernel(version(), "add"), {&numbers, &others});
  forget_calls();
  std::int32_t unused = 0;
  EXPECT_EQ(fill(numbers, &unused, 4, 0), outcome());
  EXPECT_EQ(copy(numbers, 4, others, 0, 0), outcome());
  EXPECT_EQ(read_raw(numbers, 4, 0, &unused), outcome());
  EXPECT_EQ(write_raw(numbers, 0, 0, &unused), outcome());
  const auto calls = take_calls();
  for (const op operation : {op::enqueue_fill_buffer, op::enqueue_copy_buffer, op::enqueue_read_buffer,
                             op::enqueue_write_buffer, op::create_buffer})
    EXPECT_EQ(count(calls, operation), 0u);
}

TEST_P(movement, byte_order_changes_by_component_and_not_for_boolean) {
  const auto observe = kernel(version(), "observe", role::big_endian);
  const memory seen = make(std::vector<std::int16_t>(6));
  const std::array<std::int16_t, 4> values{0x0102, 0x0304, 0x0506, 0x0708};
  const arguments list{argument(seen), local_argument(TARVA_ABI_TYPE_FLOAT, 3),
                       argument(values, TARVA_ABI_TYPE_INT16V4), null_argument()};
  EXPECT_EQ(launch(observe, list, line(1)), outcome());
  EXPECT_EQ(read<std::int16_t>(seen, 6),
            (std::vector<std::int16_t>{0x0c00, 0x0201, 0x0403, 0x0605, 0x0807, 0x0100}));

  const memory flags = allocate(TARVA_ABI_TYPE_BOOLEAN, 2);
  must(write_raw(flags, 0, 2, counted(2).data()));
  EXPECT_EQ(launch(kernel(version(), "flag", role::big_endian), {argument(flags)}, line(1)), outcome());
  EXPECT_EQ(read<std::int32_t>(flags, 1, 1), counted(1, 2));
}

} // namespace scripted
