// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

/// @file
/// Failures as values. In a program that is compiled with -fno-exceptions this is the only way to see them.
#ifndef TARVA_RESULT_HPP
#define TARVA_RESULT_HPP

#include <tarva/error.hpp>

#include <new>
#include <optional>
#include <type_traits>
#include <utility>

namespace tarva {

/// What an action returned, or what it failed with.
template <class T = void>
class result {
public:
  result(T value) : value_(std::move(value)) {}
  result(tarva::error failed) : error_(std::move(failed)) {}

  explicit operator bool() const noexcept { return value_.has_value(); }
  /// Only if there is a value.
  T& operator*() noexcept { return *value_; }
  const T& operator*() const noexcept { return *value_; }
  T* operator->() noexcept { return &*value_; }
  const T* operator->() const noexcept { return &*value_; }
  /// The value, or another one in its place.
  T value_or(T other) const { return value_.value_or(std::move(other)); }
  /// Only if there is no value.
  const tarva::error& error() const noexcept { return *error_; }

private:
  std::optional<T> value_{};
  std::optional<tarva::error> error_{};
};

template <>
class result<void> {
public:
  result() = default;
  result(tarva::error failed) : error_(std::move(failed)) {}

  explicit operator bool() const noexcept { return !error_.has_value(); }
  const tarva::error& error() const noexcept { return *error_; }

private:
  std::optional<tarva::error> error_{};
};

namespace detail {

template <class Action>
auto result_of(Action&& action) -> result<std::invoke_result_t<Action>> {
  if constexpr (std::is_void_v<std::invoke_result_t<Action>>) {
    std::forward<Action>(action)();
    return {};
  } else {
    return std::forward<Action>(action)();
  }
}

#if !TARVA_THROWS
/// While it lives, what fails on this thread is kept here.
class failure_keeper {
public:
  failure_keeper() : outer_(std::exchange(failure_place(), &first_)) {}
  failure_keeper(const failure_keeper&) = delete;
  failure_keeper& operator=(const failure_keeper&) = delete;
  ~failure_keeper() { failure_place() = outer_; }
  const std::optional<error>& first() const noexcept { return first_; }

private:
  std::optional<error> first_{};
  std::optional<error>* outer_;
};
#endif

} // namespace detail

/// Does something, and returns what came of it. An action may consist of several calls, and ends with the first one
/// that fails:
///
///     const auto sum = tarva::attempt([&] { add_up(range, numbers, sums); return sums.read(); });
///     if (!sum)
///       std::puts(sum.error().what());
///
/// Without exceptions the action runs on to its end after a failure, but all calls of this layer do nothing then
/// and return empty objects. A failure outside of an attempt ends such a program, with its text on the standard
/// error stream. All files of a program that use this layer are to be compiled the same way, with exceptions or
/// without.
template <class Action>
auto attempt(Action&& action) -> result<std::invoke_result_t<Action>> {
#if TARVA_THROWS
  try {
    return detail::result_of(std::forward<Action>(action));
  } catch (const error& failed) {
    return failed;
  } catch (const std::bad_alloc&) {
    return error(TARVA_ABI_OUT_OF_MEMORY, "Out of memory.", {});
  } catch (const std::exception& failed) {
    return error(TARVA_ABI_LOGIC_FAILURE, failed.what(), {});
  }
#else
  const detail::failure_keeper keeper;
  auto made = detail::result_of(std::forward<Action>(action));
  if (keeper.first())
    return *keeper.first();
  return made;
#endif
}

} // namespace tarva

#endif
