// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "tools/tarva-info/property_tree.h"

#include "tools/tarva-info/known_keys.h"
#include "tools/tarva-info/text.h"

#include <algorithm>
#include <cctype>
#include <optional>

namespace tarva_info {
namespace {

property_value value_of(const tarva::property& property) {
  switch (property.type()) {
  case TARVA_ABI_TYPE_STRING:
    return property.get_all<std::string>();
  case TARVA_ABI_TYPE_BOOLEAN:
    return property.get_all<bool>();
  case TARVA_ABI_TYPE_NONE:
    return {};
  default:
    return property.get_all<std::uint64_t>();
  }
}

// The names of children can only be had with all their values, so where one value cannot be read the children
// are asked for by the names that they are known to have.
std::vector<property_node> read_known_children(const tarva::property& parent) {
  std::vector<property_node> children;
  for (const known_key& each : all_known_keys()) {
    if (each.parent != parent.name())
      continue;
    const std::string key(each.key);
    try {
      if (const auto child = parent.find(key))
        children.push_back(read_tree(*child));
    } catch (const tarva::error& failure) {
      children.push_back({key, {}, {}, failure.what(), {}});
    }
  }
  return children;
}

std::vector<property_node> read_children(const tarva::property& parent) {
  std::vector<tarva::property> found;
  try {
    found = parent.children();
  } catch (const tarva::error&) {
    return read_known_children(parent);
  }
  std::vector<property_node> children;
  for (const tarva::property& child : found)
    if (*child.name() != '\0') // listed, but not there on this device
      children.push_back(read_tree(child));
  return children;
}

// Of a key that is no child of the root, if it is known.
std::string full_path(const std::string& path) {
  const known_key known = find_known_key(path);
  return known.parent.empty() || known.parent == "ROOT" ? path
                                                        : full_path(std::string(known.parent)) + '/' + path;
}

std::optional<tarva::property> find_below(const tarva::property& parent, const std::string& path) {
  const std::size_t slash = path.find('/');
  auto found = parent.find(path.substr(0, slash));
  return found && slash != std::string::npos ? find_below(*found, path.substr(slash + 1)) : std::move(found);
}

bool contains(std::string_view text, std::string_view part) {
  const auto same = [](unsigned char left, unsigned char right) {
    return std::toupper(left) == std::toupper(right);
  };
  return std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end();
}

struct plain_text {
  std::vector<std::string> operator()(std::monostate) const { return {}; }
  std::vector<std::string> operator()(const std::vector<std::string>& texts) const { return texts; }
  std::vector<std::string> operator()(const std::vector<bool>& flags) const {
    return texts_of(flags, [](bool flag) { return flag ? "true" : "false"; });
  }
  std::vector<std::string> operator()(const std::vector<std::uint64_t>& numbers) const {
    return texts_of(numbers, [](std::uint64_t number) { return std::to_string(number); });
  }
};

} // namespace

property_node read_property(const tarva::property& property) {
  return {property.name(), property.friendly_name(), value_of(property)};
}

property_node read_tree(const tarva::property& property) {
  property_node node = read_property(property);
  node.children = read_children(property);
  return node;
}

tarva::property find_property(const tarva::property& root, std::string_view path) {
  auto found = find_below(root, full_path(std::string(path)));
  if (!found)
    throw std::runtime_error("no property " + std::string(path));
  return std::move(*found);
}

const property_node* find_child(const property_node& parent, std::string_view key) {
  const auto found = std::find_if(parent.children.begin(), parent.children.end(),
                                  [key](const property_node& child) { return child.key == key; });
  return found == parent.children.end() ? nullptr : &*found;
}

bool keep_matching(property_node& node, std::string_view part) {
  std::erase_if(node.children, [part](property_node& child) {
    if (contains(child.key, part))
      return false;
    return !keep_matching(child, part);
  });
  return !node.children.empty();
}

std::vector<std::string> plain_elements(const property_value& value) {
  return std::visit(plain_text(), value);
}

} // namespace tarva_info
