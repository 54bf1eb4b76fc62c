// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Random schedules: 32 threads on shared objects, each delayed at random at every command of the capability library and wherever
// it takes or leaves a lock, sleeps, or wakes another.
#include "tests/sweeps/scenarios.h"

#include "tests/device/thread_mix.h"

#include <cstdarg>
#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

namespace sweeps {

namespace {

std::atomic<bool> are_delayed = false;
thread_local std::uint32_t choices = 0;

// Most go on at once, some let others go first, and few sleep.
void delay() {
  if (!are_delayed.load(std::memory_order_relaxed))
    return;
  if (choices == 0)
    choices = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(&choices) >> 4) | 1;
  choices ^= choices << 13;
  choices ^= choices >> 17;
  choices ^= choices << 5;
  if (choices % 256 == 0)
    usleep(choices / 256 % 200);
  else if (choices % 32 == 0)
    sched_yield();
}

} // namespace

std::string run_schedule(unsigned seed) {
  std::vector<caller::kernel> kernels;
  for (const caller::device& each : caller::devices())
    kernels.push_back(caller::find_kernel(caller::compile(each, caller::mix_source), "add"));
  scripted::set_delay(delay);
  are_delayed = true;
  std::string wrong =
      caller::thread_mix(kernels, [](std::uint64_t) { scripted::take_calls(); }).run(32, seed, 600);
  are_delayed = false;
  return wrong;
}

} // namespace sweeps

#ifndef TARVA_SANITIZED // which has functions of its own in these places

namespace {
// What stands behind the function of that name. Any thread may be the first to ask; a local static would itself need a lock.
template <class Function>
Function* next(std::atomic<Function*>& known, const char* name) {
  Function* found = known.load(std::memory_order_relaxed);
  if (found == nullptr)
    known = found = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
  return found;
}
constinit std::atomic<int (*)(pthread_mutex_t*)> next_lock = nullptr, next_unlock = nullptr;
constinit std::atomic<long (*)(long, ...)> next_syscall = nullptr;
} // namespace

#pragma GCC visibility push(default)
extern "C" {
int pthread_mutex_lock(pthread_mutex_t* lock) noexcept {
  sweeps::delay();
  return next(next_lock, "pthread_mutex_lock")(lock);
}
int pthread_mutex_unlock(pthread_mutex_t* lock) noexcept {
  const int result = next(next_unlock, "pthread_mutex_unlock")(lock);
  sweeps::delay();
  return result;
}
// By which the library's own locks sleep and wake.
long syscall(long number, ...) noexcept {
  va_list list;
  va_start(list, number);
  long words[6];
  for (long& one : words)
    one = va_arg(list, long);
  va_end(list);
  sweeps::delay();
  return next(next_syscall, "syscall")(number, words[0], words[1], words[2], words[3], words[4], words[5]);
}
}
#pragma GCC visibility pop
#endif
