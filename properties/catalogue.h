#pragma once

#include "properties/data_type.h"
#include "properties/property_dictionary.h"
#include "properties/property_interface.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace oryn::tarva::library {

// OpenCL versions by number, 1 for 1.0 to 6 for 2.2. 0 is an object that stands for nothing of OpenCL.
using version_number = std::uint32_t;

struct version_range {
  version_number first;
  version_number last;

  constexpr bool contains(version_number version) const { return first <= version && version <= last; }
};

// One key of a tree: where it hangs, in which versions it exists, where its value comes from, and its texts.
// `source` is the catalogue's own description of that value; `value_type(source)` says what type it has.
template <typename source_type>
struct catalogue_row {
  std::string_view key;
  std::string_view parent; // empty for the root; a parent's row stands before those of its children
  version_range versions;
  source_type source;
  const char* friendly_name;
  const char* description;
  bool is_listed = true; // false: found by its path, but in no list of children
};

// The property tree of one family of objects, made from a table of rows. Never changed after construction.
template <typename source_type>
class catalogue {
public:
  using row = catalogue_row<source_type>;

  struct node {
    const row* self;
    const node* parent;
    std::shared_ptr<const property_texts> texts;
    std::vector<const node*> children; // those that are listed
  };

  explicit catalogue(std::span<const row> rows) {
    nodes_.reserve(rows.size());
    for (const row& added : rows) {
      node* parent = added.parent.empty() ? nullptr : &nodes_.at(added.parent);
      node& made = nodes_.emplace(added.key, node{&added, parent, add_texts(added), {}}).first->second;
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
    const auto last = path.empty() ? nodes_.end() : nodes_.find(path.back());
    if (last == nodes_.end())
      return nullptr;
    const node* step = &last->second;
    for (auto key = path.rbegin(); key != path.rend(); ++key, step = step->parent)
      if (step == nullptr || *key != step->self->key || !step->self->versions.contains(version))
        return nullptr;
    return step == nullptr ? &last->second : nullptr;
  }

private:
  std::shared_ptr<const property_texts> add_texts(const row& added) {
    const std::string key(added.key);
    if (const std::optional<data_type> type = value_type(added.source))
      dictionary_.add(key, added.friendly_name, added.description, *type);
    else
      dictionary_.add(key, added.friendly_name, added.description);
    return dictionary_.get_texts(key);
  }

  std::unordered_map<std::string_view, node> nodes_;
  property_dictionary dictionary_;
};

} // namespace oryn::tarva::library
