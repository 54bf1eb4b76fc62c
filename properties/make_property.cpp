#include "properties/make_property.h"

#include <stdexcept>

namespace oryn::tarva::library {

const std::string& get_field_name(const property_path& path) {
  if (path.empty()) {
    throw std::logic_error("Expected path to be non-empty.");
  }
  return path.back();
}

property_values<unsigned long> to_property_values(std::uint64_t value) {
  return {{value}};
}

property_values<unsigned long> to_property_values(std::uint32_t value) {
  return {{std::uint64_t{value}}};
}

property_values<unsigned long> to_property_values(const std::array<std::uint64_t, 3>& values) {
  return {{values.begin(), values.end()}};
}

property_values<bool> to_property_values(bool value) {
  return {{value ? 1u : 0u}};
}

property_values<std::string> to_property_values(std::string value) {
  property_values<std::string> result;
  result.values.push_back(std::move(value));
  return result;
}

property_values<std::string> to_property_values(std::vector<std::string> values) {
  return {std::move(values)};
}

property_values<unsigned char> to_property_values(std::vector<unsigned char> values) {
  return {std::move(values)};
}

std::shared_ptr<property_base> make_property_with_texts(property_interface* owner, const property_path& path,
                                                        std::shared_ptr<const property_texts> texts) {
  get_field_name(path);
  return std::make_shared<property_base>(owner, path, std::move(texts));
}

} // namespace oryn::tarva::library
