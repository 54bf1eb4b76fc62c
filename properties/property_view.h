#pragma once

#include "properties/data_type.h"

#include <cstdint>
#include <string_view>

namespace oryn::tarva::library {

// A value where it lies. Strings are an array of pointers.
struct value_view {
  data_type type{}; // 0: no value
  std::uint64_t element_count = 0;
  const void* data = nullptr;

  bool has_data() const { return type != data_type{}; }
};

// One property as a visitor sees it, for as long as the call lasts.
struct property_view {
  std::string_view name;
  std::string_view friendly_name;
  std::string_view description;
  value_view value;
};

// Is told of properties one by one, in the order of their tree.
class property_visitor {
public:
  virtual ~property_visitor() = default;

  // What comes until the matching end() is below this property.
  virtual void begin(const property_view& property) = 0;
  virtual void end() = 0;
  // A child that is listed, but not there.
  virtual void visit_empty() = 0;
};

} // namespace oryn::tarva::library
