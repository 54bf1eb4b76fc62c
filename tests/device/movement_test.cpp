// Content on its way between the real devices that the environment offers, and when their memory runs out.
#include "tests/device/every_device.h"
#include "tests/error_of.h"

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

TEST_F(movement, content_survives_the_way_from_each_device_to_each_other) {
  constexpr std::size_t count = 37;
  for (const auto& [type, bytes] :
       {std::pair{TARVA_ABI_TYPE_UINT8, 1}, {TARVA_ABI_TYPE_INT16V3, 8}, {TARVA_ABI_TYPE_INT64V16, 128}})
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
        std::copy_n(first.begin() + bytes, 30 * bytes, second.begin() + 5 * bytes);
        content result(count * bytes);
        must(read_raw(moved, 0, count, result.data()));
        EXPECT_EQ(result, first);
        must(read_raw(target, 0, count, result.data()));
        EXPECT_EQ(result, second);
      }
}

class exhaustion : public movement {};

// The limit that OpenCL itself keeps: what it grants and has no room for later ends the process within it. Of large
// objects only the ends are looked at: what the host never touches costs it nothing.
TEST_F(exhaustion, of_the_device_by_the_second_of_three_arguments_is_refused) {
  const auto largest = all.at(0).properties()["OPENCL"]["CL_DEVICE_MAX_MEM_ALLOC_SIZE"].get<std::uint64_t>();
  if (largest > std::uint64_t{1} << 28)
    GTEST_SKIP() << "the device takes too large objects";
  std::array<tarva::memory<unsigned char>, 3> objects;
  const auto set_object = [&](std::size_t i, std::uint64_t size) {
    objects[i] = tarva::memory<unsigned char>(size);
    for (const std::uint64_t place : {std::uint64_t{0}, size - 1})
      objects[i].part(place, 1).write(content{static_cast<unsigned char>(i + 1)});
  };
  const auto see_ends = [&] {
    content ends;
    for (const auto& one : objects)
      for (const std::uint64_t place : {std::uint64_t{0}, one.size() - 1})
        ends.push_back(one.part(place, 1).read()[0]);
    return ends;
  };
  const auto bump = [&] {
    find(0, "bump_three")(tarva::range::items(1), objects[0], objects[1], objects[2]);
  };
  set_object(0, 64);
  set_object(1, largest + 1);
  set_object(2, 64);
  EXPECT_EQ(error_of<tarva::logic_failure>(bump),
            "Argument 1 of kernel bump_three is a memory object of " + std::to_string(largest + 1) +
                " bytes, but the device can allocate at most " + std::to_string(largest) + " bytes for one.");
  EXPECT_EQ(see_ends(), (content{1, 1, 2, 2, 3, 3}));
  set_object(1, 64);
  bump();
  EXPECT_EQ(see_ends(), (content{2, 1, 3, 2, 4, 3}));
}

} // namespace
