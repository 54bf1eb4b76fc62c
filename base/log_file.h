#pragma once

#include <string_view>

namespace oryn::logging {

// A file that lines are appended to. No line waits in a buffer, which a forked child would write once more when it
// exits, and a program that takes this one's place does not inherit the file.
class log_file {
public:
  // A regular file in the working directory, made for its owner alone; neither a link nor something that blocks. Throws
  // std::system_error.
  explicit log_file(const char* name);
  log_file(const log_file&) = delete;
  log_file& operator=(const log_file&) = delete;
  ~log_file();

  // Throws std::system_error.
  void append(std::string_view lines) const;

private:
  const int descriptor_;
};

} // namespace oryn::logging
