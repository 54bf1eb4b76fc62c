#pragma once

#include <csignal>
#include <ctime>
#include <initializer_list>

namespace oryn::logging {

// While it lives, a write of this thread into a pipe without a reader, or beyond the largest size that the process may
// give a file, just fails: the signals that it raises would end a process that does not expect them.
class withheld_write_signals {
public:
  withheld_write_signals() noexcept {
    sigset_t pending;
    sigpending(&pending);
    sigemptyset(&withheld_);
    for (const int signal : {SIGPIPE, SIGXFSZ})
      if (sigismember(&pending, signal) == 0) // else it is not ours
        sigaddset(&withheld_, signal);
    pthread_sigmask(SIG_BLOCK, &withheld_, &before_);
  }
  withheld_write_signals(const withheld_write_signals&) = delete;
  withheld_write_signals& operator=(const withheld_write_signals&) = delete;
  ~withheld_write_signals() {
    const timespec at_once{};
    while (sigtimedwait(&withheld_, nullptr, &at_once) > 0)
      continue;
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }

private:
  sigset_t withheld_{};
  sigset_t before_{};
};

} // namespace oryn::logging
