// Content on its way between the real devices that the environment offers.
#include "tests/device/every_device.h"

#include <numeric>

namespace {

using namespace caller;
using content = std::vector<unsigned char>;

const char* const source = R"(
  kernel void bump(global uchar* data) { data[0]++; }
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

} // namespace
