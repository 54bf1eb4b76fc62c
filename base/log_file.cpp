// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "base/log_file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace oryn::logging {

namespace {

// Without O_NONBLOCK a pipe of that name would block the host until somebody reads from it.
constexpr int lasting_flags = O_WRONLY | O_APPEND | O_NONBLOCK;

[[noreturn]] void fail(int error, const char* what) {
  throw std::system_error(error, std::generic_category(), what);
}

// Where the host has closed its standard streams, a new file takes the place of one, and would be given all that is written to it.
int move_behind_standard_streams(int descriptor) {
  const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int error = errno;
  close(descriptor);
  if (moved < 0)
    fail(error, "A log file cannot be opened");
  return moved;
}

int open_for_appending(const char* name) {
  const int descriptor =
      open(name, lasting_flags | O_CREAT | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (descriptor < 0)
    fail(errno, "A log file cannot be opened");
  struct stat found {};
  if (fstat(descriptor, &found) != 0 || !S_ISREG(found.st_mode)) {
    close(descriptor);
    fail(EINVAL, "A log file is not a regular file");
  }
  return descriptor > STDERR_FILENO ? descriptor : move_behind_standard_streams(descriptor);
}

} // namespace

bool is_log_descriptor(int descriptor) noexcept {
  const int flags = fcntl(descriptor, F_GETFL);
  return flags >= 0 && (flags & (O_ACCMODE | lasting_flags)) == lasting_flags;
}

log_file::log_file(const char* name) : descriptor_(open_for_appending(name)) {}

log_file::~log_file() {
  if (is_log_descriptor(descriptor_))
    close(descriptor_);
}

// A write may be cut short by a signal, or by a disk that is full; the rest is then tried again, and its error counts.
void log_file::append(std::string_view lines) const {
  if (!is_log_descriptor(descriptor_))
    fail(EBADF, "A log file has been closed");
  while (!lines.empty()) {
    const ssize_t written = write(descriptor_, lines.data(), lines.size());
    if (written >= 0)
      lines.remove_prefix(static_cast<std::size_t>(written));
    else if (errno != EINTR)
      fail(errno, "A log file cannot be written");
  }
}

} // namespace oryn::logging
