#pragma once

#include "properties/property_base.h"
#include "properties/text_buffer.h"

#include <memory>

namespace oryn::tarva::library {

// A property, and with `recursive` everything below it, as one text: for people, or as XML.
text_buffer to_text_tree(const std::shared_ptr<property_base>& property, bool recursive, bool show_name,
                         bool show_friendly_name, bool show_type, bool show_description, bool show_value);
text_buffer to_xml_tree(const std::shared_ptr<property_base>& property, bool recursive);

} // namespace oryn::tarva::library
