// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "properties/property_strings.h"

#include "properties/element.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string_view>

namespace oryn::tarva::library {
namespace {

// Thrown out of a walk behind an element that is a zero byte. A caller in C sees a text up to its first zero byte, and a binary
// has such bytes soon after its beginning. The rest of it would not be seen, and be thirty times as long as the binary, each byte
// of which has a line of its own.
struct end_of_visible_text {};

// Of an element that has been written.
void look_for_end(const value_view& value, std::uint64_t index) {
  if (value.type == data_type::uint8_ && static_cast<const unsigned char*>(value.data)[index] == 0)
    throw end_of_visible_text();
}

template <class Walk>
void write_visible(Walk walk) {
  try {
    walk();
  } catch (const end_of_visible_text&) {
  }
}

// For people. Both writers fill one buffer for the whole tree, so that the cost is linear in the length of the
// result.
class text_writer final : public property_visitor {
public:
  struct shown_parts {
    bool name;
    bool friendly_name;
    bool type;
    bool description;
    bool value;
  };

  explicit text_writer(const shown_parts& shown) : shown_(shown) {}

  text_buffer out;

  void begin(const property_labels& labels, const value_view& value) override {
    if (shown_.name)
      out.append("Name          : ", labels.name, "\n");
    if (shown_.friendly_name)
      out.append("Friendly Name : ", labels.friendly_name, "\n");
    if (shown_.description)
      out.append("Description   : ", labels.description, "\n");
    if (value.element_count != 0 && shown_.type)
      out.append("Type          : ", data_type_name(value.type), "\n");
    if (value.element_count != 0 && shown_.value)
      write_elements(value);
    out.append("\n");
  }
  void end() override {}
  void visit_empty() override {}

private:
  void write_elements(const value_view& value) {
    out.append("Value         : ");
    if (value.element_count == 1) {
      append_element_text(out, value.data, value.type, 0);
      out.append("\n");
    } else {
      write_array(value);
    }
  }

  // No line end behind the closing brace: the one that ends the block of the property stands there.
  void write_array(const value_view& value) {
    out.append("{ \n");
    for (std::uint64_t index = 0; index < value.element_count; ++index) {
      out.append_repeated(21, ' ');
      out.append("[");
      out.append_number(index);
      out.append("]  ");
      append_element_text(out, value.data, value.type, index);
      look_for_end(value, index);
      out.append("\n");
    }
    out.append_repeated(16, ' ');
    out.append("} ");
  }

  const shown_parts shown_;
};

// For programs. A child that is listed but not there is an empty element.
class xml_writer final : public property_visitor {
public:
  text_buffer out;

  void begin(const property_labels& labels, const value_view& value) override {
    out.append("<property>\n<distinct_name>");
    write_escaped(labels.name);
    out.append("</distinct_name>\n<friendly_name>");
    write_escaped(labels.friendly_name);
    out.append("</friendly_name>\n<description>");
    write_escaped(labels.description);
    out.append("</description>\n");
    if (value.has_data())
      write_value(value);
  }
  void end() override { out.append("</property>\n\n"); }
  void visit_empty() override { out.append("<property/>\n"); }

private:
  void write_value(const value_view& value) {
    out.append("<data num_elements=\"");
    out.append_number(value.element_count);
    out.append("\" type=\"", data_type_name(value.type), "\">\n");
    for (std::uint64_t index = 0; index < value.element_count; ++index) {
      out.append("<value index=\"");
      out.append_number(index);
      out.append("\">");
      element_.clear();
      append_element_text(element_, value.data, value.type, index);
      write_escaped(element_.view());
      look_for_end(value, index);
      out.append("</value>\n");
    }
    out.append("</data>\n");
  }

  void write_escaped(std::string_view text) {
    if (!is_plain(text)) {
      for (std::size_t place = 0; place < text.size();) {
        const std::string_view replacement = entity(text[place]);
        if (replacement.empty()) {
          ++place;
        } else {
          out.append(text.substr(0, place), replacement);
          text.remove_prefix(place + 1);
          place = 0;
        }
      }
    }
    out.append(text);
  }

  // True if all characters stay as they are. Nearly all texts are such, so they are looked at by blocks, the last
  // of which may overlap the one before.
  static bool is_plain(std::string_view text) {
    if (text.size() < sizeof(block))
      return std::all_of(text.begin(), text.end(), [](char each) { return entity(each).empty(); });
    const std::size_t last = text.size() - sizeof(block);
    block special = special_in(text.data() + last);
    for (std::size_t place = 0; place < last; place += sizeof(block))
      special |= special_in(text.data() + place);
    const auto halves = std::bit_cast<std::array<std::uint64_t, 2>>(special);
    return (halves[0] | halves[1]) == 0;
  }

  using block [[gnu::vector_size(16)]] = unsigned char;
  // Not zero where a character has an entity.
  static block special_in(const char* text) {
    block letters;
    std::memcpy(&letters, text, sizeof letters);
    return (letters == '<') | (letters == '>') | (letters == '\'') | (letters == '"') | (letters == '&');
  }

  // Empty for a character that stays as it is.
  static std::string_view entity(char character) {
    switch (character) {
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '\'':
      return "&apos;";
    case '"':
      return "&quot;";
    case '&':
      return "&amp;";
    default:
      return {};
    }
  }

  text_buffer element_; // its text, before it is escaped
};

} // namespace

text_buffer to_text_tree(const std::shared_ptr<property_base>& property, bool recursive, bool show_name,
                         bool show_friendly_name, bool show_type, bool show_description, bool show_value) {
  if (property->is_empty() ||
      !(show_name || show_friendly_name || show_type || show_description || show_value))
    return {};
  text_writer writer({show_name, show_friendly_name, show_type, show_description, show_value});
  write_visible([&] { property->visit(writer, recursive); });
  return std::move(writer.out);
}

text_buffer to_xml_tree(const std::shared_ptr<property_base>& property, bool recursive) {
  if (property->is_empty()) {
    text_buffer text;
    text.append("<property/>");
    return text;
  }
  xml_writer writer;
  write_visible([&] {
    property->visit(writer, recursive);
    writer.out.remove_last(); // the empty line is that of a child
  });
  return std::move(writer.out);
}

} // namespace oryn::tarva::library
