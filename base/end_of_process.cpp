// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "base/end_of_process.h"

#include "base/logging.h"
#include "base/native_thread.h"

#include <bit>
#include <charconv>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <string_view>
#include <thread>

// By its address the system knows what is to be done when this library is unloaded. std::atexit() would pass it, too, but for that of
// the thread sanitizer, which lets the handlers of a library run when it is gone.
// NOLINTNEXTLINE(readability-identifier-naming): the name is the system's.
extern "C" [[gnu::visibility("hidden")]] void* __dso_handle;

namespace oryn::tarva::library {

// Failures of the process.

constinit std::atomic<bool> process_has_failed = false;

namespace {

constinit std::atomic<bool> exit_handlers_run = false;
constinit thread_local bool is_worker = false;

// Starts a detached thread that takes none of the host's signals. Its stack is small, since such a thread may be had when
// others are not.
bool start_thread(void* (*body)(void*)) noexcept {
  constexpr std::size_t stack_size = std::size_t{256} << 10;
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0)
    return false;
  pthread_attr_setstacksize(&attributes, stack_size);
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  const masked_signals masked;
  pthread_t started{};
  const bool has_started = pthread_create(&started, &attributes, body, nullptr) == 0;
  pthread_attr_destroy(&attributes);
  return has_started;
}

// Starts a thread that ends the process when the exit handlers' time is up. False if there is none to be had.
bool limit_exit_handlers() noexcept {
  return start_thread([](void*) -> void* {
    name_this_thread("tarva-end");
    end_process_after_exit_handlers();
  });
}

// The first of the library's exit handlers has begun. On a worker this is a failure, as a worker that runs them can wait
// for no worker.
void begin_exit_handlers() noexcept {
  if (is_worker && !process_has_failed.exchange(true))
    limit_exit_handlers();
  exit_handlers_run = true;
}

} // namespace

void mark_worker_thread() noexcept {
  is_worker = true;
}

void end_process_after_exit_handlers() noexcept {
  std::this_thread::sleep_for(grace_period_of_exit_handlers);
  const bool is_flushing = start_thread([](void*) -> void* {
    name_this_thread("tarva-flush");
    std::fflush(nullptr);
    _exit(1);
  });
  if (is_flushing)
    std::this_thread::sleep_for(grace_period_of_streams);
  _exit(1);
}

// std::exit() runs the exit handlers on this thread, the library's among them, which see that the process has failed.
void fail_process(const std::function<void()>& wake_sleepers) noexcept {
  while (process_has_failed.exchange(true))
    pause(); // another thread ends the process
  if (!limit_exit_handlers() && wake_sleepers)
    wake_sleepers();
  if (exit_handlers_run) {
    std::fflush(nullptr);
    _exit(1);
  }
  std::exit(1);
}

void end_failed_start() noexcept {
  std::fflush(stderr);
  the_call_gate.close();
  limit_exit_handlers();
  std::exit(1);
}

// Calls.

constinit call_gate the_call_gate;

thread_local constinit std::uint64_t call_gate::own_calls = 0;
thread_local constinit bool call_gate::has_precedence = false;

namespace {

void rest() noexcept {
  std::this_thread::sleep_for(std::chrono::microseconds(200));
}

} // namespace

// The sum is exact only once the gate is closed, when no call can be counted that then goes on.
std::uint64_t call_gate::calls_inside() const noexcept {
  std::uint64_t calls = 0;
  for (const shard& each : shards_)
    calls += each.calls.load();
  return calls;
}

bool call_gate::wait_for_other_threads(std::chrono::milliseconds limit) const noexcept {
  const auto end = clock::now() + limit;
  while (calls_inside() > own_calls) {
    if (clock::now() >= end)
      return false;
    rest();
  }
  return true;
}

// The time from which calls are admitted again is set before the wait, so that they are even if this thread never returns.
bool call_gate::let_other_threads_leave(std::chrono::milliseconds limit,
                                        std::chrono::milliseconds delay) noexcept {
  if (own_calls != 0)
    return true;
  has_precedence = true;
  auto admits_from = clock::now() + limit + delay;
  admits_from_.store(admits_from);
  const bool have_left = wait_for_other_threads(limit);
  admits_from_.compare_exchange_strong(admits_from, clock::now() + delay); // unless it was closed meanwhile
  return have_left;
}

// A call that waits outside is not counted, so that nobody waits for it.
bool call_gate::admit_late(std::atomic<std::uint64_t>& calls) const noexcept {
  if (!has_precedence) {
    calls.fetch_sub(1);
    for (auto from = admits_from_.load(); from != never && clock::now() < from; from = admits_from_.load())
      rest();
    calls.fetch_add(1);
  }
  return admits_from_.load() != never;
}

namespace {

constinit std::atomic<bool> long_grace_period_is_over = false;
constinit std::atomic<std::uint64_t> uses_of_compilers = 0;

void let_calls_end(void*) noexcept {
  if (!the_call_gate.is_open())
    return; // in a forked child, or done already
  begin_exit_handlers();
  if (!process_has_failed)
    long_grace_period_is_over =
        !the_call_gate.let_other_threads_leave(grace_period_of_long_calls, grace_period_of_short_calls);
}

} // namespace

