// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// How the six launch types become work sizes, and which launches are refused before anything happens.
#include "tests/scripted/scripted_test.h"

namespace scripted {

using namespace caller;
using op = qv::operation;
constexpr std::uint64_t huge = ~std::uint64_t{0};

class launching : public each_version {
protected:
  // The global sizes, then the local sizes, of the only launch since the last look.
  std::vector<std::uint64_t> sizes() {
    const auto launches = only(take_calls(), op::enqueue_nd_range_kernel);
    if (launches.size() != 1)
      return {};
    return {launches[0].numbers.begin() + 3, launches[0].numbers.end()};
  }
};
INSTANTIATE_TEST_SUITE_P(scripted, launching, ::testing::Range(1u, version_count + 1), version_name);

TEST_P(launching, each_type_becomes_its_sizes) {
  // The scripted devices: work-groups of 256, so 16 by 16 or 6 by 6 by 6, and 4 compute units.
  const auto empty = kernel(version(), "empty");
  using list = std::vector<std::uint64_t>;
  // Of a record no more is there than its type needs, so that a sanitizer sees who reads on.
  const auto launch_words = [&](const list& words) {
    const auto* const record = reinterpret_cast<const tarva_abi_launch_range_s*>(words.data());
    return call<tarva_abi_kernel_call>(empty.get(), nullptr, 0, record);
  };
  const std::vector<std::pair<list, list>> rows{
      {{1, 2, 0, 0, 0, 8, 6, 9, 4, 3, 9}, {8, 6, 1, 4, 3, 1}},
      {{1, 1, 0, 0, 0, 5, 1, 1, 0, 0, 0}, {5, 1, 1, is_opencl() ? 1u : 0u, 1, 1}}, // to OpenCL none
      {{2, 2, 10, 320, 5}, {16, 320, 1, 16, 16, 1}},
      {{2, 3, 1, 12, 1}, {6, 12, 6, 6, 6, 6}},
      {{3, 5}, {1280, 1, 1, 256, 1, 1}},
      {{4, 2, 3, 8, 4, 1}, {24, 12, 1, 8, 4, 1}},
      {{4, 1, 3, 8, huge, huge}, {24, 1, 1, 8, 1, 1}}, // what lies beyond the dimensions does not count
      {{5, 2}, {2048, 1, 1, 256, 1, 1}},
      {{6, 3, huge, 8, 4, 2}, {32, 16, 8, 8, 4, 2}},
  };
  for (const auto& [words, expected] : rows) {
    forget_calls();
    EXPECT_EQ(launch_words(words), outcome()) << "type " << words[0];
    EXPECT_EQ(sizes(), expected) << "type " << words[0];
  }
  for (const list& words : {list{0},
                            {7},
                            {huge},
                            {3, huge / 256 + 1},
                            {5, huge / 1024 + 1},
                            {4, 2, huge, 1, 2, 1},
                            {6, 3, 0, 1, 1, huge / 4 + 1}})
    EXPECT_EQ(launch_words(words).type, 2u) << "unknown, or a size that wraps around: type " << words[0];
  // The kernel is asked for its size before the device is asked for its units.
  fail_call(op::get_kernel_work_group_info, 1, -6);
  fail_call(op::get_device_info, 1, -5);
  EXPECT_EQ(launch_words({5, 1}), other_failure("Failed to allocate memory on the host."));
  EXPECT_FALSE(no_failure_left());
  // A size that the compiler fixed is the one that the kernel chooses.
  const memory numbers = make(counted(1));
  const auto fixed = kernel(version(), "fixed");
  forget_calls();
  EXPECT_EQ(launch(fixed, {argument(numbers)}, {TARVA_ABI_LAUNCH_GLOBAL_SIZE, {3, 1, 8, 1}}), outcome());
  EXPECT_EQ(sizes(), (list{8, 8, 2, 8, 4, 2}));
  // It also stands in for the device's choice. From 1.2 on, and everywhere to libqv, the attributes
  // tell what the query does not.
  const auto index = device_index(version(), role::first);
  constexpr std::uint32_t compile_work_group_size = 0x11B1, attributes = 0x1195;
  for (const bool is_silent : {false, true}) {
    if (is_silent) {
      set_info(index, compile_work_group_size, value_answer(std::array<std::uint64_t, 3>{}));
      set_info(index, attributes, text_answer("__attribute__((reqd_work_group_size(8, 4, 2 )))"));
    }
    const auto called = kernel(version(), "fixed");
    forget_calls();
    EXPECT_EQ(
        launch(called, {argument(numbers)}, {TARVA_ABI_LAUNCH_EXPLICIT, {2, 0, 0, 0, 16, 8, 1, 0, 0, 0}}),
        outcome());
    EXPECT_EQ(sizes(), is_silent && version() < 3 && !is_opencl() ? (list{16, 8, 1, 0, 0, 1})
                                                                  : (list{16, 8, 1, 8, 4, 1}));
  }
  set_info(index, compile_work_group_size, {});
  set_info(index, attributes, {});
}

TEST_P(launching, an_offset_is_passed_on_from_1_1) {
  const memory numbers = make(counted(6));
  const std::int32_t amount = 10;
  const outcome ended =
      launch(kernel(version(), "add"), {argument(numbers), argument(amount)}, line(2, 1, 3));
  if (version() == 1) {
    EXPECT_EQ(ended, logic_failure("OpenCL 1.0 supports an offset of (0,0,0) only."));
    EXPECT_EQ(read<std::int32_t>(numbers, 6), counted(6));
  } else {
    EXPECT_EQ(ended, outcome());
    EXPECT_EQ(read<std::int32_t>(numbers, 6), (std::vector<std::int32_t>{1, 2, 3, 14, 15, 6}));
  }
}

TEST_P(launching, bad_launches_are_refused_on_the_callers_thread) {
  const auto add = kernel(version(), "add"), fixed = kernel(version(), "fixed"),
             observe = kernel(version(), "observe");
  const memory numbers = make(counted(4)), none = allocate(TARVA_ABI_TYPE_DOUBLE16, 0),
               shorts = make(std::vector<std::int16_t>(6));
  const std::int32_t amount = 1;
  const std::array<std::int16_t, 4> values{};
  const arguments good{argument(numbers), argument(amount)};
  const auto sized = [](std::uint64_t dim, std::array<std::uint64_t, 3> global,
                        std::array<std::uint64_t, 3> local) {
    return tarva_abi_launch_range_s{
        TARVA_ABI_LAUNCH_EXPLICIT,
        {dim, 0, 0, 0, global[0], global[1], global[2], local[0], local[1], local[2]}};
  };
  const auto with_local = [&](std::uint64_t elements) {
    return arguments{argument(shorts), local_argument(TARVA_ABI_TYPE_FLOAT, elements),
                     argument(values, TARVA_ABI_TYPE_INT16V4), null_argument()};
  };
  const arguments too_many{argument(numbers), argument(amount), argument(amount)};
  constexpr std::uint64_t large = std::uint64_t{1} << 33;
  struct row {
    const char* what;
    const caller::kernel& called;
    arguments list;
    tarva_abi_launch_range_s range;
    bool refused = true;
  };
  const bool before_2_0 = version() < 4, before_2_1 = version() < 5;
  const std::vector<row> rows{
      {"work dimension 0", add, good, sized(0, {4, 1, 1}, {1, 1, 1})},
      {"work dimension far too large", add, good, sized(std::uint64_t{1} << 32 | 1, {4, 1, 1}, {1, 1, 1})},
      {"one zero in the local size", add, good, sized(2, {4, 4, 1}, {4, 0, 1})},
      {"local size that does not divide", add, good, line(4, 3), before_2_0},
      {"group too large in all", add, good, sized(2, {32, 32, 1}, {32, 32, 1})},
      {"group whose size wraps around", add, good, sized(2, {large, large, 1}, {large, large, 1})},
      {"group too large in the third dimension", add, good, sized(3, {1, 1, 128}, {1, 1, 128})},
      {"global size 0", add, good, line(0), before_2_1},
      {"ids beyond all addresses", add, good, line(1, 1, huge)},
      {"too few arguments", add, {argument(numbers)}, line(4)},
      {"too many arguments", add, too_many, line(4)},
      {"memory of 0 elements", add, {argument(none), argument(amount)}, line(4)},
      {"local memory of 0 elements", observe, with_local(0), line(1)},
      {"more local memory than there is", observe, with_local(8193), line(1)},
      {"local memory whose size wraps around", observe, with_local(std::uint64_t{1} << 62 | 1), line(1)},
  };
  for (const row& one : rows) {
    forget_calls();
    const outcome ended = launch(one.called, one.list, one.range);
    EXPECT_EQ(ended.code != 0, one.refused) << one.what << ": " << ended;
    if (!one.refused)
      continue;
    EXPECT_TRUE(ended.message.size() > 10 && ended.message.back() == '.') << one.what << ": " << ended;
    EXPECT_EQ(count(take_calls(), op::create_buffer), 0u) << one.what << ": no state changes";
  }
  if (before_2_0) {
    EXPECT_EQ(launch(add, good, line(4, 3)),
              logic_failure("Local size (3) must divide the global size (4) in every dimension."));
  }
  EXPECT_EQ(launch(add, good, sized(4, {4, 1, 1}, {1, 1, 1})),
            logic_failure("Work dimension must be 1, 2, or 3."));
  // What lies beyond the dimensions of a launch does not count, and is not told.
  EXPECT_EQ(launch(fixed, {argument(numbers)}, sized(2, {8, 8, 7}, {8, 8, 7})),
            logic_failure(
                "Local size (8, 8) must be the size (8, 4) that was fixed when the kernel was compiled."));
  EXPECT_EQ(launch(fixed, {argument(numbers)}, sized(2, {8, 4, 7}, {8, 4, 7})), outcome());
  // The device may allow fewer work-items than it tells of the kernel, which is asked when it is made.
  constexpr std::uint32_t max_work_group_size = 0x1004, max_mem_alloc_size = 0x1010;
  const auto index = device_index(version(), role::first);
  set_info(index, max_work_group_size, value_answer(std::uint64_t{2}));
  EXPECT_NE(launch(kernel(version(), "add"), good, line(4, 4)).code, 0);
  set_info(index, max_work_group_size, {});
  EXPECT_EQ(launch(kernel(version(), "add"), good, line(4, 4)), outcome());
  // A device of 32 bits counts work-items with as many, and works like any other up to there.
  constexpr std::uint32_t address_bits = 0x100D;
  constexpr std::uint64_t last = 0xFFFFFFFF;
  set_info(index, address_bits, value_answer(std::uint32_t{32}));
  const auto of_32_bits = kernel(version(), "empty");
  set_info(index, address_bits, {});
  const std::uint64_t offset = version() > 1 ? last - 4 : 0; // 1.0 has no offsets
  for (const auto& range : {line(last + 1), line(4, 1, last - 3), sized(2, {4, last + 1, 1}, {1, 1, 1})})
    EXPECT_NE(launch(of_32_bits, {}, range).code, 0);
  forget_calls();
  EXPECT_EQ(launch(of_32_bits, {}, line(4, 1, offset)), outcome());
  EXPECT_EQ(only(take_calls(), op::enqueue_nd_range_kernel).at(0).numbers.at(0), offset);
  // An object that is there already need not be allocated. A limit of 0 is none.
  const memory others = make(counted(4));
  set_info(index, max_mem_alloc_size, value_answer(std::uint64_t{15}));
  const auto narrow = kernel(version(), "add");
  set_info(index, max_mem_alloc_size, value_answer(std::uint64_t{0}));
  const auto silent = kernel(version(), "add");
  set_info(index, max_mem_alloc_size, {});
  EXPECT_EQ(launch(narrow, good, line(4)), outcome());
  EXPECT_EQ(
      launch(narrow, {argument(others), argument(amount)}, line(4)),
      logic_failure("Argument 0 of kernel add is a memory object of 16 bytes, but the device can allocate at "
                    "most 15 bytes for one."));
  EXPECT_EQ(launch(silent, {argument(others), argument(amount)}, line(4)), outcome());
}

TEST_P(launching, ranges_of_transfers_are_checked_without_wrap_around) {
  const std::int32_t value = 1;
  std::array<std::int32_t, 8> host{};
  for (const bool on_device : {false, true}) {
    const memory numbers = make(counted(4)), others = make(counted(4));
    if (on_device)
      bring(kernel(version(), "add"), {&numbers, &others});
    for (const auto& [start, size] : std::vector<std::pair<std::uint64_t, std::uint64_t>>{
             {3, 2}, {5, 0}, {0, 5}, {huge, 2}, {2, huge}, {0, huge / 4 + 2}}) {
      SCOPED_TRACE(::testing::Message() << (on_device ? "device " : "host ") << start << "+" << size);
      EXPECT_EQ(fill(numbers, &value, start, size),
                logic_failure("Fill operation would overflow target capacity."));
      EXPECT_NE(copy(numbers, start, others, 0, size).code, 0);
      EXPECT_NE(copy(others, 0, numbers, start, size).code, 0);
      EXPECT_NE(read_raw(numbers, start, size, host.data()).code, 0);
      EXPECT_NE(write_raw(numbers, start, size, host.data()).code, 0);
    }
    EXPECT_NE(copy(numbers, 0, numbers, 1, 2).code, 0) << "overlapping ranges";
    const memory beside = make(counted(4));
    EXPECT_EQ(copy(beside, 0, beside, 2, 2), outcome());
    EXPECT_EQ(read<std::int32_t>(beside, 4), (std::vector<std::int32_t>{1, 2, 1, 2}));
    const outcome at_host = logic_failure("Memory copy would overflow allocation capacity.");
    EXPECT_EQ(read_raw(numbers, 1, 4, host.data()),
              on_device ? logic_failure("Copy operation would overflow source capacity.") : at_host);
    EXPECT_EQ(write_raw(numbers, 1, 4, host.data()),
              on_device ? logic_failure("Copy operation would overflow destination capacity.") : at_host);
    EXPECT_EQ(read<std::int32_t>(numbers, 4), counted(4));
  }
}

} // namespace scripted
