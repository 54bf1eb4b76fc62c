// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Threads with a name and a stack of their own size, neither of which the standard library's have.
//
// This header needs nothing but the system, so that each library of the project can include it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <pthread.h>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <system_error>
#include <utility>

namespace oryn {

// What the system keeps of a thread's name, and ps, gdb and perf show: 15 characters, the rest is cut.
inline void name_this_thread(std::string_view name) noexcept {
  constexpr std::size_t most_characters = 15;
  char cut[most_characters + 1] = {};
  name.copy(cut, most_characters);
  pthread_setname_np(pthread_self(), cut);
}

// The smallest stack for a thread that calls OpenCL.
inline constexpr std::size_t least_stack_of_opencl = std::size_t{8} << 20;

// OpenCL implementations for processors run kernels on the stack of the thread that calls them. It is to take what the main
// thread's would, where the same program without this library would run them. The system's own choice does not: without a limit
// it is two mebibytes. The 64 in that case are addresses, not memory. Where addresses have a limit, too, the host needs them, so
// no stack takes more of them than that.
inline std::size_t stack_size_for_opencl() noexcept {
  constexpr std::size_t without_limit = std::size_t{64} << 20;
  rlimit stack{}, addresses{};
  if (getrlimit(RLIMIT_STACK, &stack) != 0)
    return least_stack_of_opencl;
  const bool is_roomy = getrlimit(RLIMIT_AS, &addresses) != 0 || addresses.rlim_cur == RLIM_INFINITY;
  if (stack.rlim_cur == RLIM_INFINITY)
    return is_roomy ? without_limit : least_stack_of_opencl;
  const std::size_t size = std::max<std::size_t>(least_stack_of_opencl, stack.rlim_cur);
  return is_roomy ? size : std::min(size, without_limit);
}

// A thread that calls OpenCL. It belongs to whoever has started it, who has to join or detach it.
class native_thread {
public:
  native_thread() noexcept = default;
  // Runs `body`, which must not throw. A stack for which there is no room becomes smaller, down to the least size; throws
  // std::system_error if there is no thread to be had at all.
  native_thread(std::string name, std::function<void()> body) {
    auto begin = std::make_unique<beginning>(beginning{std::move(name), std::move(body)});
    std::size_t size = stack_size_for_opencl();
    int error = start(size, begin.get());
    while (error != 0 && size > least_stack_of_opencl) {
      size = std::max(size / 2, least_stack_of_opencl);
      error = start(size, begin.get());
    }
    if (error != 0)
      throw std::system_error(error, std::generic_category());
    static_cast<void>(begin.release()); // the thread's
    is_joinable_ = true;
  }
  native_thread(const native_thread&) = delete;
  native_thread& operator=(const native_thread&) = delete;
  native_thread& operator=(native_thread&& other) noexcept {
    thread_ = other.thread_;
    is_joinable_ = std::exchange(other.is_joinable_, false);
    return *this;
  }

  bool joinable() const noexcept { return is_joinable_; }
  void join() noexcept {
    pthread_join(thread_, nullptr);
    is_joinable_ = false;
  }
  void detach() noexcept {
    pthread_detach(thread_);
    is_joinable_ = false;
  }

private:
  struct beginning {
    std::string name;
    std::function<void()> body;
  };

  int start(std::size_t stack_size, beginning* begin) noexcept {
    pthread_attr_t attributes;
    if (const int error = pthread_attr_init(&attributes))
      return error;
    int error = pthread_attr_setstacksize(&attributes, stack_size);
    if (error == 0)
      error = pthread_create(&thread_, &attributes, run, begin);
    pthread_attr_destroy(&attributes);
    return error;
  }

  static void* run(void* argument) {
    const std::unique_ptr<beginning> begin(static_cast<beginning*>(argument));
    name_this_thread(begin->name);
    begin->body();
    return nullptr;
  }

  pthread_t thread_{};
  bool is_joinable_ = false;
};

} // namespace oryn
