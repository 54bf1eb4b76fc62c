#pragma once

#include "properties/property.h"
#include "properties/property_dictionary.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

// The last key of a path; std::logic_error for an empty path.
const std::string& get_field_name(const property_path& path);

// The values a property is made from; each hands back the property class and its vector.
template <typename T>
struct property_values {
  typename property<T>::values_type values;
};

property_values<unsigned long> to_property_values(std::uint64_t value);
property_values<unsigned long> to_property_values(std::uint32_t value);
property_values<unsigned long> to_property_values(const std::array<std::uint64_t, 3>& values);
property_values<bool> to_property_values(bool value);
property_values<std::string> to_property_values(std::string value);
property_values<std::string> to_property_values(const char*) = delete; // it would become a bool
property_values<std::string> to_property_values(std::vector<std::string> values);
property_values<unsigned char> to_property_values(std::vector<unsigned char> values);

std::shared_ptr<property_base> make_property_with_texts(property_interface* owner, const property_path& path,
                                                        std::shared_ptr<const property_texts> texts);

template <typename T>
std::shared_ptr<property_base> make_property_with_texts(property_interface* owner, const property_path& path,
                                                        std::shared_ptr<const property_texts> texts,
                                                        T value) {
  get_field_name(path);
  auto converted = to_property_values(std::move(value));
  const auto make = [&]<typename P>(property_values<P>& made) {
    return std::make_shared<property<P>>(owner, path, std::move(texts), std::move(made.values));
  };
  return make(converted);
}

// Properties whose texts the caller gives; `value` is nothing, or one value that `to_property_values` takes.
template <typename... T>
std::shared_ptr<property_base> make_described_property(property_interface* owner, const property_path& path,
                                                       const std::string& friendly_name,
                                                       const std::string& description, T... value) {
  auto texts = std::make_shared<const property_texts>(property_texts{friendly_name, description});
  return make_property_with_texts(owner, path, std::move(texts), std::move(value)...);
}

// Properties whose texts stand in the dictionary of their family.
template <typename... T>
std::shared_ptr<property_base> make_property(const property_dictionary& dictionary, property_interface* owner,
                                             const property_path& path, T... value) {
  return make_property_with_texts(owner, path, dictionary.get_texts(get_field_name(path)),
                                  std::move(value)...);
}

} // namespace oryn::tarva::library
