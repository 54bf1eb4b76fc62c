// Content on its way between the real devices that the environment offers, and when their memory runs out.
#include "tests/device/every_device.h"

#include <numeric>

namespace {

using namespace caller;
using content = std::vector<unsigned char>;

const char* const source = R"(
  kernel void bump(global uchar* data) { data[0]++; }
  kernel void bump_three(global uchar* a, global uchar* b, global uchar* c) { a[0]++; b[0]++; c[0]++; }
)";

class movement : public ::testing::Test {
protected:
  kernel find(std::size_t i, const char* name) { return find_kernel(programs.at(i), name); }
  static content counted(std::size_t size, int first) {
    content result(size);
    std::iota(result.begin(), result.end(), static_cast<unsigned char>(first));
    return result;
  }

  std::vector<caller::device> all = devices();
  std::vector<program> programs = [this] {
    std::vector<program> made;
    for (const caller::device& one : all)
      made.push_back(compile(one, source));
    return made;
  }();
};

struct element {
  tarva_abi_data_type type;
  std::size_t bytes;
};

TEST_F(movement, content_survives_the_way_from_each_device_to_each_other) {
  constexpr std::size_t count = 37;
  for (const auto& [type, bytes] : {element{TARVA_ABI_TYPE_UINT8, 1}, element{TARVA_ABI_TYPE_INT16V3, 8},
                                    element{TARVA_ABI_TYPE_INT64V16, 128}})
    for (std::size_t from = 0; from < all.size(); ++from)
      for (std::size_t to = 0; to < all.size(); ++to) {
        SCOPED_TRACE(describe(all[from]) + " to " + describe(all[to]) + ", element of " +
                     std::to_string(bytes));
        const auto here = find(from, "bump"), there = find(to, "bump");
        const memory moved = allocate(type, count), target = allocate(type, count);
        auto first = counted(count * bytes, 1), second = counted(count * bytes, 101);
        must(write_raw(moved, 0, count, first.data()));
        must(write_raw(target, 0, count, second.data()));
        must(launch(here, {argument(moved)}, line(1)));
        must(launch(there, {argument(target)}, line(1)));
        // A copy leaves both objects where they are, a launch does not.
        must(copy(moved, 1, target, 5, 30));
        must(launch(there, {argument(moved)}, line(1)));
        first[0] = static_cast<unsigned char>(first[0] + 2);
        second[0] = static_cast<unsigned char>(second[0] + 1);
        std::copy_n(first.begin() + static_cast<std::ptrdiff_t>(bytes), 30 * bytes,
                    second.begin() + static_cast<std::ptrdiff_t>(5 * bytes));
        content result(count * bytes);
        must(read_raw(moved, 0, count, result.data()));
        EXPECT_EQ(result, first);
        must(read_raw(target, 0, count, result.data()));
        EXPECT_EQ(result, second);
      }
}

// Large objects, of which only the ends are looked at: what the host never touches costs it nothing.
class exhaustion : public movement {
protected:
  struct large_object {
    memory object;
    std::uint64_t size;
  };
  static large_object make_large(std::uint64_t size, unsigned char mark) {
    large_object made{allocate(TARVA_ABI_TYPE_UINT8, size), size};
    for (const std::uint64_t place : {std::uint64_t{0}, size - 1})
      must(write_raw(made.object, place, 1, &mark));
    return made;
  }
  static void expect_ends(const large_object& of, int first, int last) {
    std::array<unsigned char, 2> ends{};
    must(read_raw(of.object, 0, 1, &ends[0]));
    must(read_raw(of.object, of.size - 1, 1, &ends[1]));
    EXPECT_EQ(ends[0], first);
    EXPECT_EQ(ends[1], last);
  }
  std::uint64_t limit(const char* key) const {
    const auto opencl = child(root<tarva_abi_get_device_root_property>(all.at(0)), "OPENCL");
    return *static_cast<const std::uint64_t*>(child(opencl, key)->data);
  }
};

// The limit that OpenCL itself keeps: what it grants and has no room for later ends the process within it.
TEST_F(exhaustion, of_the_device_in_the_second_of_three_arguments_is_survived) {
  const std::uint64_t largest = limit("CL_DEVICE_MAX_MEM_ALLOC_SIZE");
  if (largest > std::uint64_t{1} << 28)
    GTEST_SKIP() << "the device takes too large objects";
  const auto three = find(0, "bump_three");
  auto a = make_large(64, 1), b = make_large(largest + 1, 2), c = make_large(64, 3);
  EXPECT_EQ(launch(three, {argument(a.object), argument(b.object), argument(c.object)}, line(1)), outcome());
  expect_ends(a, 1, 1);
  expect_ends(b, 2, 2);
  expect_ends(c, 3, 3);
  b = make_large(64, 2);
  EXPECT_EQ(launch(three, {argument(a.object), argument(b.object), argument(c.object)}, line(1)), outcome());
  expect_ends(a, 2, 1);
  expect_ends(b, 3, 2);
  expect_ends(c, 4, 3);
}

} // namespace
