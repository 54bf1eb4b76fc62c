// The boundary under stress. Cases that need a start or an end of their own run in processes of their own.
#include "tests/scripted/scripted_test.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <pthread.h>
#include <unistd.h>

namespace scripted {

using namespace caller;

namespace {

void log_to_console() {
  setenv("TARVA_LOG_TARGET", "console", 1);
  setenv("TARVA_LOG_LEVEL", "info", 1);
}

std::size_t occurrences(const std::string& text, const std::string& of) {
  std::size_t result = 0;
  for (std::size_t at = text.find(of); at != std::string::npos; at = text.find(of, at + 1))
    ++result;
  return result;
}

[[noreturn]] void start_with_banner() {
  log_to_console();
  setenv("TARVA_LUDICROUS_SPEED_GO", "", 1);
  ::testing::internal::CaptureStderr();
  devices();
  const std::string dashes(59, '-'), pluses(59, '+'),
      bars = "|||      |||      |||      |||      |||      |||      |||  ";
  const std::string stripe =
      dashes + "\n" + pluses + "\n" + bars + "\n" + dashes + "\n" + bars + "\n" + pluses + "\n";
  const std::string lines = ::testing::internal::GetCapturedStderr();
  const std::size_t begin =
      lines.find("] [tarva] [info] \n\n" + stripe + stripe + stripe +
                 "\n\nTARVA HAS GONE PLAID!\n\nExperimental features are enabled for speed.\n\n[");
  const bool in_place = begin != std::string::npos && lines.find("Begin initialization of TARVA.") < begin &&
                        begin < lines.find("Detected 3 OpenCL 1.0 devices.");
  std::exit(in_place ? 0 : 2);
}

[[noreturn]] void start_from_many_threads() {
  constexpr int THREADS = 32;
  log_to_console();
  ::testing::internal::CaptureStderr();
  std::atomic<int> ready = 0, good = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < THREADS; ++i)
    threads.emplace_back([&] {
      for (++ready; ready < THREADS;)
        ;
      if (devices().size() == 3 * VERSION_COUNT)
        ++good;
    });
  for (std::thread& one : threads)
    one.join();
  const std::string lines = ::testing::internal::GetCapturedStderr();
  const bool once =
      occurrences(lines, "Starting TARVA.") == 1 && occurrences(lines, "Initializing device ") == 18;
  std::exit(good == THREADS && once ? 0 : 2);
}

TEST(boundary, a_start_has_its_banner_and_happens_once) {
  EXPECT_EXIT(start_with_banner(), ::testing::ExitedWithCode(0), "");
  EXPECT_EXIT(start_from_many_threads(), ::testing::ExitedWithCode(0), "");
}

// The handler of a signal gives a handle up and ends the process, all in the middle of a launch of its thread.
[[noreturn]] void exit_in_the_middle_of_a_launch() {
  check_at_exit(false); // the caller inside never gets to give its handles up
  static const auto& all = *new auto(devices());
  static const auto& numbers = *new memory(make(counted(1)));
  static const pthread_t launching = pthread_self();
  std::signal(SIGUSR1, [](int) {
    tarva_abi_release_memory(nullptr, numbers.get());
    std::exit(7);
  });
  set_kernel("flag", [](const kernel_run&) { pthread_kill(launching, SIGUSR1); });
  launch(find_kernel(compile(all[0], SOURCE), "flag"), {argument(numbers)}, line(1));
  std::this_thread::sleep_for(std::chrono::seconds(60));
  _exit(2);
}

// A thread that is cancelled in the middle of a launch comes to the end of it.
[[noreturn]] void cancel_a_launch() {
  static std::atomic<bool> inside = false, cancelled = false, ended = false;
  {
    const auto all = devices();
    const memory numbers = make(counted(1));
    set_kernel("flag", [](const kernel_run&) {
      for (inside = true; !cancelled;)
        std::this_thread::yield();
    });
    const auto flag = find_kernel(compile(all[0], SOURCE), "flag");
    std::thread launching([&] {
      launch(flag, {argument(numbers)}, line(1));
      pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
      ended = true;
    });
    while (!inside)
      std::this_thread::yield();
    pthread_cancel(launching.native_handle());
    cancelled = true;
    launching.join();
  }
  std::exit(ended ? 7 : 2);
}

TEST(boundary, survives_threads_that_end_the_process_or_are_ended) {
  EXPECT_EXIT(exit_in_the_middle_of_a_launch(), ::testing::ExitedWithCode(7), ::testing::Eq(""));
  EXPECT_EXIT(cancel_a_launch(), ::testing::ExitedWithCode(7), ::testing::Eq(""));
}

using live_handles = scripted_test;

TEST_F(live_handles, of_one_object_end_in_any_order) {
  for (const bool newest_first : {false, true}) {
    auto again = caller::devices();
    caller::device old = std::move(again[3]), fresh = std::move(caller::devices()[3]);
    ASSERT_NE(old.get(), fresh.get());
    (newest_first ? fresh : old).reset();
    const caller::device& left = newest_first ? old : fresh;
    EXPECT_EQ(text(child(root<tarva_abi_get_device_root_property>(left), "NAME")).substr(0, 5), "first");
  }
}

} // namespace

} // namespace scripted
