// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

/// @file
/// Kernels, which are called like functions.
#ifndef TARVA_KERNEL_HPP
#define TARVA_KERNEL_HPP

#include <tarva/handle.hpp>
#include <tarva/memory.hpp>
#include <tarva/property.hpp>
#include <tarva/range.hpp>
#include <tarva/types.hpp>
#include <tarva/view.hpp>

#include <array>
#include <cstddef>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

namespace tarva {

/// An argument: memory local to each work-group, for so many elements.
template <class T>
class local {
  static_assert(is_element<T>, "OpenCL has no such type");

public:
  explicit constexpr local(count size) noexcept : count_(size) {}
  constexpr std::uint64_t size() const noexcept { return count_; }

private:
  std::uint64_t count_;
};

/// The records of arguments, for lists whose length is known at run time only. That of a value points to it.
template <class T>
tarva_abi_kernel_argument_s argument(const T& value) noexcept {
  static_assert(is_element<T>, TARVA_NO_VALUE);
  return {TARVA_ABI_ARGUMENT_VALUE, element<T>::type, reinterpret_cast<std::uintptr_t>(&value)};
}
inline tarva_abi_kernel_argument_s argument(const memory_handle& object) noexcept {
  return {TARVA_ABI_ARGUMENT_MEMORY, reinterpret_cast<std::uintptr_t>(object.get()), 0};
}
template <class T>
tarva_abi_kernel_argument_s argument(const memory<T>& object) noexcept {
  return argument(static_cast<const memory_handle&>(object));
}
template <class T>
tarva_abi_kernel_argument_s argument(const local<T>& size) noexcept {
  return {TARVA_ABI_ARGUMENT_LOCAL_MEMORY, element<T>::type, size.size()};
}
inline tarva_abi_kernel_argument_s argument(std::nullptr_t) noexcept {
  return {TARVA_ABI_ARGUMENT_NULL, 0, 0};
}

namespace detail {

/// Whether every value of From is one of To; or, for a To with fractions, has one near it.
template <class To, class From>
inline constexpr bool always_fits = std::is_floating_point_v<To>
                                        ? std::is_integral_v<From> || sizeof(To) >= sizeof(From)
                                        : (std::is_signed_v<To> == std::is_signed_v<From>
                                               ? sizeof(To) >= sizeof(From)
                                               : std::is_signed_v<To> && sizeof(To) > sizeof(From));

template <class To, class From>
constexpr bool fits(From value) noexcept {
  if constexpr (always_fits<To, From>)
    return true;
  else if constexpr (std::is_floating_point_v<From>) // infinities and what is no number stay what they are
    return !(value > std::numeric_limits<To>::max() || value < std::numeric_limits<To>::lowest()) ||
           value > std::numeric_limits<From>::max() || value < std::numeric_limits<From>::lowest();
  else if constexpr (std::is_signed_v<From>)
    return value >= 0 ? static_cast<std::make_unsigned_t<From>>(value) <=
                            static_cast<std::make_unsigned_t<To>>(std::numeric_limits<To>::max())
                      : std::is_signed_v<To> && value >= static_cast<From>(std::numeric_limits<To>::min());
  else
    return value <= static_cast<std::make_unsigned_t<To>>(std::numeric_limits<To>::max());
}

/// A parameter of a typed kernel: what it can be made from is what the kernel takes there. It does not know which
/// parameter it is, so that what cannot be one is told by the call.
template <class T>
class parameter {
  static_assert(is_element<T>, TARVA_NO_VALUE);
  /// Numbers are converted, but no fraction is dropped.
  template <class From>
  using if_number = std::enable_if_t<std::is_arithmetic_v<T> && std::is_arithmetic_v<From> &&
                                     !std::is_same_v<From, T> && !std::is_same_v<From, bool> &&
                                     (std::is_floating_point_v<T> || std::is_integral_v<From>)>;

public:
  template <class Same, std::enable_if_t<std::is_same_v<Same, T>, int> = 0>
  parameter(const Same& value) noexcept : value_(value) {}
  template <class From, class = if_number<From>>
  parameter(From value) : value_(fits<T>(value) ? static_cast<T>(value) : T()) {
    if (!fits<T>(value))
      misfit_ = std::make_unique<std::string>(std::to_string(value));
  }
  tarva_abi_kernel_argument_s record() const noexcept { return argument(value_); }
  /// The number that was given, if it is not one of T.
  const std::string* misfit() const noexcept { return misfit_.get(); }

private:
  T value_;
  std::unique_ptr<std::string> misfit_;
};

template <class T>
class parameter<memory<T>> {
public:
  parameter(const memory<T>& object) noexcept : record_(argument(object)) {}
  parameter(std::nullptr_t) noexcept : record_(argument(nullptr)) {}
  tarva_abi_kernel_argument_s record() const noexcept { return record_; }
  static constexpr const std::string* misfit() noexcept { return nullptr; }

private:
  tarva_abi_kernel_argument_s record_;
};

template <class T>
class parameter<local<T>> {
public:
  parameter(local<T> size) noexcept : size_(size) {}
  tarva_abi_kernel_argument_s record() const noexcept { return argument(size_); }
  static constexpr const std::string* misfit() noexcept { return nullptr; }

private:
  local<T> size_;
};

/// Which memory object among the arguments cannot be used any more, if one cannot.
inline std::string explain_arguments(view<const tarva_abi_kernel_argument_s> arguments, bool one_is_unknown) {
  std::string text;
  for (std::size_t i = 0; i < arguments.size() && text.empty(); ++i)
    if (arguments[i].kind == TARVA_ABI_ARGUMENT_MEMORY)
      // NOLINTNEXTLINE(performance-no-int-to-ptr): the record holds the handle as a number
      text = explain(reinterpret_cast<tarva_abi_memory_s*>(arguments[i].first), one_is_unknown,
                     " of argument " + std::to_string(i));
  return text;
}

TARVA_FAILS inline void fail_launch(tarva_abi_result code, tarva_abi_error_s* object,
                                    view<const tarva_abi_kernel_argument_s> arguments) {
  std::vector<failure> chain = read_error(code, object);
  const bool one_is_unknown = knows_no_handle(chain);
  const std::string text = explain_arguments(arguments, one_is_unknown);
  fail_with(code, std::move(chain),
            text.empty() && one_is_unknown ? "The kernel is empty or has been given up." : text);
}

/// As call_with, but it keeps the arguments and not the kernel.
TARVA_THIN void launch(tarva_abi_kernel_s* kernel, const range& over,
                       view<const tarva_abi_kernel_argument_s> arguments) {
  if (has_failed())
    return;
  struct {
    const tarva_abi_kernel_argument_s* arguments;
    tarva_abi_error_s* object;
  } of_call;
  of_call.arguments = arguments.data();
  const tarva_abi_result code = tarva_abi_kernel_call(nullptr, kernel, of_call.arguments, arguments.size(),
                                                      &over.record(), &of_call.object);
  if (code != TARVA_ABI_OK)
    fail_launch(code, of_call.object, {of_call.arguments, arguments.size()});
}

template <std::size_t Count>
TARVA_THIN void launch_with(tarva_abi_kernel_s* kernel, const range& over,
                            const std::array<tarva_abi_kernel_argument_s, Count>& arguments) {
  launch(kernel, over, arguments);
}

} // namespace detail

/// A kernel whose arguments are taken as they are: a value has to be of exactly the parameter's type. One of another
/// size is refused, but an int for a float is not: tarva::function is safer.
class kernel : public handle<tarva_abi_kernel_s, tarva_abi_retain_kernel, tarva_abi_release_kernel> {
public:
  using handle::handle;

