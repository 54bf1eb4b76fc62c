// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

/// @file
/// The failures that the library reports: exceptions, or results in a program without exceptions.
#ifndef TARVA_ERROR_HPP
#define TARVA_ERROR_HPP

#include <tarva_abi.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

// What is thin stays thin, and what fails stays out of the way.
#if defined(__GNUC__)
#define TARVA_THIN __attribute__((always_inline)) inline
#define TARVA_COLD __attribute__((cold, noinline))
#else
#define TARVA_THIN inline
#define TARVA_COLD
#endif

// Under -fno-exceptions a failure is what tarva::attempt returns, or the end of the process; see tarva/result.hpp.
#if defined(__cpp_exceptions)
#define TARVA_THROWS 1
#define TARVA_FAILS [[noreturn]] TARVA_COLD
#else
#define TARVA_THROWS 0
#define TARVA_FAILS TARVA_COLD
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

/// A failure that the library reports. what() tells the whole chain in one line, and what this layer knows of the
/// objects and arguments behind it.
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

/// The call makes no sense.
class logic_failure : public error {
  using error::error;
};
/// The call could not be carried out.
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
  /// `program`, `options` and `advice` are for what(), and may be empty.
  explicit build_failure(std::string log, const std::string& program = "", const std::string& options = "",
                         const std::string& advice = "")
      : error(TARVA_ABI_OK,
              "The program " + (program.empty() ? "" : program + ' ') + "does not build" +
                  (options.empty() ? "" : " with the options " + options) + (log.empty() ? "." : ": " + log) +
                  (advice.empty() ? "" : ' ' + advice),
              {}),
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

#if TARVA_THROWS
constexpr bool has_failed() noexcept {
  return false;
}

template <class Failure, class... Arguments>
TARVA_FAILS void fail(Arguments&&... arguments) {
  throw Failure(std::forward<Arguments>(arguments)...);
}
#else
/// Where the innermost tarva::attempt of the thread keeps its first failure.
inline std::optional<error>*& failure_place() noexcept {
  static thread_local std::optional<error>* place = nullptr;
  return place;
}

/// Whether the innermost tarva::attempt has failed, so that what is left of it must do nothing.
inline bool has_failed() noexcept {
  return failure_place() != nullptr && failure_place()->has_value();
}

inline error as_error(error&& failed) {
  return std::move(failed);
}
inline error as_error(const std::exception& failed) {
  return {TARVA_ABI_LOGIC_FAILURE, failed.what(), {}};
}

template <class Failure, class... Arguments>
TARVA_FAILS void fail(Arguments&&... arguments) {
  Failure failed(std::forward<Arguments>(arguments)...);
  std::optional<error>* const place = failure_place();
  if (place == nullptr) {
    std::fprintf(stderr, "tarva: %s\n", failed.what());
    std::abort();
  }
  if (!place->has_value())
    place->emplace(as_error(std::move(failed)));
}
#endif

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

} // namespace detail

/// What an error object of tarva_abi.h says, and what those behind it say. Gives up `object`, which may be null.
inline std::vector<failure> read_error(tarva_abi_error_s* object) {
  std::vector<failure> chain;
  for (detail::unique_error current(object); current;) {
    chain.push_back(detail::read_failure(current.get()));
    tarva_abi_error_s *nested = nullptr, *second = nullptr;
    if (tarva_abi_get_nested_error(nullptr, current.get(), &nested, &second) != TARVA_ABI_OK)
      tarva_abi_free_error(nullptr, second);
    current.reset(nested);
  }
  return chain;
}

