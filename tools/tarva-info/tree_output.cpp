// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The tree of a device for people, and the form of --raw.
#include "tools/tarva-info/output.h"

#include <algorithm>
#include <string_view>

namespace tarva_info {
namespace {

constexpr std::size_t indent_step = 2;

std::string label_of(const property_node& node) {
  return printable(node.friendly_name.empty() ? node.key : node.friendly_name);
}

struct human_text {
  unit counted;

  std::vector<std::string> operator()(std::monostate) const { return {}; }
  std::vector<std::string> operator()(const std::vector<std::string>& texts) const {
    return texts_of(texts, printable);
  }
  std::vector<std::string> operator()(const std::vector<bool>& flags) const {
    return texts_of(flags, [](bool flag) { return flag ? "yes" : "no"; });
  }
  std::vector<std::string> operator()(const std::vector<std::uint64_t>& numbers) const {
    return texts_of(numbers, [this](std::uint64_t number) { return human_number(number, counted); });
  }
};

// What is wider than `room` becomes words, and these become pieces.
std::vector<std::string> with_room(const std::vector<std::string>& elements, std::size_t room) {
  std::vector<std::string> result;
  for (std::string_view rest : elements)
    do {
      std::size_t length = rest.size();
      if (width_of(rest) > room) {
        const std::size_t blank = rest.rfind(' ', room);
        length = blank == 0 || blank == std::string_view::npos ? room : blank;
        while (length < rest.size() && (static_cast<unsigned char>(rest[length]) & 0xC0) == 0x80)
          ++length; // not within a character
      }
      result.emplace_back(rest.substr(0, length));
      rest.remove_prefix(length);
      rest.remove_prefix(rest.starts_with(' ') ? 1 : 0);
    } while (!rest.empty());
  return result;
}

class tree_writer {
public:
  tree_writer(std::ostream& out, const style& look, std::size_t value_column)
      : out_(out), look_(look), value_column_(value_column) {}

  void write(const property_node& node, std::size_t indent) {
    const std::string label = std::string(indent, ' ') + label_of(node);
    if (!node.error.empty())
      write_value(label, {"error: " + printable(node.error)}, true);
    else if (std::holds_alternative<std::monostate>(node.value))
      out_ << label << '\n';
    else
      write_value(label, std::visit(human_text{find_known_key(node.key).counted}, node.value));
    for (const property_node& child : node.children)
      write(child, indent + indent_step);
  }

private:
  // As many elements on a line as the terminal has room for. A label that is too long for its column has a line of its
  // own.
  void write_value(const std::string& label, const std::vector<std::string>& value, bool is_error = false) {
    const std::vector<std::string> elements = with_room(value, look_.line_width - value_column_);
    out_ << padded(label, value_column_);
    if (width_of(label) + indent_step > value_column_)
      out_ << '\n' << std::string(value_column_, ' ');
    std::size_t column = value_column_;
    for (std::size_t i = 0; i < elements.size(); ++i) {
      const std::size_t width = width_of(elements[i]);
      if (i != 0 && column + 1 + width > look_.line_width) {
        out_ << '\n' << std::string(value_column_, ' ');
        column = value_column_;
      } else if (i != 0) {
        out_ << ' ';
        ++column;
      }
      out_ << (is_error ? look_.error(elements[i]) : elements[i]);
      column += width;
    }
    out_ << (elements.empty() ? "none\n" : "\n");
  }

  std::ostream& out_;
  const style& look_;
  std::size_t value_column_;
};

std::size_t label_width(const property_node& node, std::size_t indent) {
  std::size_t width = indent + width_of(label_of(node));
  for (const property_node& child : node.children)
    width = std::max(width, label_width(child, indent + indent_step));
  return width;
}

void write_raw_below(std::ostream& out, std::size_t number, const property_node& parent) {
  constexpr std::size_t key_width = 57; // one more than the longest key has
  for (const property_node& child : parent.children) {
    if (!child.error.empty() || !std::holds_alternative<std::monostate>(child.value)) {
      std::string text = child.error.empty() ? "" : " error: " + child.error;
      for (const std::string& element : plain_elements(child.value))
        text += ' ' + element;
      out << '[' << number << "] " << (text.empty() ? child.key : padded(child.key, key_width))
          << printable(text) << '\n';
    }
    write_raw_below(out, number, child);
  }
}

} // namespace

void write_tree(std::ostream& out, std::size_t number, const property_node& root, const style& look) {
  property_node object{"", {}, {}, {}, root.children};
  property_node opencl;
  if (const property_node* found = find_child(root, "OPENCL")) {
    opencl = *found;
    std::erase_if(object.children,
                  [](const property_node& child) { return child.key == "OPENCL" && child.error.empty(); });
  }
  const std::size_t wanted_column = std::max(label_width(object, 0), label_width(opencl, 0)) + indent_step;
  const std::size_t value_column = std::min(wanted_column, look.line_width / 2);
  tree_writer writer(out, look, value_column);

  out << look.heading("Device " + std::to_string(number)) << '\n';
  for (const property_node& child : object.children)
    writer.write(child, indent_step);
  for (int i = 0; i <= static_cast<int>(section::other); ++i) {
    const auto group = static_cast<section>(i);
    bool is_first = true;
    for (const property_node& child : opencl.children) {
      if (find_known_key(child.key).group == group) {
        if (is_first)
          out << '\n' << look.heading(title_of(group)) << '\n';
        is_first = false;
        writer.write(child, indent_step);
      }
    }
  }
}

void write_raw(std::ostream& out, std::size_t number, const property_node& root) {
  write_raw_below(out, number, root);
}

} // namespace tarva_info
