#include "tools/tarva-info/property_tree.h"

#include "tools/tarva-info/known_keys.h"
#include "tools/tarva-info/text.h"

#include <algorithm>
#include <cctype>

namespace tarva_info {
namespace {

template <typename Result, typename Element>
std::vector<Result> elements_of(const tarva_abi_property_s& property) {
  const auto* data = static_cast<const Element*>(property.data);
  return std::vector<Result>(data, data + property.element_count);
}

property_value value_of(const tarva_abi_property_s& property) {
  if (property.has_data == 0)
    return {};
  switch (property.data_type) {
  case TARVA_ABI_TYPE_STRING:
    return elements_of<std::string, const char*>(property);
  case TARVA_ABI_TYPE_BOOLEAN:
    return elements_of<bool, std::uint32_t>(property);
  case TARVA_ABI_TYPE_UINT8:
    return elements_of<std::uint64_t, std::uint8_t>(property);
  case TARVA_ABI_TYPE_UINT64:
    return elements_of<std::uint64_t, std::uint64_t>(property);
  default:
    return {}; // no property of a device has another type
  }
}

property_node read_child(const property_handle& parent, std::string_view key) {
  property_node node{std::string(key)};
  try {
    node = read_tree(get_child(parent, node.key));
  } catch (const library_failure& failure) {
    node.error = failure.what();
  }
  return node;
}

// The names of children can only be had with all their values, so where one value cannot be read the children
// are asked for by the names that they are known to have.
std::vector<property_node> read_known_children(const property_handle& parent) {
  std::vector<property_node> children;
  for (const known_key& each : all_known_keys()) {
    if (each.parent == parent->name) {
      property_node child = read_child(parent, each.key);
      if (!child.key.empty())
        children.push_back(std::move(child));
    }
  }
  return children;
}

std::vector<property_node> read_children(const property_handle& parent) {
  std::vector<property_handle> handles;
  try {
    handles = get_children(parent);
  } catch (const library_failure&) {
    return read_known_children(parent);
  }
  std::vector<property_node> children;
  for (const property_handle& handle : handles)
    if (*handle->name != '\0') // listed, but not there on this device
      children.push_back(read_tree(handle));
  return children;
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

property_node read_property(const property_handle& property) {
  return {property->name, property->friendly_name, value_of(*property)};
}

property_node read_tree(const property_handle& property) {
  property_node node = read_property(property);
  node.children = read_children(property);
  return node;
}

property_handle find_property(const property_handle& root, std::string_view path) {
  std::string_view rest = path;
  property_handle found;
  do {
    const std::size_t slash = rest.find('/');
    const std::string key(rest.substr(0, slash));
    rest.remove_prefix(slash == std::string_view::npos ? rest.size() : slash + 1);
    found = get_child(found == nullptr ? root : found, key);
    if (*found->name == '\0')
      throw std::runtime_error("no property " + std::string(path));
  } while (!rest.empty());
  return found;
}

const property_node* find_child(const property_node& parent, std::string_view key) {
  const auto found = std::find_if(parent.children.begin(), parent.children.end(),
                                  [key](const property_node& child) { return child.key == key; });
  return found == parent.children.end() ? nullptr : &*found;
}

void keep_matching(property_node& node, std::string_view part) {
  std::erase_if(node.children, [part](property_node& child) {
    if (contains(child.key, part))
      return false;
    keep_matching(child, part);
    return child.children.empty();
  });
}

std::vector<std::string> plain_elements(const property_value& value) {
  return std::visit(plain_text(), value);
}

} // namespace tarva_info
