// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The forms of --text and --xml, which the library itself writes.
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

  std::string text_of(const tarva::property& property) {
    std::string text = property.write(format_);
    if (*property.name() == '\0')
      return text;
    const bool is_xml = format_.kind == TARVA_ABI_TREE_XML;
    constexpr std::string_view end = "</property>\n";
    text.resize(text.size() - (is_xml ? end.size() : 0));
    for (const tarva::property& child : readable_children(property))
      text += text_of(child) + (is_xml ? "\n" : "");
    return is_xml ? text.append(end) : text;
  }

private:
  static std::vector<tarva::property> readable_children(const tarva::property& parent) {
    try {
      return parent.children();
    } catch (const tarva::error&) {
      std::vector<tarva::property> children;
      for (const known_key& each : all_known_keys())
        if (each.parent == parent.name())
          add_child(children, parent, std::string(each.key));
      return children;
    }
  }

  static void add_child(std::vector<tarva::property>& children, const tarva::property& parent,
                        const std::string& key) {
    try {
      if (auto child = parent.find(key))
        children.push_back(std::move(*child));
    } catch (const tarva::error& failure) {
      std::cerr << "tarva-info: " << key << ": " << printable(failure.what()) << '\n';
    }
  }

  tarva_abi_tree_format_s format_;
};

} // namespace

bool write_library_trees(std::ostream& out, const std::vector<numbered_device>& devices, std::uint64_t kind,
                         bool as_one_document, const style& look) {
  bool is_complete = true;
  const bool has_frame = as_one_document && kind == TARVA_ABI_TREE_XML;
  out << (has_frame ? "<devices>\n" : "");
  for (const numbered_device& device : devices) {
    const tarva::property root = device.handle.properties();
    std::string text;
    try {
      text = root.write({kind, 1, 1, 1, 1, 1, 1});
    } catch (const tarva::error&) {
      text = partial_tree(kind).text_of(root);
      is_complete = false;
    }
    out << (look.is_terminal ? printable_lines(text) : text);
  }
  out << (has_frame ? "</devices>\n" : "");
  return is_complete;
}

} // namespace tarva_info
