#pragma once

#include "properties/property_base.h"
#include "properties/property_value.h"

#include <memory>
#include <string>
#include <utility>

namespace oryn::tarva::library {

// A property with the value that `value` holds, if any. std::logic_error for an empty path.
std::shared_ptr<property_base> make_property(property_interface* owner, property_path path,
                                             std::shared_ptr<const property_texts> texts,
                                             property_value& value);

// A property with texts of its own; `value` is nothing, or one value that a property_value can be set to.
template <typename... T>
std::shared_ptr<property_base> make_described_property(property_interface* owner, property_path path,
                                                       const std::string& friendly_name,
                                                       const std::string& description, T... value) {
  property_value held;
  (held.set(std::move(value)), ...);
  auto texts = std::make_shared<const property_texts>(property_texts{friendly_name, description});
  return make_property(owner, std::move(path), std::move(texts), held);
}

} // namespace oryn::tarva::library
