/// @file
/// Arguments that are only looked at: elements in a row, and texts.
#ifndef TARVA_VIEW_HPP
#define TARVA_VIEW_HPP

#include <cstddef>
#include <iterator>
#include <string>
#include <type_traits>

namespace tarva {

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
