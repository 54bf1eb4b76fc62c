#include "base/process_fault.h"

#include "base/masked_signals.h"

#include <cstdio>
#include <cstdlib>
#include <pthread.h>
#include <thread>
#include <unistd.h>

namespace oryn::tarva::library {

namespace internal {
constinit std::atomic<bool> process_has_failed = false;
}

namespace {

constinit std::atomic<bool> process_is_ending = false;
constinit thread_local bool is_worker = false;

// Whoever holds a stream may sleep for ever, so its buffer is waited for by a thread of its own.
constexpr std::chrono::seconds patience_with_streams{1};

// A thread that takes no signal of the host's, with a small stack, which is to be had when others are not.
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

} // namespace

void note_worker() noexcept {
  is_worker = true;
}

void note_end_of_process() noexcept {
  if (is_worker && !internal::process_has_failed.exchange(true))
    limit_exit_handlers();
  process_is_ending = true;
}

bool limit_exit_handlers() noexcept {
  return start_thread([](void*) -> void* { end_process_after_exit_handlers(); });
}

void end_process_after_exit_handlers() noexcept {
  std::this_thread::sleep_for(patience_with_exit_handlers);
  const bool is_flushing = start_thread([](void*) -> void* {
    std::fflush(nullptr);
    _exit(1);
  });
  if (is_flushing)
    std::this_thread::sleep_for(patience_with_streams);
  _exit(1);
}

void fail_process(const std::function<void()>& wake_sleepers) noexcept {
  // Two threads must not run the library's exit handler at once.
  while (internal::process_has_failed.exchange(true))
    pause();
  if (!limit_exit_handlers() && wake_sleepers)
    wake_sleepers();
  if (process_is_ending) {
    // Whoever runs them waits for the thread that has failed.
    std::fflush(nullptr);
    _exit(1);
  }
  std::exit(1);
}

} // namespace oryn::tarva::library
