#include "properties/property_strings.h"

#include "properties/element.h"

#include <string_view>

namespace oryn::tarva::library {
namespace {

// Both writers fill one buffer for the whole tree, so that the cost is linear in the length of the result.
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

  std::string out;

  void begin(const property_view& property) override {
    if (shown_.name) {
      write_line("Name          : ", property.name);
    }
    if (shown_.friendly_name) {
      write_line("Friendly Name : ", property.friendly_name);
    }
    if (shown_.description) {
      write_line("Description   : ", property.description);
    }
    if (property.value.element_count != 0) {
      write_value(property.value);
    }
    out += '\n';
  }
  void end() override {}
  void visit_empty() override {}

private:
  void write_line(std::string_view label, std::string_view text) {
    out += label;
    out += text;
    out += '\n';
  }

  void write_value(const value_view& value) {
    if (shown_.type) {
      write_line("Type          : ", data_type_name(value.type));
    }
    if (!shown_.value) {
      return;
    }
    out += "Value         : ";
    if (value.element_count == 1) {
      append_element_text(out, value.data, value.type, 0);
      out += '\n';
      return;
    }
    write_array(value);
  }

  void write_array(const value_view& value) {
    out += "{ \n";
    for (std::uint64_t index = 0; index < value.element_count; ++index) {
      out.append(21, ' ');
      out += '[';
      append_decimal(out, index);
      out += "]  ";
      append_element_text(out, value.data, value.type, index);
      out += '\n';
    }
    out.append(16, ' ');
    out += "} ";
  }

  const shown_parts shown_;
};

class xml_writer final : public property_visitor {
public:
  std::string out;

  void begin(const property_view& property) override {
    out += "<property>\n";
    write_line("<distinct_name>", property.name, "</distinct_name>\n");
    write_line("<friendly_name>", property.friendly_name, "</friendly_name>\n");
    write_line("<description>", property.description, "</description>\n");
    if (property.value.has_data()) {
      write_value(property.value);
    }
  }
  void end() override { out += "</property>\n\n"; }
  void visit_empty() override { out += "<property/>\n"; }

private:
  void write_line(std::string_view begin, std::string_view text, std::string_view end) {
    out += begin;
    write_escaped(text);
    out += end;
  }

  void write_value(const value_view& value) {
    out += "<data num_elements=\"";
    append_decimal(out, value.element_count);
    out += "\" type=\"";
    write_escaped(data_type_name(value.type));
    out += "\">\n";
    for (std::uint64_t index = 0; index < value.element_count; ++index) {
      out += "<value index=\"";
      append_decimal(out, index);
      element_.clear();
      append_element_text(element_, value.data, value.type, index);
      write_line("\">", element_, "</value>\n");
    }
    out += "</data>\n";
  }

  void write_escaped(std::string_view text) {
    std::size_t start = 0;
    for (std::size_t position = 0; position < text.size(); ++position) {
      const std::string_view replacement = entity(text[position]);
      if (!replacement.empty()) {
        out += text.substr(start, position - start);
        out += replacement;
        start = position + 1;
      }
    }
    out += text.substr(start);
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

  std::string element_; // its text, before it is escaped
};

} // namespace

std::string to_text_tree(const std::shared_ptr<property_base>& property, bool recursive, bool show_name,
                         bool show_friendly_name, bool show_type, bool show_description, bool show_value) {
  if (property->is_empty() ||
      !(show_name || show_friendly_name || show_type || show_description || show_value)) {
    return {};
  }
  text_writer writer({show_name, show_friendly_name, show_type, show_description, show_value});
  writer.begin(property->get_view());
  if (recursive) {
    property->visit_descendants(writer);
  }
  return std::move(writer.out);
}

std::string to_xml_tree(const std::shared_ptr<property_base>& property, bool recursive) {
  if (property->is_empty()) {
    return "<property/>";
  }
  xml_writer writer;
  writer.begin(property->get_view());
  if (recursive) {
    property->visit_descendants(writer);
  }
  writer.end();
  writer.out.pop_back(); // the empty line is that of a child
  return std::move(writer.out);
}

} // namespace oryn::tarva::library
