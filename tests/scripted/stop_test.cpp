// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The stop of the library while others are at work, and threads that end the process or are ended. Each case runs in a process
// of its own, with its own machine.
#include "base/end_of_process.h"
#include "tests/scripted/one_process.h"

#include <atomic>
#include <csignal>
#include <dlfcn.h>
#include <pthread.h>
#include <semaphore>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace scripted {

namespace {

using oryn::tarva::library::grace_period_of_long_calls;

tarva_abi_memory_s* survivor = nullptr;

void call_after_the_stop() {
  // Registered before the library starts, so that it runs after its exit handler.
  std::atexit([] {
    tarva_abi_device_array_s* array = nullptr;
    auto* failure = reinterpret_cast<tarva_abi_error_s*>(&array);
    if (tarva_abi_get_devices(nullptr, &array, &failure) != TARVA_ABI_UNKNOWN_FAILURE || failure != nullptr)
      _exit(2);
    tarva_abi_release_memory(nullptr, survivor);
  });
  survivor = make(counted(4)).release();
}

// Threads that launch until they are refused; the work under way goes with the process.
std::atomic<int> at_work = 0;
void start_workers(int count) {
  check_at_exit(false);
  static const auto& all = *new auto(devices());
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i)
    std::thread([i] {
      try {
        const auto add = find_kernel(compile(all[i % 2], source), "add");
        const memory numbers = make(counted(4));
        const std::int32_t amount = 1;
        ++at_work;
        while (launch(add, {argument(numbers), argument(amount)}, line(4)).code == TARVA_ABI_OK)
          ;
        std::this_thread::sleep_for(std::chrono::seconds(60)); // nothing more is to be had from the library
      } catch (const std::exception&) {
        // A thread that comes late is refused.
      }
    }).detach();
}

void exit_while_others_work() {
  start_workers(3);
  while (at_work < 3)
    std::this_thread::yield();
  // New calls must not use up the time that the end waits for those inside.
  alarm(static_cast<unsigned>(grace_period_of_long_calls.count() / 1000 - 2));
}

void call_in_a_forked_child() {
  log_to_console("error");
  const auto all = devices();
  memory numbers = make(counted(4));
  const pid_t child = fork();
  if (child == 0) {
    alarm(30);
    std::int32_t value = 0;
    const outcome ended = read_raw(numbers, 0, 1, &value);
    numbers.reset();
    _exit(ended.code == TARVA_ABI_UNKNOWN_FAILURE ? 0 : 2);
  }
  int status = -1;
  demand(waitpid(child, &status, 0) == child && status == 0 && read<std::int32_t>(numbers, 4) == counted(4));
}

TEST(stop, late_and_concurrent_calls_survive_the_stop) {
  expect_quiet({CASE(call_after_the_stop), CASE(exit_while_others_work)});
  EXPECT_EXIT(run(call_in_a_forked_child), ExitedWithCode(0),
              ::testing::MatchesRegex(
                  "\\[process [0-9]+\\] \\[tarva\\] \\[error\\] This process was forked [^\n]*\n"));
}

// The threads of a case take turns; none comes back.
std::atomic<int> turn = 0;
void await_turn(int wanted) {
  while (turn < wanted)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}
