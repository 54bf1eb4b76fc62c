// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The whole road on every OpenCL device that the environment offers, under each version it is offered as: the
// same kernels and the same results everywhere. Without a device it is skipped, by status 77, unless there
// has to be one.
#include "tests/device/every_device.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <numeric>

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
  kernel void touch(global uchar* data) { data[0] = data[0]; }
  kernel void mark(global uchar* data, ulong place, uchar with) { data[place] = with; }
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

using ints = tarva::memory<std::int32_t>;
using tarva::range;

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
        [&](const caller::device& one) { body(programs[static_cast<std::size_t>(&one - all.data())]); });
  }

  static inline std::vector<program> programs;
};

TEST_F(road, kernels_compute_what_the_host_does) {
  on_each([](const program& of) {
    std::vector<float> x(element_count), y(element_count, 1.0F), expected(element_count);
    for (std::size_t k = 0; k < element_count; ++k) {
      x[k] = static_cast<float>(k);
      expected[k] = 2.5F * x[k] + 1.0F; // exact in every rounding
    }
    const tarva::memory<float> on_x(x), on_y(y);
    of.kernel("saxpy")(range::items(element_count).in_groups_of(8), on_y, on_x, 2.5F);
    EXPECT_EQ(on_y.read(), expected);

    const ints numbers(counted(24));
    of.kernel("reverse_groups")(range::items(24).in_groups_of(8), numbers, tarva::local<std::int32_t>(8));
    EXPECT_EQ(numbers.part(8, 8).read(), (std::vector<std::int32_t>{15, 14, 13, 12, 11, 10, 9, 8}));

    of.kernel("pick")(range::items(1), numbers, tarva::int4{-1, 2, 3, 1 << 30}, std::uint8_t{200}, nullptr);
    EXPECT_EQ(numbers.part(0, 4).read(), (std::vector<std::int32_t>{-1, 1 << 30, 200, 1}));
  });
}

TEST_F(road, all_types_are_allocated_filled_copied_and_read) {
  on_each([](const program& of) {
    const auto touch = of.kernel("touch");
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
  const ints numbers(counted(element_count)), copies(counted(element_count));
  std::int32_t rounds = 0;
  for (; rounds < 3; ++rounds)
    on_each([&](const program& of) {
      of.kernel("add")(range::items(element_count).in_groups_of(4), numbers, 1);
      numbers.copy_to(copies); // from this device to another
      of.kernel("add")(range::items(1), copies, 0);
    });
  const auto expected = counted(element_count, rounds * static_cast<std::int32_t>(all.size()));
  EXPECT_EQ(numbers.read(), expected);
  EXPECT_EQ(copies.read(), expected);
}

// Numbers of which not every device has arithmetic: exact results where it has, else words of the compiler, which may
// take them all the same if they are narrower than those it has.
template <class T>
void expect_optional_arithmetic(const caller::device& on, const std::string& type,
                                const std::string& extension) {
  SCOPED_TRACE(type);
  const auto extensions = on.properties()["OPENCL"]["CL_DEVICE_EXTENSIONS"].template get_all<std::string>();
  const bool has = std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
  const auto built =
      on.try_load(tarva::ir::source_1_0,
                  tarva::as_bytes((has ? "#pragma OPENCL EXTENSION " + extension + " : enable\n" : "") +
                                  "kernel void scale(global " + type + "* data, " + type +
                                  " by) { data[get_global_id(0)] *= by; }"));
  if (!has) {
    EXPECT_TRUE(built.success ? type == "half" : built.log.find(type) != std::string::npos) << built.log;
    return;
  }
  ASSERT_TRUE(built.success) << built.log;
  const tarva::memory<T> numbers(std::vector<T>{T(0.5F), T(-3.0F)});
  built.made.kernel("scale")(range::items(2), numbers, T(1.5F));
  EXPECT_TRUE(static_cast<float>(numbers.read()[0]) == 0.75F &&
              static_cast<float>(numbers.read()[1]) == -4.5F);
}

TEST_F(road, half_and_double_compute_where_the_device_has_them) {
  every_device::on_each([](const caller::device& one) {
    expect_optional_arithmetic<tarva::half>(one, "half", "cl_khr_fp16");
    expect_optional_arithmetic<double>(one, "double", "cl_khr_fp64");
  });
}

// Offsets that 32 bits cannot hold: in a kernel, a fill, a copy and a read; and sizes, in a move of all of it, for which there
// has to be memory and TARVA_TEST_LARGE has to ask.
TEST_F(road, objects_above_4_gib_are_reached_to_their_end) {
  constexpr std::uint64_t edge = std::uint64_t{1} << 32, size = edge + 64;
  std::ifstream memory_of_machine("/proc/meminfo");
  std::string word;
  std::uint64_t free_kib = 0;
  while (memory_of_machine >> word && word != "MemAvailable:") {
  }
  memory_of_machine >> free_kib;
  if (free_kib >> 20 < 12)
    GTEST_SKIP() << "12 GiB of memory have to be free, not " << (free_kib >> 20);
  std::size_t tried = 0;
  on_each([&](const program& of) {
    const caller::device& on = all[static_cast<std::size_t>(&of - programs.data())];
    if (on.properties()["OPENCL"]["CL_DEVICE_MAX_MEM_ALLOC_SIZE"].get<std::uint64_t>() < size)
      return;
    using bytes = std::vector<std::uint8_t>;
    const tarva::memory<std::uint8_t> small(bytes(4));
    tarva::memory<std::uint8_t> large(size);
    const auto mark = of.kernel("mark");
    for (const std::uint64_t place : {std::uint64_t{1}, edge + 1})
      mark(range::items(1), large, place, static_cast<std::uint8_t>(place == 1 ? 3 : 7));
    large.part(edge + 2, 2).fill(9);
    large.part(edge + 1, 3).copy_to(small.part(0, 3));
    EXPECT_EQ(small.read(), (bytes{7, 9, 9, 0}));
    EXPECT_EQ(large.part(edge + 1, 2).read(), (bytes{7, 9}));
    EXPECT_EQ(large.part(1, 1).read(), bytes{3});
    if (tried++ != 0 || std::getenv("TARVA_TEST_LARGE") == nullptr)
      return;
    large = {}; // there may not be room for two
    large = tarva::memory<std::uint8_t>(size);
    large.part(edge + 1, 2).write(bytes{5, 6});
    mark(range::items(1), large, edge + 2, std::uint8_t{8});
    EXPECT_EQ(large.part(edge + 1, 2).read(), (bytes{5, 8}));
  });
  if (tried == 0)
    GTEST_SKIP() << "no device here allocates as much for one object";
}

} // namespace
