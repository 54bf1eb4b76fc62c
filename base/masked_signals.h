#pragma once

#include <csignal>
#include <initializer_list>

namespace oryn::tarva::library {

// Blocks in this thread while it lives all signals that are sent to the process, so that a thread started meanwhile
// never receives one. Those that tell of a thread's own fault stay: blocked, they would end the process without the
// handler of the host, or of an OpenCL implementation that passes over divisions by zero with one.
class masked_signals {
public:
  masked_signals() noexcept {
    sigset_t sent;
    sigfillset(&sent);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS})
      sigdelset(&sent, fault);
    is_masked_ = pthread_sigmask(SIG_SETMASK, &sent, &before_) == 0;
  }
  ~masked_signals() {
    if (is_masked_)
      pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  masked_signals(const masked_signals&) = delete;
  masked_signals& operator=(const masked_signals&) = delete;

private:
  sigset_t before_{};
  bool is_masked_ = false;
};

} // namespace oryn::tarva::library
