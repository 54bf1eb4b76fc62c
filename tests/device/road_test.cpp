// The whole road on every OpenCL device that the environment offers, under each version it is offered as: the
// same kernels and the same results everywhere. Without a device it is skipped, by status 77, unless there
// has to be one.
#include "tests/device/every_device.h"

#include <cstdio>
#include <numeric>
#include <thread>

namespace {

using namespace caller;

constexpr std::size_t element_count = 1000;

const char* const source = R"(
  kernel void saxpy(global float* y, global const float* x, float a) {
    size_t i = get_global_id(0);
    y[i] = a * x[i] + y[i];
  }
  kernel void add(global int* data, int amount) { data[get_global_id(0)] += amount; }
  kernel void reverse_groups(global int* data, local int* scratch) {
    size_t i = get_local_id(0), last = get_local_size(0) - 1;
    scratch[i] = data[get_global_id(0)];
    barrier(CLK_LOCAL_MEM_FENCE);
    data[get_global_id(0)] = scratch[last - i];
  }
  kernel void pick(global int* out, int4 vector, uchar small, global int* nothing) {
    out[0] = vector.x; out[1] = vector.w; out[2] = small; out[3] = nothing == 0;
  }
  kernel void shape(global int* out) {
    if (get_global_id(0) + get_global_id(1) + get_global_id(2) != 0) return;
    for (uint i = 0; i < 3; ++i) { out[i] = (int)get_global_size(i); out[3 + i] = (int)get_local_size(i); }
  }
  kernel __attribute__((reqd_work_group_size(4, 2, 1))) void fixed(global int* out) {
    if (get_global_id(0) + get_global_id(1) == 0) out[0] = (int)get_local_size(1);
  }
  kernel void touch(global uchar* data) { data[0] = data[0]; }
)";

// Bytes of an element, told from the order of the type numbers.
std::size_t element_bytes(std::uint64_t type) {
  constexpr std::size_t scalars[] = {0, 1, 4, 1, 1, 2, 2, 4, 4, 8, 8, 2, 4, 8};
  constexpr std::size_t components[] = {1, 1, 2, 2, 4, 4, 8, 8, 2, 4, 8}; // of the vectors, five sizes each
  constexpr std::size_t widths[] = {2, 4, 4, 8, 16};                      // three take the room of four
  return type < 14 ? scalars[type] : components[(type - 14) / 5] * widths[(type - 14) % 5];
}

std::vector<std::int32_t> counted(std::size_t size, std::int32_t first = 0) {
  std::vector<std::int32_t> result(size);
  std::iota(result.begin(), result.end(), first);
  return result;
}

class road : public every_device {
protected:
  static void SetUpTestSuite() {
    every_device::SetUpTestSuite();
    for (const caller::device& one : all) {
      std::printf("%s\n", describe(one).c_str());
      programs.push_back(compile(one, source));
    }
  }
  static void TearDownTestSuite() {
    programs.clear();
    every_device::TearDownTestSuite();
  }
  template <class Body>
  static void on_each(Body body) {
    every_device::on_each(
        [&](const caller::device& one) { body(static_cast<std::size_t>(&one - all.data())); });
  }
  static kernel find(std::size_t i, const char* name) { return find_kernel(programs[i], name); }

  static inline std::vector<program> programs;
};

TEST_F(road, kernels_compute_what_the_host_does) {
  on_each([](std::size_t i) {
    std::vector<float> x(element_count), y(element_count, 1.0F), expected(element_count);
    for (std::size_t k = 0; k < element_count; ++k) {
      x[k] = static_cast<float>(k);
      expected[k] = 2.5F * x[k] + 1.0F; // exact in every rounding
    }
    const memory on_x = make(x), on_y = make(y);
    const float factor = 2.5F;
    EXPECT_EQ(
        launch(find(i, "saxpy"), {argument(on_y), argument(on_x), argument(factor)}, line(element_count, 8)),
        outcome());
    EXPECT_EQ(read<float>(on_y, element_count), expected);

    const memory numbers = make(counted(24));
    EXPECT_EQ(launch(find(i, "reverse_groups"), {argument(numbers), local_argument(TARVA_ABI_TYPE_INT32, 8)},
                     line(24, 8)),
              outcome());
    EXPECT_EQ(read<std::int32_t>(numbers, 8, 8), (std::vector<std::int32_t>{15, 14, 13, 12, 11, 10, 9, 8}));

    const std::array<std::int32_t, 4> vector{-1, 2, 3, 1 << 30};
    const std::uint8_t small = 200;
    EXPECT_EQ(launch(find(i, "pick"),
                     {argument(numbers), argument(vector, TARVA_ABI_TYPE_INT32V4), argument(small),
                      null_argument()},
                     line(1)),
              outcome());
    EXPECT_EQ(read<std::int32_t>(numbers, 4), (std::vector<std::int32_t>{-1, 1 << 30, 200, 1}));
  });
}

