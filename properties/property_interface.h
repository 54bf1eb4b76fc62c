#pragma once

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace oryn::tarva::library {

class property_base;
class property_visitor;

// The keys from the root of the tree down to one property; the first is always "ROOT".
using property_path = std::vector<std::string>;

inline bool is_path(const property_path& path, std::initializer_list<std::string_view> keys) {
  return std::equal(path.begin(), path.end(), keys.begin(), keys.end());
}

// Base of everything that has a property tree. The tree is not stored: each question is answered from the
// object's present state.
class property_interface {
public:
  virtual ~property_interface() = default;

  // An unknown path gives an empty property, never a null pointer.
  virtual std::shared_ptr<property_base> get_property(property_path path) = 0;
  virtual std::vector<std::string> get_child_names(const property_path& path) = 0;
  // Shows everything below the property at `path`: what the other two would give, in the same order. To be
  // overridden where this can be had for less.
  virtual void visit_descendants(const property_path& path, property_visitor& visitor);
};

} // namespace oryn::tarva::library
