#pragma once

namespace oryn::tarva::library {

// While one lives, errors are provoked on this thread. An implementation may tell a context of them, which is then not
// worth a line in the log.
class expected_errors {
public:
  expected_errors() noexcept;
  ~expected_errors();
  expected_errors(const expected_errors&) = delete;
  expected_errors& operator=(const expected_errors&) = delete;

  static bool on_this_thread() noexcept;
};

} // namespace oryn::tarva::library