void pause(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

// The second half of the move comes long after the exit has begun, on the device that is asked to stop first.
void exit_in_the_middle_of_a_move() {
  static outcome ended{-1};
  static std::vector<std::int32_t> seen;
  static std::thread moving;
  std::atexit([] { // when the library has stopped
    moving.join();
    if (ended != outcome() || seen != counted(4))
      _exit(2);
  });
  log_to_console("error");
  static const auto& all = *new auto(devices());
  static const auto& numbers = *new memory(used_on(all[1]));
  static const auto& flag = *new auto(find_kernel(compile(all[0], source), "flag"));
  set_kernel("flag", [](const kernel_run& now) {
    for (std::size_t i = 0; i < 4; ++i)
      seen.push_back(now.get<std::int32_t>(0, i));
  });
  std::atexit([] { turn = 2; }); // before it stops
  before_call(op::finish, 1, [] {
    turn = 1;
    await_turn(2);
    pause(300);
  });
  before_call(op::enqueue_write_buffer, 1, [] { pause(300); });
  moving = std::thread([] { ended = launch(flag, {argument(numbers)}, line(1)); });
  await_turn(1);
}

// The first device is asked to stop in the middle of a launch that got to it when the others had ended their work, and
// other callers stand behind. To that end the library is held up until it waits for callers no longer, and where it
// tells that it stops.
void exit_with_work_left() {
  static outcome first{-1}, second{-1};
  static std::vector<std::int32_t> contents[] = {{0, 0, 0, 0}, {0, 0, 0, 0}};
  static tarva_abi_future_s* futures[2]; // where leak checkers see them: they can no longer be given up
  static tarva_abi_error_s* errors[2];
  static std::atomic<int> answered = 0;
  static std::vector<std::thread> threads;
  std::atexit([] {
    for (std::thread& each : threads)
      each.join();
    if (first != outcome() || second != outcome() || answered != 2)
      _exit(2);
  });
  log_to_console("info");
  static const auto& all = *new auto(devices());
  static const auto& blocking = *new auto(find_kernel(compile(all[1], source), "flag"));
  static const auto& left = *new auto(find_kernel(compile(all[0], source), "flag"));
  static const auto& shared = *new memory(make(counted(4))); // so that each waits for the one before
  must(launch(blocking, {argument(shared)}, line(1)));
  set_kernel("flag", [](const kernel_run&) {
    turn = 1;
    await_turn(3);
  });
  std::atexit([] { turn = 2; });
  threads.emplace_back([] { first = launch(blocking, {argument(shared)}, line(1)); });
  await_turn(1);
  before_call(op::enqueue_write_buffer, 1, [] {
    turn = 4;
    await_turn(5);
  });
  threads.emplace_back([] { second = launch(left, {argument(shared)}, line(1)); });
  // A read that is not refused leaves a future that nobody can ask any more, and all of the content or nothing.
  for (std::size_t i = 0; i < 2; ++i)
    threads.emplace_back([i] {
      const auto read = tarva_abi_async_read_memory(nullptr, shared.get(), 0, 4, contents[i].data(),
                                                    &futures[i], &errors[i]);
      long code = 0;
      const auto waited = tarva_abi_wait_future(nullptr, futures[i], &code, nullptr, nullptr);
      const bool is_complete = contents[i] == counted(4),
                 is_untouched = contents[i] == std::vector<std::int32_t>(4);
      answered += waited == TARVA_ABI_UNKNOWN_FAILURE &&
                  (read == TARVA_ABI_OK ? is_complete || is_untouched
                                        : read == TARVA_ABI_LOGIC_FAILURE && is_untouched);
    });
  threads.emplace_back([] {
    await_turn(2);
    pause(static_cast<int>(grace_period_of_long_calls.count()) + 1000); // the library waits for the devices
    flockfile(stderr);
    turn = 3;
    await_turn(4);
    funlockfile(stderr);
    pause(1000); // it stops the first device
    turn = 5;
  });
  pause(1000); // all callers are inside
}

TEST(stop, a_stop_ends_what_has_begun_and_answers_who_is_left) {
  expect_quiet({CASE(exit_in_the_middle_of_a_move)});
  EXPECT_EXIT(run(exit_with_work_left), ExitedWithCode(0),
              lines("Releasing device 1 of 2.|"
                    "] [tarva] [warning] About to shutdown work dispatcher thread, but work remains.|"
                    "] [tarva] [error] |kernel: {work_dim=1|"
                    "The work dispatcher was shut down before the command could be run."));
}

// A compiler makes an object for itself when it is first used, which therefore goes before the library stops. At the
// end it is at work for a thread that the host waits for in a handler of its own.
void exit_in_the_middle_of_a_compilation() {
  static const auto& all = *new auto(devices());
  static std::atomic<bool> is_gone = false;
  static std::thread compiling;
  before_call(op::build_program, 1, [] {
    std::atexit([] {
      is_gone = true;
      compiling.join();
      if (devices().size() != 2)
        _exit(3);
    });
  });
  compile(all[0], source);
  before_call(op::build_program, 1, [] {
    turn = 1;
    await_turn(2);
    pause(300);
    if (is_gone)
      _exit(2);
  });
  compiling = std::thread([] {
    compile(all[0], source);
    devices();
  });
  await_turn(1);
  std::atexit([] { turn = 2; });
}

TEST(stop, a_compiler_outlives_the_calls_that_use_it) {
  expect_quiet({CASE(exit_in_the_middle_of_a_compilation)});
}

// The others sleep inside the library, or are on their way into it or out of it.
[[noreturn]] void fail_among_others(op operation) {
  use_two_devices();
  log_to_console("critical");
  fail_call(operation, 200, -5);
  start_workers(8);
  std::this_thread::sleep_for(std::chrono::seconds(30));
  _exit(2);
}

// As a compiler's handler of fatal errors may do.
void end_the_process_on_a_worker() {
  check_at_exit(false); // the work under way goes with the process
  const auto kernel = find_kernel(compile(devices()[0], source), "flag");
  const memory numbers = make(counted(4));
  before_call(op::finish, 1, [] { std::exit(3); });
  must(launch(kernel, {argument(numbers)}, line(1)));
}

std::atomic<bool> has_no_threads = false, will_have_no_threads = false;

// A handler of the host waits for a caller that is kept asleep.
void fail_while_the_host_waits() {
  check_at_exit(false);
  log_to_console("critical");
  static std::thread inside;
  std::atexit([] { inside.join(); });
  std::fputs("written before", fdopen(dup(STDERR_FILENO), "w"));
  alarm(30);
  used_on(devices()[0]);
  fail_call(op::finish, 1, -5);
  before_call(op::finish, 1, [] { has_no_threads = will_have_no_threads.load(); });
  inside = std::thread([] {
    await_turn(1); // when there is something to join
    used_on(devices()[0]);
  });
  turn = 1;
  pause(60000);
}

TEST(stop, a_worker_that_cannot_go_on_ends_the_process_whoever_waits) {
  for (const op operation : {op::enqueue_nd_range_kernel, op::finish})
    EXPECT_EXIT(
        fail_among_others(operation), ExitedWithCode(1),
        "\\[critical\\] \\[device dispatcher\\] worker thread encountered an exception.  Aborting program. "
        "Exception: Failed to allocate resources on the device.\n");
  EXPECT_EXIT(run(fail_while_the_host_waits), ExitedWithCode(1), lines("Aborting program.|written before"));
#ifndef TARVA_SANITIZED // a sanitizer makes threads its own way
  will_have_no_threads = true;
  EXPECT_EXIT(run(fail_while_the_host_waits), ExitedWithCode(1), "Aborting program.");
#endif
}

// The handler of a signal gives a handle up and ends the process, all in the middle of a launch of its thread.
[[noreturn, maybe_unused]] void exit_in_the_middle_of_a_launch() {
  check_at_exit(false); // the caller inside never gets to give its handles up
  static const auto& all = *new auto(devices());
  static const auto& numbers = *new memory(make(counted(1)));
  static const pthread_t launching = pthread_self();
  std::signal(SIGUSR1, [](int) {
    tarva_abi_release_memory(nullptr, numbers.get());
    std::exit(7);
  });
  set_kernel("flag", [](const kernel_run&) { pthread_kill(launching, SIGUSR1); });
  launch(find_kernel(compile(all[0], source), "flag"), {argument(numbers)}, line(1));
  std::this_thread::sleep_for(std::chrono::seconds(60));
  _exit(2);
}

// A thread that is cancelled in the middle of a call comes to the end of it, and no further.
void cancel_a_call() {
  static std::binary_semaphore inside(0), cancelled(0);
  static std::atomic<bool> ended = false;
  static const program made = compile(devices()[0], source);
  before_call(op::create_kernel, 1, [] {
    inside.release();
    cancelled.acquire();
    pthread_testcancel();
  });
  // The system takes this frame down without telling the address sanitizer, which therefore must not mark it.
  const auto call_once = [](void*) __attribute__((no_sanitize_address)) {
    find_kernel(made, "flag");
    ended = true;
    pthread_testcancel();
    return static_cast<void*>(nullptr);
  };
  pthread_t calling{};
  demand(pthread_create(&calling, nullptr, call_once, nullptr) == 0);
  inside.acquire();
  pthread_cancel(calling);
  cancelled.release();
  void* result = nullptr;
  pthread_join(calling, &result);
  demand(ended && result == PTHREAD_CANCELED);
}

TEST(stop, survives_threads_that_end_the_process_or_are_ended) {
#ifndef __SANITIZE_THREAD__ // which takes any memory given back in a signal's handler for a fault
  EXPECT_EXIT(exit_in_the_middle_of_a_launch(), ExitedWithCode(7), ::testing::Eq(""));
#endif
  EXPECT_EXIT(run(end_the_process_on_a_worker), ExitedWithCode(3),
              ::testing::Eq("")); // without waiting for it
  expect_quiet({CASE(cancel_a_call)});
}

} // namespace

} // namespace scripted

#ifndef TARVA_SANITIZED // a sanitizer makes threads its own way
// In place of that of the system, for the library, too.
extern "C" [[gnu::visibility("default")]] int pthread_create(pthread_t* made,
                                                             const pthread_attr_t* attributes,
                                                             void* (*body)(void*), void* given) noexcept {
  static const auto create = reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
  return scripted::has_no_threads ? EAGAIN : create(made, attributes, body, given);
}
#endif
