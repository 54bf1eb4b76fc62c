// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Catalogues: the property tree of a family of objects as a table, and what makes objects answer by it. There are
// three, for devices, programs and kernels, each with a table of its own.
#pragma once

#include "properties/property.h"
#include "properties/property_interface.h"
#include "properties/property_value.h"
#include "properties/version_ranges.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

// One key of a tree: where it hangs, in which versions it exists, where its value comes from, and its texts.
// `source` is the catalogue's own description of that value, which only the objects of the family understand.
template <class Source>
struct catalogue_row {
  std::string_view key;
  std::string_view parent; // empty for the root; a parent's row stands before those of its children
  version_range versions;
  Source source;
  const char* friendly_name;
  const char* description;
  bool is_listed = true; // false: found by its path, but in no list of children
};

// The property tree of one family of objects, made from a table of rows, which it refers to. Made once, by whichever
// thread asks first; then it is never changed, and any thread reads it without a lock.
template <class Source>
class catalogue {
public:
  using row = catalogue_row<Source>;

  // One row in its place. Nodes never move, so that others may point to them, and stand in the order of the rows, since they
  // are read so by whoever walks the tree.
  struct node {
    const row* self;
    const node* parent;
    std::shared_ptr<const property_texts> texts;
    property_labels labels;            // the key, and the same texts
    std::vector<const node*> children; // those that are listed
  };

  // Rows are in the order of the tree's lists. A parent that is not there yet, or a key that is twice there, throws.
  explicit catalogue(std::span<const row> rows) {
    nodes_.reserve(rows.size());
    for (const row& added : rows) {
      node* parent = added.parent.empty() ? nullptr : nodes_by_key_.at(added.parent);
      auto texts = add_texts(added);
      const property_labels labels{added.key, texts->friendly_name, texts->description};
      node& made = nodes_.emplace_back(node{&added, parent, std::move(texts), labels, {}});
      nodes_by_key_.emplace(added.key, &made);
      if (parent != nullptr && added.is_listed)
        parent->children.push_back(&made);
    }
  }
  // The nodes point to each other and to the texts.
  catalogue(const catalogue&) = delete;
  catalogue& operator=(const catalogue&) = delete;

  // The node at a path, or null if an object of that version has no such path. A key stands in one place of its
  // tree only, so the last one leads to the node, and the others must be those on the way up to the root.
  const node* find(version_number version, const property_path& path) const {
    const auto last = path.empty() ? nodes_by_key_.end() : nodes_by_key_.find(path.back());
    if (last == nodes_by_key_.end())
      return nullptr;
    const node* climbed = last->second;
    for (auto key = path.rbegin(); key != path.rend(); ++key, climbed = climbed->parent)
      if (climbed == nullptr || *key != climbed->self->key || !climbed->self->versions.contains(version))
        return nullptr;
    return climbed == nullptr ? last->second : nullptr;
  }

private:
  std::shared_ptr<const property_texts> add_texts(const row& added) {
    const std::string key(added.key);
    dictionary_.add(key, added.friendly_name, added.description);
    return dictionary_.get_texts(key);
  }

  std::vector<node> nodes_;
  std::unordered_map<std::string_view, node*> nodes_by_key_;
  property_dictionary dictionary_;
};

// Gives `Base`, a property_interface, the property tree of a catalogue. What is left to a class derived from it is
// the reading of the values, which serves single properties and walks alike. It adds no state, so it needs no lock:
// any thread may ask, if reading a value allows it.
template <class Base, auto get_catalogue>
class catalogue_owner : public Base {
public:
  using Base::Base;

  // Empty for a path that the catalogue does not have in this version, or whose value this object does not have.
  std::shared_ptr<property_base> get_property(property_path path) final {
    const node* found = get_catalogue().find(get_catalogue_version(), path);
    property_value value;
    if (found == nullptr || !read_value(*found->self, value))
      return std::make_shared<property_base>();
    return make_property(this, std::move(path), found->texts, value);
  }

  // By the catalogue alone: reading no value, it lists children that the object may turn out not to have.
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

  // One value serves the whole walk, and no property is made.
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

  // The version of OpenCL that the object has, as the catalogues count them.
  virtual version_number get_catalogue_version() const = 0;
  // Reads the value of a row as it is now into `value`, which holds none; false if this object has no such
  // property.
  virtual bool read_value(const row& wanted, property_value& value) = 0;

  // Depth first, as the rows stand. `value` is room for one value after another.
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
      visitor.begin(child->labels, value.view());
      if (!child->children.empty())
        visit_below(*child, version, visitor, value);
      visitor.end();
    }
  }
};

} // namespace oryn::tarva::library
