#include "tools/tarva-info/known_keys.h"
#include "tools/tarva-info/output.h"

#include <iostream>

namespace tarva_info {
namespace {

// Puts the library's text for each property together to what the library writes for the whole tree, without
// the properties that it cannot read; for those alone it has no text of a whole.
class partial_tree {
public:
  explicit partial_tree(std::uint64_t kind) : format_{kind, 0, 1, 1, 1, 1, 1} {}

  std::string text_of(const property_handle& property) {
    std::string text = get_tree_string(property, format_);
    if (*property->name == '\0')
      return text;
    const bool is_xml = format_.kind == TARVA_ABI_TREE_XML;
    constexpr std::string_view end = "</property>\n";
    text.resize(text.size() - (is_xml ? end.size() : 0));
    for (const property_handle& child : readable_children(property))
      text += text_of(child) + (is_xml ? "\n" : "");
    return is_xml ? text.append(end) : text;
  }

private:
  static std::vector<property_handle> readable_children(const property_handle& parent) {
    try {
      return get_children(parent);
    } catch (const library_failure&) {
      std::vector<property_handle> children;
      for (const known_key& each : all_known_keys())
        if (each.parent == parent->name)
          add_child(children, parent, std::string(each.key));
      return children;
    }
  }

  static void add_child(std::vector<property_handle>& children, const property_handle& parent,
                        const std::string& key) {
    try {
      property_handle child = get_child(parent, key);
      if (*child->name != '\0')
        children.push_back(std::move(child));
    } catch (const library_failure& failure) {
      std::cerr << "tarva-info: " << key << ": " << printable(failure.what()) << '\n';
    }
  }

  tarva_abi_tree_format_s format_;
};

} // namespace

bool write_library_trees(std::ostream& out, const std::vector<numbered_device>& devices, std::uint64_t kind,
                         bool as_one_document) {
  bool is_complete = true;
  const bool has_frame = as_one_document && kind == TARVA_ABI_TREE_XML;
  out << (has_frame ? "<devices>\n" : "");
  for (const numbered_device& device : devices) {
    const property_handle root = get_root(device.handle);
    try {
      out << get_tree_string(root, {kind, 1, 1, 1, 1, 1, 1});
    } catch (const library_failure&) {
      out << partial_tree(kind).text_of(root);
      is_complete = false;
    }
  }
  out << (has_frame ? "</devices>\n" : "");
  return is_complete;
}

} // namespace tarva_info
