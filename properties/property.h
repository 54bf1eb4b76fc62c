#pragma once

#include "properties/property_base.h"

#include <utility>

namespace oryn::tarva::library {

// What a property of T holds: the type that the user sees and the C++ type of one value.
template <typename T>
struct property_traits;

template <>
struct property_traits<std::string> {
  static constexpr data_type type = data_type::string_;
  using value = std::string;
};

template <>
struct property_traits<bool> {
  static constexpr data_type type = data_type::boolean_;
  using value = std::uint32_t;
};

template <>
struct property_traits<unsigned char> {
  static constexpr data_type type = data_type::uint8_;
  using value = unsigned char;
};

template <>
struct property_traits<unsigned long> {
  static constexpr data_type type = data_type::uint64_;
  using value = std::uint64_t;
};

// A property with a value. A value is always a vector, even for one element.
template <typename T>
class property : public property_base {
public:
  using values_type = std::vector<typename property_traits<T>::value>;

  property(property_interface* owner, property_path path, std::shared_ptr<const property_texts> texts,
           values_type values)
      : property_base(owner, std::move(path), std::move(texts)), values_(std::move(values)) {}

  bool has_data() const override { return true; }
  data_type get_data_type() const override { return property_traits<T>::type; }
  std::uint64_t get_element_count() const override { return values_.size(); }
  const void* get_data() const override { return values_.empty() ? nullptr : values_.data(); }

private:
  values_type values_;
};

// Strings leave the library as an array of pointers, which stands beside the strings themselves.
template <>
class property<std::string> : public property_base {
public:
  using values_type = std::vector<std::string>;

  property(property_interface* owner, property_path path, std::shared_ptr<const property_texts> texts,
           values_type values);

  bool has_data() const override { return true; }
  data_type get_data_type() const override { return data_type::string_; }
  std::uint64_t get_element_count() const override { return values_.size(); }
  const void* get_data() const override { return values_.empty() ? nullptr : value_pointers_.data(); }

private:
  values_type values_;
  std::vector<const char*> value_pointers_;
};

extern template class property<bool>;
extern template class property<unsigned char>;
extern template class property<unsigned long>;

} // namespace oryn::tarva::library