namespace detail {

/// What the handles of each kind are called, and how to find out whether the library still knows one.
template <class Record>
struct handle_kind {
  static constexpr const char* name = nullptr; // no handle
};
template <auto GetRoot>
struct handle_with_tree {
  template <class Record>
  static bool is_known(Record* handle) {
    tarva_abi_property_s* root = nullptr;
    tarva_abi_error_s* failed = nullptr;
    if (GetRoot(nullptr, handle, &root, &failed) != TARVA_ABI_OK)
      tarva_abi_free_error(nullptr, failed);
    return unique_property(root) != nullptr;
  }
};
/// The only handle of the calls that take it.
struct only_handle {
  static bool is_known(const void*) noexcept { return false; }
};
template <>
struct handle_kind<tarva_abi_device_s*> : handle_with_tree<tarva_abi_get_device_root_property> {
  static constexpr const char* name = "device";
};
template <>
struct handle_kind<tarva_abi_program_s*> : handle_with_tree<tarva_abi_get_program_root_property> {
  static constexpr const char* name = "program";
};
template <>
struct handle_kind<tarva_abi_kernel_s*> : handle_with_tree<tarva_abi_get_kernel_root_property> {
  static constexpr const char* name = "kernel";
};
template <>
struct handle_kind<tarva_abi_memory_s*> : handle_with_tree<tarva_abi_get_memory_root_property> {
  static constexpr const char* name = "memory object";
};
template <>
struct handle_kind<tarva_abi_property_s*> : only_handle {
  static constexpr const char* name = "property";
};
template <class Argument>
constexpr auto kept(Argument argument) noexcept {
  if constexpr (handle_kind<Argument>::name != nullptr)
    return std::tuple<Argument>(argument);
  else
    return std::tuple<>();
}

/// Says that a handle cannot be used any more, or nothing. Asks the library only where it did not know one.
template <class Handle>
std::string explain(Handle handle, bool one_is_unknown, const std::string& place = "") {
  const std::string what = "The " + std::string(handle_kind<Handle>::name) + place;
  if (handle == nullptr)
    return what + " is empty: it was moved from or given up, or never made.";
  return one_is_unknown && !handle_kind<Handle>::is_known(handle) ? what + " has been given up." : "";
}

inline bool knows_no_handle(const std::vector<failure>& chain) {
  return !chain.empty() && chain.front().message == "Lookup of internal type map failed.";
}

/// The messages of a chain, and what is to be added to them.
inline std::string whole_text(const std::vector<failure>& chain, const std::string& addition) {
  std::string text;
  for (const failure& one : chain)
    text += (text.empty() ? "" : ": ") + one.message;
  return text.empty() || addition.empty() ? text + addition : text + ' ' + addition;
}

/// The exception for a result that is a failure.
TARVA_FAILS inline void fail_with(tarva_abi_result code, std::vector<failure> chain,
                                  const std::string& addition = "") {
  const std::string text = whole_text(chain, addition);
  if (code == TARVA_ABI_LOGIC_FAILURE)
    fail<logic_failure>(code, text, std::move(chain));
  else if (code == TARVA_ABI_RUNTIME_FAILURE)
    fail<runtime_failure>(code, text, std::move(chain));
  else if (code == TARVA_ABI_OUT_OF_MEMORY)
    fail<out_of_memory>(code, "Out of memory.", std::move(chain));
  else
    fail<unknown_failure>(
        code,
        "Unknown failure. So fail all calls after the library has stopped, and in a process "
        "that was forked off one that had used it.",
        std::move(chain));
}

struct add_nothing {
  std::string operator()(tarva_abi_result, const std::vector<failure>&) const { return {}; }
};

/// With these two results alone there is an error object.
inline std::vector<failure> read_error(tarva_abi_result code, tarva_abi_error_s* object) {
  return code == TARVA_ABI_LOGIC_FAILURE || code == TARVA_ABI_RUNTIME_FAILURE ? tarva::read_error(object)
                                                                              : std::vector<failure>();
}

template <class Addition, class... Handles>
TARVA_FAILS void fail_call(tarva_abi_result code, tarva_abi_error_s* object, Addition addition,
                           Handles... handles) {
  std::vector<failure> chain = read_error(code, object);
  std::string text = addition(code, chain);
  [[maybe_unused]] const bool one_is_unknown = knows_no_handle(chain);
  ((text = text.empty() ? explain(handles, one_is_unknown) : text), ...);
  fail_with(code, std::move(chain), text);
}

/// What a call that fails is told by.
template <class... Handles>
struct call_record {
  explicit call_record(std::tuple<Handles...> of) noexcept : handles(of) {}
  // They stand beside what the library writes to: kept in a register they would cost more.
  std::tuple<Handles...> handles;
  tarva_abi_error_s* object; // written by a call that fails, and by no other
};

/// Calls a function of the interface. Should it fail, `addition`, which is given the result and the chain of errors,
/// tells what to add to the message. Returns whether there is a result; with exceptions there always is. What fails
/// takes everything by value, so that what succeeds need not have it in memory.
template <auto Function, class Addition, class... Arguments>
TARVA_THIN bool call_with(Addition addition, Arguments... arguments) {
  if (has_failed())
    return false;
  call_record of_call(std::tuple_cat(kept(arguments)...));
  const tarva_abi_result code = Function(nullptr, arguments..., &of_call.object);
  if (code == TARVA_ABI_OK)
    return true;
  std::apply([&](auto... handles) { fail_call(code, of_call.object, addition, handles...); },
             of_call.handles);
  return false;
}

} // namespace detail

/// Calls a function of tarva_abi.h with its arguments between `reserved` and `out_error`, and throws what it fails
/// with. For what the classes of this layer do not have.
template <auto Function, class... Arguments>
TARVA_THIN bool call(Arguments... arguments) {
  return detail::call_with<Function>(detail::add_nothing(), arguments...);
}

} // namespace tarva

#endif
