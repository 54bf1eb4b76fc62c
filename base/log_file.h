// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// How lines are written without harm to the host: the file that they go to, and the signals that a write may raise.
#pragma once

#include <csignal>
#include <ctime>
#include <initializer_list>
#include <string_view>

namespace oryn::logging {

// Whether the descriptor is that of a log file. A host may close all descriptors, as daemons do, and open files of its own that
// get the same numbers; hardly any of them is opened like a log file.
bool is_log_descriptor(int descriptor) noexcept;

// A file that lines are appended to. There is no buffer, since a forked child would write it out once more when it exits. A
// program that takes this one's place (exec) does not inherit the file.
//
// It never changes once it is open. Each append() is in one piece unless the disk is full; the sink that owns it has a lock.
class log_file {
public:
  // Opens a file in the working directory, or makes it, for its owner alone. It must be a regular file and no link. Throws
  // std::system_error.
  explicit log_file(const char* name);
  log_file(const log_file&) = delete;
  log_file& operator=(const log_file&) = delete;
  ~log_file();

  // Throws std::system_error, also if the host has closed the file.
  void append(std::string_view lines) const;
  int descriptor() const noexcept { return descriptor_; }

private:
  const int descriptor_;
};

// While it lives, a write of this thread just fails that goes into a pipe without a reader, or beyond the largest size that
// the process may give a file. Without it such a write raises a signal, which ends a process that does not expect it. A
// signal of that sort that was pending before is the host's, and stays.
class withheld_write_signals {
public:
  withheld_write_signals() noexcept {
    sigset_t pending;
    sigpending(&pending);
    sigemptyset(&withheld_);
    for (const int signal : {SIGPIPE, SIGXFSZ})
      if (sigismember(&pending, signal) == 0)
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
