// A worker that cannot go on ends the process with status 1, whatever the other threads are doing.
#include "tests/scripted/scripted_test.h"

#include <unistd.h>

namespace scripted {

using namespace caller;
using op = qv::operation;

namespace {

// Threads that sleep inside the library, or are on their way into it or out of it.
[[noreturn]] void fail_among_others(op operation) {
  set_devices({{"one", {3}}, {"two", {5}}});
  check_at_exit(false); // the work under way goes with the process
  setenv("TARVA_LOG_TARGET", "console", 1);
  setenv("TARVA_LOG_LEVEL", "critical", 1);
  const auto all = devices();
  fail_call(operation, 200, -5);
  for (std::size_t i = 0; i < 8; ++i)
    std::thread([&all, i] {
      try {
        const auto add = find_kernel(compile(all[i % 2], SOURCE), "add");
        const memory numbers = make(counted(4));
        const std::int32_t amount = 1;
        while (launch(add, {argument(numbers), argument(amount)}, line(4)).code == TARVA_ABI_OK)
          ;
      } catch (const std::exception&) {
        // A thread that comes late is refused.
      }
      std::this_thread::sleep_for(std::chrono::seconds(60)); // nothing more is to be had from the library
    }).detach();
  std::this_thread::sleep_for(std::chrono::seconds(30));
  _exit(2);
}

TEST(worker_failure, ends_the_process_though_others_sleep_in_the_library) {
  for (const op operation : {op::enqueue_nd_range_kernel, op::finish})
    EXPECT_EXIT(
        fail_among_others(operation), ::testing::ExitedWithCode(1),
        "\\[critical\\] \\[device dispatcher\\] worker thread encountered an exception.  Aborting program. "
        "Exception: Failed to allocate resources on the device.\n$");
}

} // namespace

} // namespace scripted
