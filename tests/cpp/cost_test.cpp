// What the C++ layer adds to the calls, counted in instructions: each piece of work is done in C and in C++ over
// functions that do nothing, in a child process that is single-stepped.
#include "stub_interface.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <tarva.hpp>
#include <unistd.h>

namespace {

// What the work is done on: in C, too, a handle is kept somewhere and has to be loaded.
const tarva::memory<float> memory(64);
const tarva::kernel kernel(nullptr);
tarva_abi_memory_s* const raw_memory = memory.get();
tarva_abi_kernel_s* const raw_kernel = kernel.get();
float numbers[64];
volatile bool failed = false;

void check(tarva_abi_result result) {
  if (result != TARVA_ABI_OK)
    failed = true;
}
void finish(tarva_abi_future_s* future) {
  long code = 0;
  tarva_abi_error_s *failure = nullptr, *error = nullptr;
  check(tarva_abi_wait_future(nullptr, future, &code, &failure, &error));
  check(code);
}

[[gnu::noinline]] void launch_in_c(tarva_abi_kernel_s* const& kernel, tarva_abi_memory_s* const& memory,
                                   float factor) {
  const tarva_abi_launch_range_s range = {TARVA_ABI_LAUNCH_EXPLICIT, {1, 0, 0, 0, 64}};
  const tarva_abi_kernel_argument_s arguments[] = {
      {TARVA_ABI_ARGUMENT_VALUE, TARVA_ABI_TYPE_FLOAT, reinterpret_cast<std::uintptr_t>(&factor)},
      {TARVA_ABI_ARGUMENT_MEMORY, reinterpret_cast<std::uintptr_t>(memory), 0},
      {TARVA_ABI_ARGUMENT_LOCAL_MEMORY, TARVA_ABI_TYPE_FLOAT, 64}};
  tarva_abi_error_s* error = nullptr;
  check(tarva_abi_kernel_call(nullptr, kernel, arguments, 3, &range, &error));
}
[[gnu::noinline]] void launch_in_cpp(const tarva::kernel& kernel, const tarva::memory<float>& memory,
                                     float factor) {
  kernel(tarva::range::items(64), factor, memory, tarva::local<float>(64));
}

[[gnu::noinline]] void transfer_in_c(tarva_abi_memory_s* const& memory) {
  tarva_abi_future_s* future = nullptr;
  tarva_abi_error_s* error = nullptr;
  check(tarva_abi_async_write_memory(nullptr, memory, 0, 64, numbers, &future, &error));
  finish(future);
  check(tarva_abi_async_read_memory(nullptr, memory, 0, 64, numbers, &future, &error));
  finish(future);
}
[[gnu::noinline]] void transfer_in_cpp(const tarva::memory<float>& memory) {
  memory.write(numbers);
  memory.read(numbers);
}

[[gnu::noinline]] void fill_in_c(tarva_abi_memory_s* const& memory, float value) {
  tarva_abi_error_s* error = nullptr;
  check(tarva_abi_fill_memory(nullptr, memory, &value, 0, 64, &error));
}
[[gnu::noinline]] void fill_in_cpp(const tarva::memory<float>& memory, float value) {
  memory.fill(value);
}

// The instructions of `work`, or -1 if the machine does not let processes be stepped.
template <class Work>
long count_instructions(Work work) {
  const pid_t child = fork();
  if (child == 0) {
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
      _exit(1);
    work(); // once before, so that every function has been resolved
    raise(SIGSTOP);
    work();
    raise(SIGSTOP);
    _exit(failed ? 1 : 0);
  }
  int status = 0;
  long count = -1;
  waitpid(child, &status, 0);
  if (WIFSTOPPED(status)) {
    for (count = 0; ptrace(PTRACE_SINGLESTEP, child, nullptr, nullptr) == 0; ++count)
      if (waitpid(child, &status, 0) != child || !WIFSTOPPED(status) || WSTOPSIG(status) != SIGTRAP)
        break;
    ptrace(PTRACE_CONT, child, nullptr, nullptr);
    waitpid(child, &status, 0);
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? count : -1;
}

class cost : public ::testing::Test {
protected:
  // The two ways of one piece of work. The work may add `allowed` instructions.
  template <class InC, class InCpp>
  void compare(InC in_c, InCpp in_cpp, long allowed) {
#ifdef COST_IS_UNKNOWN
    GTEST_SKIP() << "only an optimised build without sanitizers tells what things cost";
#endif
    const long nothing = count_instructions([] {}), c = count_instructions(in_c),
               cpp = count_instructions(in_cpp);
    if (nothing < 0 || c < 0 || cpp < 0)
      GTEST_SKIP() << "processes cannot be single-stepped here";
    EXPECT_GT(c, nothing) << "the work was optimised away";
    EXPECT_LE(cpp, c + allowed) << c - nothing << " instructions in C";
    RecordProperty("added", static_cast<int>(cpp - c));
  }
};

TEST_F(cost, a_launch_adds_nothing) {
  compare([] { launch_in_c(raw_kernel, raw_memory, 2.0F); }, [] { launch_in_cpp(kernel, memory, 2.0F); }, 0);
}

// Each of the two transfers compares the numbers of elements.
TEST_F(cost, a_transfer_adds_the_check_of_its_size) {
  compare([] { transfer_in_c(raw_memory); }, [] { transfer_in_cpp(memory); }, 10);
}

TEST_F(cost, a_fill_adds_nothing) {
  compare([] { fill_in_c(raw_memory, 2.0F); }, [] { fill_in_cpp(memory, 2.0F); }, 0);
}

} // namespace
