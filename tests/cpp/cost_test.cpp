// What the C++ layer adds to the calls, counted in instructions: each piece of work is done in C and in C++ over
// functions that do nothing, in a child process that is single-stepped.
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

// One piece of work, with a number that is not known when it is compiled.
using work = void (*)(float number);

// Its instructions, or -1 if the machine does not let processes be stepped.
long count_instructions(work piece) {
  const pid_t child = fork();
  if (child == 0) {
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
      _exit(1);
    piece(2.0F); // once before, so that every function has been resolved
    raise(SIGSTOP);
    piece(2.0F);
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

// Compares the two ways of one piece of work. C++ may add `allowed` instructions.
void compare(work in_c, work in_cpp, long allowed) {
#ifdef COST_IS_UNKNOWN
  GTEST_SKIP() << "only an optimised build without sanitizers tells what things cost";
#endif
  const long nothing = count_instructions([](float) {}), c = count_instructions(in_c),
             cpp = count_instructions(in_cpp);
  if (nothing < 0 || c < 0 || cpp < 0)
    GTEST_SKIP() << "processes cannot be single-stepped here";
  EXPECT_GT(c, nothing) << "the work was optimised away";
  EXPECT_LE(cpp, c + allowed) << c - nothing << " instructions in C";
  ::testing::Test::RecordProperty("added", static_cast<int>(cpp - c));
}

TEST(cost, a_launch_adds_nothing) {
  const work in_c = [](float number) {
    const tarva_abi_launch_range_s range = {TARVA_ABI_LAUNCH_EXPLICIT, {1, 0, 0, 0, 64}};
    const tarva_abi_kernel_argument_s arguments[] = {
        {TARVA_ABI_ARGUMENT_VALUE, TARVA_ABI_TYPE_FLOAT, reinterpret_cast<std::uintptr_t>(&number)},
        {TARVA_ABI_ARGUMENT_MEMORY, reinterpret_cast<std::uintptr_t>(raw_memory), 0},
        {TARVA_ABI_ARGUMENT_LOCAL_MEMORY, TARVA_ABI_TYPE_FLOAT, 64}};
    tarva_abi_error_s* error = nullptr;
    check(tarva_abi_kernel_call(nullptr, raw_kernel, arguments, 3, &range, &error));
  };
  compare(
      in_c, [](float number) { kernel(tarva::range::items(64), number, memory, tarva::local<float>(64)); },
      0);
}

// Each of the two transfers compares the numbers of elements.
TEST(cost, a_transfer_adds_the_check_of_its_size) {
  const work in_c = [](float) {
    tarva_abi_future_s* future = nullptr;
    tarva_abi_error_s* error = nullptr;
    check(tarva_abi_async_write_memory(nullptr, raw_memory, 0, 64, numbers, &future, &error));
    finish(future);
    check(tarva_abi_async_read_memory(nullptr, raw_memory, 0, 64, numbers, &future, &error));
    finish(future);
  };
  const work in_cpp = [](float) {
    memory.write(numbers);
    memory.read(numbers);
  };
  compare(in_c, in_cpp, 6);
}

} // namespace