  /// Launches it, and returns when the launch has ended.
  template <class... Arguments>
  void operator()(const range& over, const Arguments&... arguments) const {
    detail::launch_with<sizeof...(Arguments)>(get(), over, {argument(arguments)...});
  }
  /// The same with a list, of what tarva::argument makes.
  void launch(const range& over, view<const tarva_abi_kernel_argument_s> arguments) const {
    detail::launch(get(), over, arguments);
  }

  property properties() const { return detail::root<tarva_abi_get_kernel_root_property>(get()); }
};

/// A kernel with its parameters: an element type for each value, memory<T> for each buffer, local<T> for each
/// block of local memory. Arguments are checked when the program is compiled, and numbers are converted.
template <class... Parameters>
class function {
public:
  /// Empty.
  function() noexcept = default;
  /// Throws std::invalid_argument if the kernel has another number of parameters.
  explicit function(kernel of) : kernel_(std::move(of)) {
    // NOLINTNEXTLINE(bugprone-sizeof-expression): only a complete type has a size
    static_assert(((sizeof(detail::parameter<Parameters>) > 0) && ...),
                  "one of these is no type of a parameter");
    if (!kernel_)
      return;
    const property tree = kernel_.properties();
    const auto count = tree["OPENCL"]["CL_KERNEL_NUM_ARGS"].template get<std::uint64_t>();
    if (count != sizeof...(Parameters))
      detail::fail<std::invalid_argument>("The kernel " + tree["KERNEL_NAME"].template get<std::string>() +
                                          " has " + std::to_string(count) + " parameters, not " +
                                          std::to_string(sizeof...(Parameters)) + '.');
  }

  /// Launches it, and returns when the launch has ended. Throws std::out_of_range if a parameter cannot hold the
  /// number that it is given.
  void operator()(const range& over, const detail::parameter<Parameters>&... arguments) const {
    if constexpr (sizeof...(Parameters) != 0)
      if ((arguments.misfit() || ...)) {
        fail_misfit({arguments.misfit()...});
        return;
      }
    detail::launch_with<sizeof...(Parameters)>(kernel_.get(), over, {arguments.record()...});
  }

  /// Whether there is a kernel.
  explicit operator bool() const noexcept { return static_cast<bool>(kernel_); }

  const kernel& untyped() const noexcept { return kernel_; }

private:
  TARVA_COLD void fail_misfit(const std::array<const std::string*, sizeof...(Parameters)>& misfits) const {
    std::size_t index = 0;
    while (!misfits[index])
      ++index;
    detail::fail<std::out_of_range>("Parameter " + std::to_string(index) + " of the kernel " +
                                    kernel_.properties()["KERNEL_NAME"].template get<std::string>() +
                                    " cannot hold " + *misfits[index] + '.');
  }

  kernel kernel_;
};

} // namespace tarva

#endif
