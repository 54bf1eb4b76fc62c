// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

/// @file
/// Arguments that are only looked at: counts, elements in a row, and texts.
#ifndef TARVA_VIEW_HPP
#define TARVA_VIEW_HPP

#include <tarva/error.hpp>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

// What a compiler can be told to say of constants.
#if defined(__clang__)
#define TARVA_REFUSE_IF(condition, words)                                                                    \
  _Pragma("clang diagnostic push") _Pragma("clang diagnostic ignored \"-Wgcc-compat\"")                      \
      __attribute__((diagnose_if(condition, words, "error"))) _Pragma("clang diagnostic pop")
#else
#define TARVA_REFUSE_IF(condition, words)
#endif

namespace tarva {

namespace detail {
// What g++ says of a constant, once it sees that one: from -O1 on.
#if defined(__GNUC__) && !defined(__clang__)
[[gnu::error("a count is not below 0")]] void refuse_count_below_zero();
#endif
} // namespace detail

/// A number of elements, work-items or groups: of any integral type, and not below 0. What is below 0 throws
/// std::out_of_range, and as a constant it does not compile with clang, nor with g++ when it optimises.
class count {
public:
  template <class Number,
            class = std::enable_if_t<std::is_integral_v<Number> && !std::is_same_v<Number, bool>>>
  TARVA_THIN constexpr count(Number number) TARVA_REFUSE_IF(number < 0, "a count is not below 0")
      : value_(static_cast<std::uint64_t>(number)) {
    if constexpr (std::is_signed_v<Number>)
      if (number < 0) {
#if defined(__GNUC__) && !defined(__clang__)
        if (__builtin_constant_p(number))
          detail::refuse_count_below_zero();
#endif
        refuse(number);
      }
  }
  constexpr operator std::uint64_t() const noexcept {
    return value_;
  }

private:
  TARVA_FAILS static void refuse(long long number) {
    detail::fail<std::out_of_range>("A count cannot be " + std::to_string(number) + '.');
  }

  std::uint64_t value_;
};

/// Elements in a row that someone else owns: std::span, for C++17. Made from arrays and from everything that has
/// data() and size(); a view of elements that may be changed is not made from a temporary.
template <class T>
class view {
  template <class Container>
  using data_of = std::remove_pointer_t<decltype(std::data(std::declval<Container&>()))>;
  template <class Container>
  using if_fits =
      std::enable_if_t<std::is_convertible_v<data_of<std::remove_reference_t<Container>> (*)[], T (*)[]> &&
                       (std::is_lvalue_reference_v<Container> ||
                        std::is_const_v<T>)&&!std::is_same_v<std::decay_t<Container>, view>>;

public:
  constexpr view(T* data, std::size_t size) noexcept : data_(data), size_(size) {}
  template <class Container, class = if_fits<Container>>
  constexpr view(Container&& of) noexcept : data_(std::data(of)), size_(std::size(of)) {}

  constexpr T* data() const noexcept { return data_; }
  constexpr std::size_t size() const noexcept { return size_; }
  constexpr T* begin() const noexcept { return data_; }
  constexpr T* end() const noexcept { return data_ + size_; }
  constexpr T& operator[](std::size_t index) const noexcept { return data_[index]; }

private:
  T* data_;
  std::size_t size_;
};

/// The bytes of a container, as of a file's content or a module.
template <class Container>
view<const std::byte> as_bytes(const Container& of) noexcept {
  return {reinterpret_cast<const std::byte*>(std::data(of)), std::size(of) * sizeof *std::data(of)};
}

/// The bytes of one object, such as a structure that a kernel reads from a memory object:
/// `tarva::memory<std::byte>(tarva::bytes_of(settings))`.
template <class T>
view<const std::byte> bytes_of(const T& object) noexcept {
  static_assert(std::is_trivially_copyable_v<T>, "an object with parts of its own is more than its bytes");
  return {reinterpret_cast<const std::byte*>(&object), sizeof object};
}

/// A text that ends with a zero, from a literal or a std::string.
class text {
public:
  constexpr text(const char* from) noexcept : start_(from) {}
  text(const std::string& from) noexcept : start_(from.c_str()) {}
  constexpr const char* c_str() const noexcept { return start_; }

private:
  const char* start_;
};

} // namespace tarva

#endif
