#pragma once

#include "properties/catalogue.h"
#include "properties/make_property.h"

#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

// Gives `base` the property tree of a catalogue. What is left to a class derived from it is the reading of the
// values, which serves single properties and walks alike.
template <typename base, auto get_catalogue>
class catalogue_owner : public base {
public:
  using base::base;

  std::shared_ptr<property_base> get_property(property_path path) final {
    const node* found = get_catalogue().find(get_catalogue_version(), path);
    property_value value;
    if (found == nullptr || !read_value(*found->self, value))
      return std::make_shared<property_base>();
    return make_property(this, std::move(path), found->texts, value);
  }

  std::vector<std::string> get_child_names(const property_path& path) final {
    const version_number version = get_catalogue_version();
    std::vector<std::string> names;
    if (const node* found = get_catalogue().find(version, path)) {
      names.reserve(found->children.size());
      for (const node* child : found->children)
        if (child->self->versions.contains(version))
          names.emplace_back(child->self->key);
    }
    return names;
  }

  void visit_descendants(const property_path& path, property_visitor& visitor) final {
    const version_number version = get_catalogue_version();
    if (const node* found = get_catalogue().find(version, path)) {
      property_value value;
      visit_below(*found, version, visitor, value);
    }
  }

private:
  using catalogue_type = std::remove_cvref_t<decltype(get_catalogue())>;
  using row = typename catalogue_type::row;
  using node = typename catalogue_type::node;

  virtual version_number get_catalogue_version() const = 0;
  // Reads the value of a row as it is now into `value`, which holds none; false if this object has no such
  // property.
  virtual bool read_value(const row& wanted, property_value& value) = 0;

  // `value` is room for one value after another.
  void visit_below(const node& parent, version_number version, property_visitor& visitor,
                   property_value& value) {
    for (const node* child : parent.children) {
      if (!child->self->versions.contains(version))
        continue;
      value.clear();
      if (!read_value(*child->self, value)) {
        visitor.visit_empty();
        continue;
      }
      visitor.begin({child->self->key, child->texts->friendly_name, child->texts->description, value.view()});
      visit_below(*child, version, visitor, value);
      visitor.end();
    }
  }
};

} // namespace oryn::tarva::library
