// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The form of --json.
#include "base/printable_text.h"
#include "tools/tarva-info/output.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace tarva_info {
namespace {

// The number of a character of UTF-8 that has at most three bytes.
unsigned number_of(std::string_view character) {
  unsigned number = static_cast<unsigned char>(character[0]) & (0xFFU >> character.size());
  for (const char byte : character.substr(1))
    number = number << 6 | (static_cast<unsigned char>(byte) & 0x3F);
  return number;
}

// What is no UTF-8 becomes the replacement character, so that the text as a whole always is. A terminal is sent nothing that it
// would obey.
std::string quoted(std::string_view text) {
  std::string result = "\"";
  while (!text.empty()) {
    const std::size_t length = oryn::character_length(text);
    const std::string_view character = text.substr(0, length == 0 ? 1 : length);
    if (length == 0) {
      result += "\\ufffd";
    } else if (text[0] == '"' || text[0] == '\\') {
      result += {'\\', text[0]};
    } else if (oryn::is_control(character)) {
      std::array<char, 16> escaped{};
      std::snprintf(escaped.data(), escaped.size(), "\\u%04x", number_of(character));
      result += escaped.data();
    } else {
      result += character;
    }
    text.remove_prefix(character.size());
  }
  return result + '"';
}

std::string value_text(const property_node& node) {
  std::vector<std::string> elements = plain_elements(node.value);
  if (std::holds_alternative<std::vector<std::string>>(node.value))
    std::transform(elements.begin(), elements.end(), elements.begin(), quoted);
  if (elements.size() == 1 && find_known_key(node.key).counted != unit::list)
    return elements.front();
  std::string list = "[";
  for (const std::string& element : elements)
    list += (list.size() == 1 ? "" : ", ") + element;
  return list + ']';
}

// Also where a device has none of them, so that a key has the same form on every device.
bool can_have_children(const property_node& node) {
  const auto known = all_known_keys();
  return !node.children.empty() || std::any_of(known.begin(), known.end(), [&node](const known_key& each) {
    return each.parent == node.key;
  });
}

// The members of one object, one on a line.
class member_writer {
public:
  member_writer(std::ostream& out, std::size_t indent) : out_(out), indent_(indent) { out_ << '{'; }

  std::ostream& add(std::string_view name) {
    out_ << (is_first_ ? "\n" : ",\n") << std::string(indent_ + 2, ' ') << quoted(name) << ": ";
    is_first_ = false;
    return out_;
  }
  void end() { out_ << (is_first_ ? "" : "\n" + std::string(indent_, ' ')) << '}'; }

private:
  std::ostream& out_;
  std::size_t indent_;
  bool is_first_ = true;
};

void write_node(std::ostream& out, const property_node& node, std::size_t indent);

void write_children(member_writer& members, const property_node& node, std::size_t indent) {
  for (const property_node& child : node.children)
    write_node(members.add(child.key), child, indent + 2);
}

void write_node(std::ostream& out, const property_node& node, std::size_t indent) {
  const bool has_value = !std::holds_alternative<std::monostate>(node.value);
  if (has_value && !can_have_children(node)) {
    out << value_text(node);
    return;
  }
  member_writer members(out, indent);
  if (!node.error.empty())
    members.add("error") << quoted(node.error);
  if (has_value)
    members.add("value") << value_text(node);
  write_children(members, node, indent);
  members.end();
}

} // namespace

void write_json(std::ostream& out, const std::vector<numbered_tree>& trees) {
  out << "{\"devices\": [";
  for (const numbered_tree& tree : trees) {
    out << (&tree == &trees.front() ? "" : ", ");
    member_writer members(out, 0);
    members.add("device") << tree.number;
    write_children(members, tree.root, 0);
    members.end();
  }
  out << "]}\n";
}

} // namespace tarva_info
