// What OpenCL refuses, below the real capability library, and what that spoils later. The sweeps show the rest.
#include "tests/scripted/scripted_test.h"

namespace scripted {

using namespace caller;
using op = qv::operation;

namespace {

class refusals_of_opencl : public each_version {};

TEST_P(refusals_of_opencl, spoil_no_second_kernel_of_a_name) {
  const auto program = compile(device(version()), source);
  const auto first = find_kernel(program, "add");
  fail_call(op::create_kernel, 1, -5);
  const auto second = find_kernel(program, "add");
  const memory numbers = make(counted(4));
  const std::int32_t one = 1;
  EXPECT_EQ(launch(second, {argument(numbers), argument(one)}, line(4)), outcome());
  EXPECT_EQ(read<std::int32_t>(numbers, 4), counted(4, 2));
}

INSTANTIATE_TEST_SUITE_P(scripted, refusals_of_opencl, ::testing::Range(1u, version_count + 1), version_name);

} // namespace
} // namespace scripted
