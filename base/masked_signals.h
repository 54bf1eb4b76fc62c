#pragma once

#include <csignal>
#include <initializer_list>

namespace oryn::tarva::library {

// All signals that are sent to a process. Those that tell of a thread's own fault are not among them: blocked, they would
// end the process without the handler of the host, or of an OpenCL implementation that passes over divisions by zero with
// one.
inline sigset_t signals_sent_to_a_process() noexcept {
  sigset_t sent;
  sigfillset(&sent);
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS})
    sigdelset(&sent, fault);
  return sent;
}

// Blocks these in this thread while it lives, so that a thread started meanwhile never receives one.
class masked_signals {
public:
  masked_signals() noexcept {
    const sigset_t sent = signals_sent_to_a_process();
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
