// What OpenCL refuses, below the real capability library: no process ends, nothing is lost, and somebody is told. Each
// version is driven through the same conversation, once for each call that can be refused and each status.
#include "tests/scripted/scripted_test.h"

#include <cstdlib>

namespace scripted {

using namespace caller;
using op = qv::operation;

namespace {

const bool logs_errors =
    setenv("TARVA_LOG_TARGET", "console", 1) == 0 && setenv("TARVA_LOG_LEVEL", "error", 1) == 0;

using numbers = std::vector<std::int32_t>;
constexpr std::int32_t statuses[] = {-2, -4, -5, -6, -36, -9999};

struct refused_call {
  const char* what;
  op operation;
  int nth;
  std::uint32_t first_version;
  bool waits_fail;
  int failures; // of the requests of the conversation
};

// Each device has two queues, of which the second finished is the one in use.
const refused_call refused_calls[] = {
    {"write", op::enqueue_write_buffer, 1, 1, false, 1},
    {"second write", op::enqueue_write_buffer, 2, 1, false, 1},
    {"read", op::enqueue_read_buffer, 1, 1, false, 1},
    {"fill", op::enqueue_fill_buffer, 1, 3, false, 1},
    {"copy", op::enqueue_copy_buffer, 1, 1, false, 1},
    {"launch", op::enqueue_nd_range_kernel, 1, 1, false, 1},
    {"launch on the second device", op::enqueue_nd_range_kernel, 2, 1, false, 1},
    {"kernel for a launch", op::create_kernel, 1, 1, false, 1},
    {"argument of a launch", op::set_kernel_arg, 2, 1, false, 1},
    {"buffer", op::create_buffer, 1, 1, false, 1},
    {"status of a command", op::get_event_info, 1, 1, false, 1},
    {"finish", op::finish, 2, 1, false, 0},
    {"finish, and the wait for the events", op::finish, 2, 1, true, 1},
};

class refusals_of_opencl : public each_version {
protected:
  struct object {
    memory handle;
    numbers content;
  };

  // The content, which a first reading may have failed to get: then its future tells.
  numbers content_of(const object& from) {
    numbers found(from.content.size());
    const outcome ended = read_raw(from.handle, 0, found.size(), found.data());
    if (ended.code == TARVA_ABI_OK)
      return found;
    expect_reason(ended.message);
    fail_waits(0);
    return read<std::int32_t>(from.handle, found.size());
  }

  // One failure, told by OpenCL's own status where that has no words.
  void expect_reason(const std::string& told) {
    ++failures_;
    EXPECT_EQ(told.find("-9999") != std::string::npos, status_ == -9999) << told;
  }

  // A request either does all of its work and tells nobody, or does none of it and somebody is told; then it works when
  // it is made again.
  void expect_all_or_nothing(const char* what, object& changed, const numbers& after,
                             const std::function<outcome()>& request) {
    for (int attempt = 0; attempt < 2 && changed.content != after; ++attempt) {
      ::testing::internal::CaptureStderr();
      const outcome ended = request();
      fail_waits(0);
      const std::string log = ::testing::internal::GetCapturedStderr();
      const bool is_told = ended.code != TARVA_ABI_OK || log.find("[error]") != std::string::npos;
      const numbers found = content_of(changed);
      EXPECT_EQ(found, is_told ? changed.content : after) << what << ": " << log;
      if (is_told)
        expect_reason(log + ended.message);
      changed.content = found;
    }
    EXPECT_EQ(changed.content, after) << what;
  }

  void converse(const refused_call& row, std::int32_t status) {
    SCOPED_TRACE(::testing::Message() << row.what << ", " << status);
    const auto here = kernel(version(), "add"), there = kernel(version(), "add", role::second);
    object a{make(counted(4)), counted(4)}, b{make(counted(4, 10)), counted(4, 10)};
    const std::int32_t one = 1, seven = 7;
    const numbers given{50, 60};
    failures_ = 0;
    status_ = status;
    row.waits_fail ? fail_waits(-14) : fail_waits(0);
    fail_call(row.operation, row.nth, status);

    expect_all_or_nothing("a launch that brings content", a, {2, 3, 4, 5}, [&] {
      return launch(here, {argument(a.handle), argument(one)}, line(4));
    });
    expect_all_or_nothing("another", b, {11, 12, 13, 14}, [&] {
      return launch(here, {argument(b.handle), argument(one)}, line(4));
    });
    expect_all_or_nothing("a write", b, {50, 60, 13, 14},
                          [&] { return write_raw(b.handle, 0, 2, given.data()); });
    expect_all_or_nothing("a fill", b, {50, 60, 7, 7}, [&] { return fill(b.handle, &seven, 2, 2); });
    expect_all_or_nothing("a copy", b, {2, 3, 7, 7}, [&] { return copy(a.handle, 0, b.handle, 0, 2); });
    expect_all_or_nothing("a launch on the other device", a, {3, 4, 5, 6}, [&] {
      return launch(there, {argument(a.handle), argument(one)}, line(4));
    });
    EXPECT_EQ(failures_, row.failures);
    EXPECT_TRUE(no_failure_left());
  }

  int failures_ = 0;
  std::int32_t status_ = 0;
};

TEST_P(refusals_of_opencl, fail_one_request_each_and_lose_nothing) {
  ASSERT_TRUE(logs_errors);
  for (const refused_call& row : refused_calls)
    for (const std::int32_t status : statuses)
      if (version() >= row.first_version)
        converse(row, status);
}

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
