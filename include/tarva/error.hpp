/// @file
/// Exceptions for the failures that the library reports.
#ifndef TARVA_ERROR_HPP
#define TARVA_ERROR_HPP

#include <tarva_abi.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// What is thin stays thin, and what throws stays out of the way.
#if defined(__GNUC__)
#define TARVA_THIN __attribute__((always_inline)) inline
#define TARVA_COLD __attribute__((cold, noinline))
#else
#define TARVA_THIN inline
#define TARVA_COLD
#endif

namespace tarva {

/// What kind of failure an error object of the library tells of: its EXCEPTION_TYPE.
enum class failure_kind : std::uint64_t {
  unknown = 0, ///< there is no error object, or it could not be read
  logic_error = 1,
  invalid_argument = 2,
  length_error = 3,
  out_of_range = 4,
  runtime_error = 5,
  not_standard = 6,
  other = 7 ///< above all, what OpenCL reports
};

/// One error object of the library.
struct failure {
  failure_kind kind = failure_kind::unknown;
  std::string message{};
};

/// A failure that the library reports. what() tells the whole chain in one line.
class error : public std::runtime_error {
public:
  error(tarva_abi_result code, const std::string& text, std::vector<failure> chain)
      : std::runtime_error(text), code_(code),
        chain_(std::make_shared<const std::vector<failure>>(std::move(chain))) {}

  /// The result of the call, or of the operation that was waited for: TARVA_ABI_LOGIC_FAILURE and the like.
  tarva_abi_result code() const noexcept { return code_; }

  /// The error and what it came from, the outermost first. Empty if there was no error object.
  const std::vector<failure>& chain() const noexcept { return *chain_; }

  /// The kind of the outermost error.
  failure_kind kind() const noexcept {
    return chain_->empty() ? failure_kind::unknown : chain_->front().kind;
  }

private:
  tarva_abi_result code_;
  std::shared_ptr<const std::vector<failure>> chain_; // shared, so that copying an exception cannot throw
};

/// The request makes no sense.
class logic_failure : public error {
  using error::error;
};
/// The request could not be carried out.
class runtime_failure : public error {
  using error::error;
};
/// The host is out of memory.
class out_of_memory : public error {
  using error::error;
};
/// No more is known; also every call after the library has stopped.
class unknown_failure : public error {
  using error::error;
};

/// A program does not build.
class build_failure : public error {
public:
  explicit build_failure(std::string log)
      : error(TARVA_ABI_OK,
              log.empty() ? "The program does not build." : "The program does not build: " + log, {}),
        log_(std::make_shared<const std::string>(std::move(log))) {}

  /// What the compiler said.
  const std::string& log() const noexcept { return *log_; }

private:
  std::shared_ptr<const std::string> log_;
};

namespace detail {

/// Gives a record or handle up with the function of its kind; for std::unique_ptr.
template <auto Free>
struct give_up {
  template <class Record>
  void operator()(Record* record) const noexcept {
    Free(nullptr, record);
  }
};

using unique_error = std::unique_ptr<tarva_abi_error_s, give_up<tarva_abi_free_error>>;
using unique_property = std::unique_ptr<tarva_abi_property_s, give_up<tarva_abi_free_property>>;

inline unique_property error_child(tarva_abi_property_s* root, const char* name) {
  tarva_abi_property_s* child = nullptr;
  tarva_abi_error_s* second = nullptr;
  if (tarva_abi_get_child_property_by_name(nullptr, root, name, &child, &second) != TARVA_ABI_OK)
    tarva_abi_free_error(nullptr, second);
  return unique_property(child);
}

/// What one error object says, as far as it can be read.
inline failure read_failure(tarva_abi_error_s* object) {
  failure result;
  tarva_abi_property_s* root = nullptr;
  tarva_abi_error_s* second = nullptr;
  if (tarva_abi_get_error_root_property(nullptr, object, &root, &second) != TARVA_ABI_OK) {
    tarva_abi_free_error(nullptr, second);
    return result;
  }
  const unique_property owned(root);
  if (const auto kind = error_child(root, "EXCEPTION_TYPE"); kind && kind->data != nullptr)
    result.kind = static_cast<failure_kind>(*static_cast<const std::uint64_t*>(kind->data));
  if (const auto message = error_child(root, "EXCEPTION_MESSAGE"); message && message->data != nullptr)
    result.message = *static_cast<const char* const*>(message->data);
  return result;
}

/// The chain of error objects that begins with `object`, which is given up.
inline std::vector<failure> read_chain(tarva_abi_error_s* object) {
  std::vector<failure> chain;
  for (unique_error current(object); current;) {
    chain.push_back(read_failure(current.get()));
    tarva_abi_error_s *nested = nullptr, *second = nullptr;
    if (tarva_abi_get_nested_error(nullptr, current.get(), &nested, &second) != TARVA_ABI_OK)
      tarva_abi_free_error(nullptr, second);
    current.reset(nested);
  }
  return chain;
}

/// Throws the exception for a result that is a failure. Gives up `object`, which may be null.
[[noreturn]] TARVA_COLD inline void throw_failure(tarva_abi_result code, tarva_abi_error_s* object) {
  std::vector<failure> chain = read_chain(object);
  std::string text;
  for (const failure& one : chain)
    text += (text.empty() ? "" : ": ") + one.message;
  switch (code) {
  case TARVA_ABI_LOGIC_FAILURE:
    throw logic_failure(code, text, std::move(chain));
  case TARVA_ABI_RUNTIME_FAILURE:
    throw runtime_failure(code, text, std::move(chain));
  case TARVA_ABI_OUT_OF_MEMORY:
    throw out_of_memory(code, "Out of memory.", std::move(chain));
  default:
    throw unknown_failure(code, "Unknown failure.", std::move(chain));
  }
}

/// Calls a function of the interface with its arguments between `reserved` and `out_error`.
template <auto Function, class... Arguments>
TARVA_THIN void call(Arguments... arguments) {
  tarva_abi_error_s* object = nullptr;
  const tarva_abi_result code = Function(nullptr, arguments..., &object);
  if (code != TARVA_ABI_OK)
    throw_failure(code, object);
}

} // namespace detail
} // namespace tarva

#endif
