#pragma once

#include <pthread.h>

namespace oryn::tarva::library {

// Knows the threads of the host that have called the library while it has workers.
//
// Workers take none of the host's signals. So when all threads of the host had ended, as they may behind a pthread_exit
// of the main one, nothing could end the process any more. Therefore the last of them does not go: it stays, with the
// signal mask that the host gave it, and takes what comes. No worker ever has to.
class host_threads {
public:
  host_threads() noexcept;
  host_threads(const host_threads&) = delete;
  host_threads& operator=(const host_threads&) = delete;
  // From here on they all just end.
  ~host_threads();

  void note_this_thread() noexcept {
    if (!is_noted)
      note_new_thread();
  }

private:
  void note_new_thread() noexcept;

  static thread_local constinit bool is_noted;

  pthread_key_t key_{};
  bool has_key_;
};

} // namespace oryn::tarva::library
