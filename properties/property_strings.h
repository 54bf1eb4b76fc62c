#pragma once

#include "properties/property_base.h"

#include <memory>
#include <string>

namespace oryn::tarva::library {

// A property, and with `recursive` everything below it, as one string: for people, or as XML.
std::string to_text_tree(const std::shared_ptr<property_base>& property, bool recursive, bool show_name,
                         bool show_friendly_name, bool show_type, bool show_description, bool show_value);
std::string to_xml_tree(const std::shared_ptr<property_base>& property, bool recursive);

} // namespace oryn::tarva::library