use_of_compiler::~use_of_compiler() {
  if (std::has_single_bit(++uses_of_compilers))
    // Fails without memory: the end is then as safe as before.
    static_cast<void>(abi::__cxa_atexit(let_calls_end, nullptr, &__dso_handle));
}

// Forked children.

namespace {

constinit std::atomic<bool> is_in_forked_child = false;

} // namespace

void explain_refusal() noexcept {
  if (is_in_forked_child.exchange(false))
    logging::tarva_logger.write_without_locks(
        "This process was forked off one that had used the library. It has no library: all its calls fail.");
}

// The stop.

library_lifetime::library_lifetime(stoppable_library* (*start)()) : process_(getpid()) {
  pthread_atfork(nullptr, nullptr, [] {
    the_call_gate.close();
    is_in_forked_child = true;
  });
  library_ = start();
  has_workers_ = library_->has_workers();
}

// The library is left alone rather than destroyed wherever anybody may still use it: the process is about to go.
library_lifetime::~library_lifetime() {
  if (getpid() != process_)
    return;
  begin_exit_handlers();
  the_call_gate.close();
  if (process_has_failed) {
    library_->shut_down();
    return;
  }
  the_call_gate.wait_for_other_threads(grace_period_of_short_calls);
  library_->shut_down();
  the_call_gate.wait_for_other_threads(long_grace_period_is_over ? grace_period_of_short_calls
                                                                 : grace_period_of_long_calls);
  if (the_call_gate.is_idle())
    delete library_;
}

// The last thread of the host.

thread_local constinit bool host_threads::is_counted = false;

namespace {

// Here rather than in host_threads, which may be gone when a thread ends.
constinit std::atomic<long> counted_threads = 0;
constinit std::atomic<pthread_key_t> key_of_counted_threads = 0;
constinit std::atomic<pid_t> process_of_workers = 0;

std::string_view field_of(std::string_view status, std::string_view name) {
  const std::size_t place = status.find(name);
  return place == status.npos ? std::string_view() : status.substr(place + name.size());
}

// The signals that a thread of this process blocks; nothing if it has ended.
std::optional<std::uint64_t> signal_mask_of(long thread) {
  std::array<char, 64> path{};
  std::snprintf(path.data(), path.size(), "/proc/self/task/%ld/status", thread);
  const int file = open(path.data(), O_RDONLY | O_CLOEXEC);
  if (file < 0)
    return std::nullopt;
  std::array<char, 4096> text{};
  const ssize_t length = read(file, text.data(), text.size());
  close(file);
  const std::string_view status(text.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
  const std::string_view state = field_of(status, "\nState:\t"), blocked = field_of(status, "\nSigBlk:\t");
  std::uint64_t mask = 0;
  if (state.starts_with('Z') || state.starts_with('X') ||
      std::from_chars(blocked.data(), blocked.data() + blocked.size(), mask, 16).ec != std::errc())
    return std::nullopt;
  return mask;
}

// Whether all other threads have the signal mask of this one, which is that of workers. They are then taken for workers:
// the host has no reason to choose the same mask.
bool is_alone_with_workers() {
  const std::unique_ptr<DIR, int (*)(DIR*)> threads(opendir("/proc/self/task"), closedir);
  const auto own_mask = signal_mask_of(gettid());
  if (!threads || !own_mask)
    return false;
  while (const dirent* const entry = readdir(threads.get())) {
    const long thread = std::atol(entry->d_name);
    if (thread != 0 && signal_mask_of(thread).value_or(*own_mask) != *own_mask)
      return false;
  }
  return true;
}

// A thread that ends first takes the mask of workers, so that the last one does not wait for it.
void end_or_stay() noexcept {
  const sigset_t sent = signals_sent_to_a_process();
  sigset_t own{};
  pthread_sigmask(SIG_SETMASK, &sent, &own);
  const bool is_last = counted_threads.fetch_sub(1) == 1;
  if (!is_last || getpid() != process_of_workers || !is_alone_with_workers())
    return;
  pthread_sigmask(SIG_SETMASK, &own, nullptr);
  while (true)
    pause();
}

// The system calls the destructors of a thread's values in rounds, for as long as they set new values. A thread's value is
// the number of its round, as a place in this array. The very last round is left to sanitizers, which take down then what
// a thread needs to call anything at all.
constexpr std::array<char, PTHREAD_DESTRUCTOR_ITERATIONS - 1> rounds{};

// Waits for its last round, when the host's own destructors have run.
void end_thread(void* round) noexcept {
  const char* const next = static_cast<const char*>(round) + 1;
  if (next == rounds.data() + rounds.size() || pthread_setspecific(key_of_counted_threads, next) != 0)
    end_or_stay();
}

} // namespace

host_threads::host_threads() noexcept : has_key_(pthread_key_create(&key_, end_thread) == 0) {
  key_of_counted_threads = key_;
  process_of_workers = getpid();
}

host_threads::~host_threads() {
  if (has_key_)
    pthread_key_delete(key_);
}

void host_threads::count_new_thread() noexcept {
  is_counted = true;
  if (!has_key_)
    return;
  ++counted_threads;
  if (pthread_setspecific(key_, rounds.data()) != 0)
    --counted_threads;
}

} // namespace oryn::tarva::library