TEST_F(road, launch_types_reach_the_device) {
  on_each([](std::size_t i) {
    const auto shape = find(i, "shape");
    const memory seen = make(counted(6));
    const auto look = [&](const tarva_abi_launch_range_s& range) {
      EXPECT_EQ(launch(shape, {argument(seen)}, range), outcome());
      return read<std::int32_t>(seen, 6);
    };
    using sizes = std::vector<std::int32_t>;
    EXPECT_EQ(look({TARVA_ABI_LAUNCH_EXPLICIT, {3, 0, 0, 0, 8, 4, 2, 4, 2, 1}}), (sizes{8, 4, 2, 4, 2, 1}));
    EXPECT_EQ(look({TARVA_ABI_LAUNCH_GROUPS_SIZED, {2, 3, 8, 4, 1}}), (sizes{24, 12, 1, 8, 4, 1}));
    const auto groups = look({TARVA_ABI_LAUNCH_GROUPS, {3}});
    EXPECT_EQ(groups[0], 3 * groups[3]);
    const auto wanted = look({TARVA_ABI_LAUNCH_GLOBAL_SIZE, {2, 1, 1, 1}});
    EXPECT_EQ(wanted[0], wanted[3]) << "no smaller than a work-group";
    const auto units = look({TARVA_ABI_LAUNCH_GROUPS_PER_UNIT, {1}});
    EXPECT_EQ(look({TARVA_ABI_LAUNCH_GROUP_PER_UNIT_SIZED, {1, 9, 2, 1, 1}})[0] / 2, units[0] / units[3]);
    EXPECT_EQ(look({TARVA_ABI_LAUNCH_EXPLICIT, {1, 0, 0, 0, 6, 1, 1, 0, 0, 0}})[0], 6)
        << "the device chooses";
    EXPECT_EQ(launch(find(i, "fixed"), {argument(seen)}, {TARVA_ABI_LAUNCH_GLOBAL_SIZE, {2, 1, 1, 1}}),
              outcome());
    EXPECT_EQ(read<std::int32_t>(seen, 1)[0], 2);
  });
}

TEST_F(road, all_types_are_allocated_filled_copied_and_read) {
  on_each([](std::size_t i) {
    const auto touch = find(i, "touch");
    for (std::uint64_t type = 1; type <= 68; ++type)
      for (const bool on_device : {false, true}) {
        SCOPED_TRACE(::testing::Message()
                     << "type " << type << (on_device ? " on the device" : " on the host"));
        const std::size_t bytes = element_bytes(type);
        std::vector<unsigned char> content(8 * bytes), pattern(bytes), result(8 * bytes, 0xEE);
        std::iota(content.begin(), content.end(), static_cast<unsigned char>(1));
        std::iota(pattern.begin(), pattern.end(), static_cast<unsigned char>(100));
        const memory first = allocate(type, 8), second = allocate(type, 8);
        for (const memory* one : {&first, &second}) {
          ASSERT_EQ(write_raw(*one, 0, 8, content.data()), outcome());
          if (on_device) {
            ASSERT_EQ(launch(touch, {argument(*one)}, line(1)), outcome());
          }
        }
        EXPECT_EQ(fill(first, pattern.data(), 2, 3), outcome());
        EXPECT_EQ(copy(first, 1, second, 5, 3), outcome());
        EXPECT_EQ(read_raw(second, 0, 8, result.data()), outcome());
        auto expected = content;
        std::copy_n(content.begin() + static_cast<std::ptrdiff_t>(bytes), bytes,
                    expected.begin() + static_cast<std::ptrdiff_t>(5 * bytes));
        for (const std::size_t place : {6, 7})
          std::copy(pattern.begin(), pattern.end(),
                    expected.begin() + static_cast<std::ptrdiff_t>(place * bytes));
        EXPECT_EQ(result, expected);
      }
  });
}

TEST_F(road, an_object_is_used_on_all_devices_in_turn) {
  const memory numbers = make(counted(element_count)), copies = make(counted(element_count));
  const std::int32_t amount = 1;
  std::int32_t rounds = 0;
  for (; rounds < 3; ++rounds)
    on_each([&](std::size_t i) {
      EXPECT_EQ(launch(find(i, "add"), {argument(numbers), argument(amount)}, line(element_count, 4)),
                outcome());
      EXPECT_EQ(copy(numbers, 0, copies, 0, element_count), outcome()) << "from this device to another";
    });
  const auto expected = counted(element_count, rounds * static_cast<std::int32_t>(all.size()));
  EXPECT_EQ(read<std::int32_t>(numbers, element_count), expected);
  EXPECT_EQ(launch(find(0, "add"), {argument(copies), argument(amount)}, line(1)), outcome());
  EXPECT_EQ(read<std::int32_t>(copies, element_count - 1, 1),
            std::vector<std::int32_t>(expected.begin() + 1, expected.end()));
}

TEST_F(road, threads_work_on_all_devices_at_once) {
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < all.size(); ++i)
    threads.emplace_back([i] {
      const auto add = find(i, "add");
      const memory numbers = make(counted(64));
      const std::int32_t amount = 2;
      for (int round = 0; round < 20; ++round)
        must(launch(add, {argument(numbers), argument(amount)}, line(64, 8)));
      EXPECT_EQ(read<std::int32_t>(numbers, 64), counted(64, 40));
    });
  for (std::thread& one : threads)
    one.join();
}

} // namespace
