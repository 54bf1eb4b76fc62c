// The bases of all exceptions that the access layer throws for OpenCL.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

namespace oryn::skerv::common {

class error : public std::exception {
public:
  explicit error(std::string message) : message_(std::move(message)) {}
  const char* what() const noexcept override { return message_.c_str(); }

private:
  std::string message_;
};

// An OpenCL status that the standard names.
class opencl_error : public error {
public:
  opencl_error(std::string message, std::int32_t status) : error(std::move(message)), status_(status) {}
  std::int32_t get_status() const noexcept { return status_; }

private:
  std::int32_t status_;
};

class logic_error : public opencl_error {
public:
  using opencl_error::opencl_error;
};

class runtime_error : public opencl_error {
public:
  using opencl_error::opencl_error;
};

// A status that the standard does not name.
class unknown_opencl_error : public error {
public:
  explicit unknown_opencl_error(std::int32_t status)
      : error("Unknown OpenCL Error Code: " + std::to_string(status)), status_(status) {}
  std::int32_t get_status() const noexcept { return status_; }

private:
  std::int32_t status_;
};

// The OpenCL implementation breaks a rule of the standard.
class bad_implementation : public error {
public:
  using error::error;
};

} // namespace oryn::skerv::common
