// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

/// @file
/// Property trees: what devices, programs, kernels and memory objects tell of themselves.
#ifndef TARVA_PROPERTY_HPP
#define TARVA_PROPERTY_HPP

#include <tarva/error.hpp>
#include <tarva/view.hpp>

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace tarva {

class property;

namespace detail {

/// Walks children that it owns together with its copies.
class property_iterator {
public:
  property_iterator() = default;
  explicit property_iterator(std::vector<property> children);

  const property& operator*() const;
  const property* operator->() const { return &**this; }
  property_iterator& operator++();
  bool operator!=(const property_iterator& other) const noexcept {
    return (children_ == nullptr) != (other.children_ == nullptr);
  }

private:
  std::shared_ptr<const std::vector<property>> children_{}; // null at the end
  std::size_t index_ = 0;
};

} // namespace detail

/// A named value in a tree, and the way to its children. It keeps alive what it describes.
class property {
public:
  /// Takes over a property that the caller has.
  explicit property(tarva_abi_property_s* owned) noexcept : record_(owned) {}

  const char* name() const noexcept { return record_ ? record_->name : ""; }
  const char* friendly_name() const noexcept { return record_ ? record_->friendly_name : ""; }
  const char* description() const noexcept { return record_ ? record_->description : ""; }
  bool has_value() const noexcept { return record_ && record_->has_data != 0; }
  /// The number of elements of the value; 0 without a value.
  std::size_t size() const noexcept { return record_ ? record_->element_count : 0; }
  /// The type of its elements: TARVA_ABI_TYPE_STRING, _BOOLEAN, _UINT8 or _UINT64; _NONE without a value.
  tarva_abi_data_type type() const noexcept {
    return has_value() ? record_->data_type : tarva_abi_data_type{TARVA_ABI_TYPE_NONE};
  }

  /// One element: a text (std::string, std::string_view), a bool, or a number of any integral type that can hold
  /// it. The string_view is valid as long as the property. Throws std::logic_error if the value is of another
  /// type or has no such element, std::out_of_range if the number does not fit.
  template <class T>
  T get(std::size_t index = 0) const;
  /// All elements.
  template <class T>
  std::vector<T> get_all() const {
    std::vector<T> result;
    for (std::size_t i = 0; i < size(); ++i)
      result.push_back(get<T>(i));
    return result;
  }
  /// The value as a text for people, elements separated by commas.
  std::string value_text() const;

  /// A child. Throws std::out_of_range if there is none of that name.
  property operator[](text name) const {
    property found = child(name);
    if (*found.name() == '\0')
      detail::fail<std::out_of_range>(std::string("There is no property ") + name.c_str() + " below " +
                                      this->name() + '.');
    return found;
  }
  /// A child, or nothing if there is none of that name.
  std::optional<property> find(text name) const {
    property found = child(name);
    return *found.name() == '\0' ? std::nullopt : std::optional(std::move(found));
  }
  /// All children. Fails if one of them cannot be read.
  std::vector<property> children() const;

  /// The children, read when the loop begins.
  detail::property_iterator begin() const { return detail::property_iterator(children()); }
  detail::property_iterator end() const { return {}; }

  /// The property and all below it as the library writes them.
  std::string to_text() const { return write({TARVA_ABI_TREE_TEXT, 1, 1, 0, 0, 0, 1}); }
  std::string to_xml() const { return write({TARVA_ABI_TREE_XML, 1, 0, 0, 0, 0, 0}); }
  /// The same in a form of the caller's choice.
  std::string write(const tarva_abi_tree_format_s& format) const {
    char* written = nullptr;
    if (!call<tarva_abi_get_property_tree_string>(get(), &format, &written))
      return {};
    return std::unique_ptr<char, detail::give_up<tarva_abi_free_property_tree_string>>(written).get();
  }

  /// The handle for the functions of tarva_abi.h, which is a record. It stays owned.
  tarva_abi_property_s* get() const noexcept { return record_.get(); }
  const tarva_abi_property_s* operator->() const noexcept { return record_.get(); }
  /// Gives the property to the caller.
  [[nodiscard]] tarva_abi_property_s* release() noexcept { return record_.release(); }

private:
  /// Without a name if there is none of that name.
  property child(text name) const {
    tarva_abi_property_s* found = nullptr;
    call<tarva_abi_get_child_property_by_name>(get(), name.c_str(), &found);
    return property(found);
  }
  bool require(bool right) const {
    if (!right)
      detail::fail<std::logic_error>(std::string("The property ") + name() +
                                     " has no value of that type or place.");
    return right;
  }

  detail::unique_property record_;
};

template <class T>
T property::get(std::size_t index) const {
  static_assert(std::is_integral_v<T> || std::is_constructible_v<T, const char*>, "no type of a property");
  if (!require(index < size()))
    return T();
  if constexpr (std::is_same_v<T, bool>) {
    return require(type() == TARVA_ABI_TYPE_BOOLEAN) &&
           static_cast<const std::uint32_t*>(record_->data)[index] != 0;
  } else if constexpr (std::is_integral_v<T>) {
    const bool is_byte = type() == TARVA_ABI_TYPE_UINT8;
    if (!require(is_byte || type() == TARVA_ABI_TYPE_UINT64))
      return T();
    const std::uint64_t value = is_byte ? static_cast<const std::uint8_t*>(record_->data)[index]
                                        : static_cast<const std::uint64_t*>(record_->data)[index];
    if (value > static_cast<std::uint64_t>(std::numeric_limits<T>::max()))
      detail::fail<std::out_of_range>("The number " + std::to_string(value) + " of the property " + name() +
                                      " is too large.");
    return static_cast<T>(value);
  } else {
    return require(type() == TARVA_ABI_TYPE_STRING) ? T(static_cast<const char* const*>(record_->data)[index])
                                                    : T();
  }
}

inline std::string property::value_text() const {
  std::string result;
  for (std::size_t i = 0; i < size(); ++i) {
    result += i == 0 ? "" : ", ";
    if (type() == TARVA_ABI_TYPE_STRING)
      result += get<std::string_view>(i);
    else if (type() == TARVA_ABI_TYPE_BOOLEAN)
      result += get<bool>(i) ? "true" : "false";
    else
      result += std::to_string(get<std::uint64_t>(i));
  }
  return result;
}

inline std::vector<property> property::children() const {
  using array = std::unique_ptr<tarva_abi_property_array_s, detail::give_up<tarva_abi_free_property_array>>;
  tarva_abi_property_array_s* record = nullptr;
  std::vector<property> result;
  if (!call<tarva_abi_get_all_children_properties>(get(), &record))
    return result;
  const array owned(record);
  result.reserve(record->count);
  for (std::uint64_t i = 0; i < record->count; ++i)
    if (record->properties[i] != nullptr)
      result.emplace_back(record->properties[i]);
  if (result.size() != record->count)
    detail::fail_with(TARVA_ABI_OUT_OF_MEMORY, {});
  return result;
}

namespace detail {

inline property_iterator::property_iterator(std::vector<property> children)
    : children_(children.empty() ? nullptr
                                 : std::make_shared<const std::vector<property>>(std::move(children))) {}

inline const property& property_iterator::operator*() const {
  return (*children_)[index_];
}

inline property_iterator& property_iterator::operator++() {
  if (++index_ == children_->size())
    children_ = nullptr;
  return *this;
}

/// The root of the tree of an object, by the function of its kind.
template <auto GetRoot, class Record>
property root(Record* of) {
  tarva_abi_property_s* record = nullptr;
  call<GetRoot>(of, &record);
  return property(record);
}

} // namespace detail
} // namespace tarva

#endif
