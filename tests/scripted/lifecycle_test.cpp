// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Start and stop of the library. Each case runs in a process of its own, with its own machine.
#include "tests/scripted/one_process.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <latch>
#include <pthread.h>
#include <semaphore>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace scripted {

namespace {

const char* level_of_the_run = "info";

void work_on_two_devices() {
  use_two_devices({{"three", {6}}});
  log_to_console(level_of_the_run);
  const auto all = devices();
  const memory numbers = used_on(all[0]), more = used_on(all[1]);
  tarva_abi_program_s* builtin = nullptr;
  must(call<tarva_abi_get_builtin_program>(all[1].get(), &builtin));
  must(launch(find_kernel(program(builtin), "sort_all"), {argument(numbers)}, line(4)));
}

TEST(lifecycle, a_run_is_told_from_start_to_stop) {
  std::string told = "] [tarva] [info] Starting TARVA.|Begin initialization of TARVA.|";
  for (std::size_t i = 0; i < version_count; ++i)
    told += "Detected " + std::to_string(i == 2 || i == 3 || i == 5) + " OpenCL " + version_texts[i] +
            " devices.|";
  told += "Initializing devices....|Initializing device 1 of 3.|"
          "Begin initialization of OpenCL 1.2 device 0x| named: one|Detected 0 builtin kernels.\n|"
          "Completed initialization of OpenCL 1.2 device named: one|Initializing device 2 of 3.|"
          "Detected 2 builtin kernels. Creating a program that contains them.|"
          "Creating the default device command-queue.|"
          "Completed initialization of OpenCL 2.0 device named: two|Device initialization complete.|"
          "Creating the TARVA scheduler.|Initialization of TARVA complete.|Releasing devices....|"
          "Releasing device 1 of 3.|Destroying OpenCL 1.2 device 0x|Releasing device 3 of 3.|"
          "Destroying OpenCL 2.2 device 0x|Device release complete.|TARVA has shutdown.";
  EXPECT_EXIT(run(work_on_two_devices), ExitedWithCode(0), lines(told));
  level_of_the_run = "warn";
  EXPECT_EXIT(run(work_on_two_devices), ExitedWithCode(0), ::testing::Eq(""));
}

void leave_handles_open() {
  log_to_console("info");
  auto all = devices();
  program made = compile(all[0], source);
  tarva_abi_retain_program(nullptr, made.get());
  tarva_abi_future_s* future = nullptr;
  const memory numbers = make(counted(1));
  std::int32_t value = 0;
  must(call<tarva_abi_async_read_memory>(numbers.get(), 0, 1, &value, &future));
  tarva_abi_error_s* failure = nullptr;
  tarva_abi_get_devices(nullptr, nullptr, &failure);
  // Given up, but in sight of leak checkers.
  [[maybe_unused]] static void* volatile left[] = {
      used_on(all[1]).release(),
      find_kernel(made, "add").release(),
      child(root<tarva_abi_get_device_root_property>(all[0]), "NAME").release(),
      future,
      failure,
      made.release(),
      all[0].release()};
}

TEST(lifecycle, what_is_left_open_is_reported_and_released_all_the_same) {
  EXPECT_EXIT(run(leave_handles_open), ExitedWithCode(0),
              lines("] [tarva] [warning] User reference count of device 0x| is 1, but expected a count of 0.|"
                    "User reference count of program 0x| is 2, but expected a count of 0.|"
                    "User reference count of kernel 0x| is 1, but expected a count of 0.|"
                    "User reference count of memory 0x| is 1, but expected a count of 0.|Property object 0x|"
                    " was not destroyed.|Future object 0x| was not destroyed.|Error object 0x|"
                    " was not destroyed.|Releasing devices....|Releasing device 2 of 2.|"
                    "] [tarva] [warning] Current internal reference count of device 1 is |"
                    " but we expected a reference count of 1."));
}

void start_in_silence() {
  used_on(devices()[0]);
  // The default queue of the device, of the size that it prefers; and two of each device, in order and one with profiling.
  std::vector<std::vector<std::uint64_t>> queues;
  for (const call_record& one : take_calls())
    if (one.operation == op::create_command_queue_with_properties)
      queues.push_back(one.numbers);
    else if (one.operation == op::create_command_queue)
      queues.push_back({one.as<op::create_command_queue>().properties});
  demand(queues == std::vector<std::vector<std::uint64_t>>{
                       {0}, {2}, {0x1093, 13, 0x1094, 16384}, {0x1093, 0}, {0x1093, 2}});
  tarva_abi_release_device(nullptr, nullptr);
}

// Which starts nothing.
void ask_for_versions() {
  set_version(1);
  log_to_console("trace");
  std::exit(static_cast<int>(tarva_abi_get_abi_version() + tarva_abi_get_library_version()));
}

void start_with_banner() {
  log_to_console("info");
  setenv("TARVA_LUDICROUS_SPEED_GO", "", 1);
  ::testing::internal::CaptureStderr();
  devices();
  const std::string dashes = std::string(59, '-') + "\n", pluses = std::string(59, '+') + "\n",
                    bars = "|||      |||      |||      |||      |||      |||      |||  \n",
                    stripe = dashes + pluses + bars + dashes + bars + pluses;
  const std::string output = ::testing::internal::GetCapturedStderr();
  const std::size_t begin =
      output.find("] [tarva] [info] \n\n" + stripe + stripe + stripe +
                  "\n\nTARVA HAS GONE PLAID!\n\nExperimental features are enabled for speed.\n\n[");
  demand(begin != std::string::npos && output.find("Begin initialization of TARVA.") < begin &&
         begin < output.find("Detected 0 OpenCL 1.0 devices."));
}

void start_from_many_threads() {
  constexpr int thread_count = 32;
  log_to_console("info");
  ::testing::internal::CaptureStderr();
  std::latch ready(thread_count);
  std::atomic<int> good = 0;
  std::vector<std::jthread> threads;
  for (int i = 0; i < thread_count; ++i)
    threads.emplace_back([&] {
      ready.arrive_and_wait();
      good += devices().size() == 2;
    });
  threads.clear(); // which joins them
  const std::string output = ::testing::internal::GetCapturedStderr();
  demand(good == thread_count && output.find("Starting TARVA.") == output.rfind("Starting TARVA."));
}

void log_into_a_pipe_without_a_reader() {
  log_to_console("info");
  int ends[2];
  demand(pipe(ends) == 0 && close(ends[0]) == 0 && dup2(ends[1], STDERR_FILENO) >= 0);
  used_on(devices()[0]);
}

TEST(lifecycle, a_start_has_its_banner_happens_once_and_needs_no_reader) {
  for (const auto start : {start_with_banner, start_from_many_threads, log_into_a_pipe_without_a_reader})
    EXPECT_EXIT(run(start), ExitedWithCode(0), "");
}

// Nothing is mended before exit(1).
TEST(lifecycle, a_start_that_fails_ends_the_process_in_words) {
  const auto fail = [](bool at_version) {
    check_at_exit(false);
    at_version ? set_version(1) : fail_call(op::create_context, 2, -6);
    devices();
  };
  const std::string start = "^Failed to initialize the TARVA library: ";
  EXPECT_EXIT(fail(true), ExitedWithCode(1),
              start + "The libqv version detected is incompatible with this version of SKERV.\n$");
  EXPECT_EXIT(fail(false), ExitedWithCode(1), start + "Failed to allocate memory on the host.\n$");
  const auto throw_in_worker = [] {
    log_to_console("critical");
    before_call(op::finish, 1, [] { throw 1; });
    used_on(devices()[0]);
  };
  EXPECT_EXIT((check_at_exit(false), run(throw_in_worker)), ExitedWithCode(1), "an unknown exception.");
}

void start_without_devices() {
  set_devices({});
  demand(devices().empty());
  tarva_abi_memory_s* made = nullptr;
  demand(call<tarva_abi_memory_allocate_typed>("", TARVA_ABI_TYPE_FLOAT, 1, &made) ==
             logic_failure("The scheduler expected at least one device to exist."),
         3);
}

void log_into_a_file_and_fork() {
  log_to_console("info");
  setenv("TARVA_LOG_TARGET", "file", 1);
  std::string folder = ::testing::TempDir() + "tarva_XXXXXX";
  demand(mkdtemp(folder.data()) && chdir(folder.c_str()) == 0);
  devices();
  const auto size_of_log = [] { return std::ifstream("tarva.log", std::ios::ate).tellg(); };
  const auto before = size_of_log();
  const pid_t child = fork();
  if (child == 0) {
    std::fflush(nullptr); // as an exit does
    const int other = open("tarva.log", O_WRONLY | O_APPEND);
    for (int each = STDERR_FILENO + 1; each < 64; ++each)
      dup2(other, each); // as a daemon that has closed everything, and opens files of its own
    tarva_abi_release_device(nullptr, nullptr);
    _exit(0);
  }
  demand(waitpid(child, nullptr, 0) == child && before > 0 && size_of_log() == before, 4);
  demand(unlink("tarva.log") == 0 && rmdir(folder.c_str()) == 0, 3);
}

void fail_without_future() {
  log_to_console("warn");
  const auto all = devices();
  fail_event(op::enqueue_nd_range_kernel, 1, -5);
  const memory numbers = used_on(all[0]);
  const std::int32_t value = 7;
  fail_event(op::enqueue_fill_buffer, 1, -5);
  must(fill(numbers, &value, 1, 2));
  fail_event(op::enqueue_copy_buffer, 1, -5);
  must(copy(numbers, 0, numbers, 3, 1));
  fail_event(op::enqueue_write_buffer, 1, -5);
  used_on(all[0]);
  // The code alone will do, too, and a future may be abandoned: no error is left.
  tarva_abi_future_s* future = nullptr;
  std::int32_t seen = 0;
  long code = 0;
  fail_event(op::enqueue_read_buffer, 2, -5);
  must(call<tarva_abi_async_read_memory>(numbers.get(), 0, 1, &seen, &future));
  tarva_abi_abandon_future(nullptr, future);
  must(call<tarva_abi_async_read_memory>(numbers.get(), 0, 1, &seen, &future));
  must(call<tarva_abi_wait_future>(future, &code, nullptr));
  demand(code == TARVA_ABI_RUNTIME_FAILURE, 3);
  fail_call(op::release_mem_object, 1, -38);
  check_at_exit(false); // the buffer whose release failed
  used_on(all[0]);
}

void complain_from_opencl() {
  log_to_console("error");
  const auto all = devices();
  raise_context_error(0, "boom");
  raise_context_error(1, nullptr);
  fail_call(op::get_device_info, 1, -5);
  raise_context_error(0, "no name");
}

TEST(lifecycle, failures_that_nobody_is_told_of_are_logged) {
  EXPECT_EXIT(
      run(fail_without_future), ExitedWithCode(0),
      lines("] [tarva] [error] |"
            "kernel: {work_dim=1, global_offset=(0, 0, 0), global_size=(4, 1, 1), local_size=(1, 1, 1)}|"
            "Failed to allocate resources on the device.|fill: {memory_object_id=|"
            ", start_position=1, count=2, value=<omitted>}: |copy_tarva_to_tarva: {src_object_id=|"
            ", src_start_position=0, dest_start_position=3, count=1}: |"
            "Failed to allocate resources on the device.|"
            "] [skerv] [error] Exception caught in memory_object::~memory_object().\n") +
          "$");
  EXPECT_EXIT(
      run(complain_from_opencl), ExitedWithCode(0),
      lines(
          "] [tarva] [error] OpenCL context error callback triggered for device: OpenCL 1.2 device named: one.  Message: boom.|"
          "OpenCL context error callback triggered for device: OpenCL 2.0 device named: two.  Message is null.|"
          "OpenCL context error callback triggered for device: 0x|.  Message: no name."));
}

void end_handles_in_any_order() {
  for (const bool newest_first : {false, true}) {
    caller::device old = std::move(caller::devices()[1]), fresh = std::move(caller::devices()[1]);
    const bool are_two = old.get() != fresh.get();
    (newest_first ? fresh : old).reset();
    const auto properties = root<tarva_abi_get_device_root_property>(newest_first ? old : fresh);
    demand(are_two && text(child(properties, "NAME")) == "two");
  }
}

void take_signals_on_a_worker() {
  static std::atomic<bool> handled = false, masked = false;
  std::signal(SIGFPE, [](int) { handled = true; });
  set_kernel("add", [](const kernel_run&) {
    sigset_t blocked;
    masked = pthread_sigmask(SIG_BLOCK, nullptr, &blocked) == 0;
    for (const int each : {SIGTERM, SIGINT, SIGHUP, SIGALRM, SIGCHLD, SIGUSR1})
      masked = masked && sigismember(&blocked, each) == 1;
    std::raise(SIGFPE);
  });
  used_on(devices()[0]);
  demand(handled && masked);
}

// Callers sleep until their operation has ended, whatever wakes them in between; and whoever asks for what has ended
// need not wait for others.
void wake_callers_too_early() {
  static std::binary_semaphore has_begun(0), goes_on(0);
  static std::atomic<bool> has_ended = false;
  static pthread_t callers[2] = {pthread_self()};
  struct sigaction wake {};
  wake.sa_handler = [](int) {};
  demand(sigaction(SIGUSR1, &wake, nullptr) == 0);
  alarm(60);
  const memory numbers = make(counted(4));
  const auto flag = find_kernel(compile(devices()[0], source), "flag");
  std::int32_t first = 0;
  tarva_abi_future_s* early = nullptr;
  must(call<tarva_abi_async_read_memory>(numbers.get(), 0, 1, &first, &early));
  set_kernel("flag", [](const kernel_run& now) {
    has_begun.release();
    goes_on.acquire();
    for (int i = 0; i < 100; ++i) {
      pthread_kill(callers[i % 2], SIGUSR1);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    now.set(0, 0, std::int32_t{7});
    has_ended = true;
  });
  const std::jthread launching([&] {
    callers[1] = pthread_self();
    must(launch(flag, {argument(numbers)}, line(1)));
    demand(has_ended);
  });
  has_begun.acquire();
  demand(wait(early) == outcome() && first == 1, 3);
  goes_on.release();
  demand(read<std::int32_t>(numbers, 1) == counted(1, 7), 4);
}

// Where the caller's storage is read: the page is there only when it is missed.
void write_from_a_page_that_is_not_there() {
  static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  static void* const page = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  static std::thread::id reader;
  const memory numbers = make(counted(4));
  bring(find_kernel(compile(devices()[0], source), "add"), {&numbers});
  const std::thread::id of_first_device = only(take_calls(), op::enqueue_nd_range_kernel).at(0).thread;
  const memory others = make(counted(4));
  std::signal(SIGSEGV, [](int) {
    reader = std::this_thread::get_id();
    mprotect(page, size, PROT_READ);
  });
  must(write_raw(others, 0, 4, page));
  const bool is_concurrent = getenv("TARVA_SCHEDULER") != nullptr;
  demand(reader == (is_concurrent ? std::this_thread::get_id() : of_first_device));
}

TEST(lifecycle, says_nothing_unasked) {
  expect_quiet({CASE(start_in_silence), CASE(ask_for_versions), CASE(start_without_devices),
                CASE(log_into_a_file_and_fork), CASE(end_handles_in_any_order),
                CASE(take_signals_on_a_worker), CASE(wake_callers_too_early),
                CASE(write_from_a_page_that_is_not_there)});
}

} // namespace

} // namespace scripted
