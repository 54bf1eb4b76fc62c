// The outcome of reaching the capability library, before any OpenCL status counts.
#pragma once

#include "capability/qv.h"

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

namespace qv {

class qv_error : public std::exception {
public:
  qv_error(std::string message, std::int32_t code) : message_(std::move(message)), code_(code) {}
  const char* what() const noexcept override { return message_.c_str(); }
  std::int32_t get_code() const noexcept { return code_; }

private:
  std::string message_;
  std::int32_t code_;
};

class recoverable_error : public qv_error {
public:
  using qv_error::qv_error;
};

class unrecoverable_error : public qv_error {
public:
  using qv_error::qv_error;
};

class invalid_command_id : public recoverable_error {
public:
  using recoverable_error::recoverable_error;
};

class unknown_error : public unrecoverable_error {
public:
  using unrecoverable_error::unrecoverable_error;
};

} // namespace qv

namespace oryn::skerv::common {

[[noreturn]] void throw_transport(std::int32_t code);

// Returns if `code` is QV_OK, else throws the exception class of `code`.
inline void check_transport(std::int32_t code) {
  if (code != QV_OK)
    throw_transport(code);
}

// Throws std::runtime_error unless the capability library is one that this layer can talk to.
void check_capability_library_version();

} // namespace oryn::skerv::common
