#pragma once

#include <csignal>

namespace oryn::tarva::library {

// Blocks all signals in this thread while it lives, so that a thread started meanwhile never receives one.
class masked_signals {
public:
  masked_signals() noexcept {
    sigset_t all;
    sigfillset(&all);
    is_masked_ = pthread_sigmask(SIG_SETMASK, &all, &before_) == 0;
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
