#include "properties/property_strings.h"

#include "properties/element.h"

#include <string_view>

namespace oryn::tarva::library {
namespace {

// Both writers fill one buffer for the whole tree, so that the cost is linear in the length of the result.
class text_writer {
public:
  bool recursive;
  bool show_name;
  bool show_friendly_name;
  bool show_type;
  bool show_description;
  bool show_value;
  std::string out{};

  void write(const property_base& property) {
    if (property.is_empty()) {
      return;
    }
    if (show_name) {
      write_line("Name          : ", property.get_name());
    }
    if (show_friendly_name) {
      write_line("Friendly Name : ", property.get_friendly_name());
    }
    if (show_description) {
      write_line("Description   : ", property.get_description());
    }
    if (property.has_data() && property.get_element_count() != 0) {
      write_data(property);
    }
    out += '\n';
    if (recursive) {
      property.for_each_child([this](const std::shared_ptr<property_base>& child) { write(*child); });
    }
  }

private:
  void write_line(std::string_view label, std::string_view text) {
    out += label;
    out += text;
    out += '\n';
  }

  void write_data(const property_base& property) {
    if (show_type) {
      write_line("Type          : ", data_type_name(property.get_data_type()));
    }
    if (!show_value) {
      return;
    }
    out += "Value         : ";
    if (property.get_element_count() == 1) {
      property.append_element(out, 0);
      out += '\n';
      return;
    }
    write_array(property);
  }

  void write_array(const property_base& property) {
    const void* data = property.get_data();
    const data_type type = property.get_data_type();
    const std::uint64_t count = property.get_element_count();
    out += "{ \n";
    for (std::uint64_t index = 0; index < count; ++index) {
      out.append(21, ' ');
      out += '[';
      append_decimal(out, index);
      out += "]  ";
      append_element_text(out, data, type, index);
      out += '\n';
    }
    out.append(16, ' ');
    out += "} ";
  }
};

class xml_writer {
public:
  bool recursive;
  std::string out{};

  void write(const property_base& property) {
    if (property.is_empty()) {
      out += "<property/>";
      return;
    }
    out += "<property>\n";
    write_line("<distinct_name>", property.get_name(), "</distinct_name>\n");
    write_line("<friendly_name>", property.get_friendly_name(), "</friendly_name>\n");
    write_line("<description>", property.get_description(), "</description>\n");
    if (property.has_data()) {
      write_data(property);
    }
    if (recursive) {
      property.for_each_child([this](const std::shared_ptr<property_base>& child) {
        write(*child);
        out += '\n';
      });
    }
    out += "</property>\n";
  }

private:
  void write_line(std::string_view begin, std::string_view text, std::string_view end) {
    out += begin;
    write_escaped(text);
    out += end;
  }

  void write_data(const property_base& property) {
    const void* data = property.get_data();
    const data_type type = property.get_data_type();
    const std::uint64_t count = property.get_element_count();
    out += "<data num_elements=\"";
    append_decimal(out, count);
    out += "\" type=\"";
    write_escaped(data_type_name(type));
    out += "\">\n";
    std::string text;
    for (std::uint64_t index = 0; index < count; ++index) {
      out += "<value index=\"";
      append_decimal(out, index);
      text.clear();
      append_element_text(text, data, type, index);
      write_line("\">", text, "</value>\n");
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
};

} // namespace

std::string to_text_tree(const std::shared_ptr<property_base>& property, bool recursive, bool show_name,
                         bool show_friendly_name, bool show_type, bool show_description, bool show_value) {
  if (!(show_name || show_friendly_name || show_type || show_description || show_value)) {
    return {};
  }
  text_writer writer{recursive, show_name, show_friendly_name, show_type, show_description, show_value};
  writer.write(*property);
  return std::move(writer.out);
}

std::string to_xml_tree(const std::shared_ptr<property_base>& property, bool recursive) {
  xml_writer writer{recursive};
  writer.write(*property);
  return std::move(writer.out);
}

} // namespace oryn::tarva::library
