// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Whole trees of properties as text.
#pragma once

#include "properties/property.h"
#include "properties/text_buffer.h"

#include <memory>

namespace oryn::tarva::library {

// Both write a property, and with `recursive` everything below it, as one text. They do so on the thread that asks,
// from what the owner says at that moment: a tree that changes meanwhile is written as it is found. What the owner
// throws passes through, and so does want of memory.

// For people: a block for each property, without indentation, closed by an empty line. The `show_` switches say which
// lines it has; if all are off, the text is empty. A value of several elements is written in braces, one to a line.
//
//     Name          : CL_DEVICE_ADDRESS_BITS
//     Friendly Name : Device address bits
//     Description   : The address space size ...
//     Type          : uint64_t
//     Value         : 64
text_buffer to_text_tree(const std::shared_ptr<property_base>& property, bool recursive, bool show_name,
                         bool show_friendly_name, bool show_type, bool show_description, bool show_value);

// For programs: an element for each property, with its children inside. A child that is listed but not there is an
// empty element. Names, texts and values are escaped.
//
//     <property>
//     <distinct_name>CL_DEVICE_ADDRESS_BITS</distinct_name>
//     <friendly_name>Device address bits</friendly_name>
//     <description>The address space size ...</description>
//     <data num_elements="1" type="uint64_t">
//     <value index="0">64</value>
//     </data>
//     </property>
text_buffer to_xml_tree(const std::shared_ptr<property_base>& property, bool recursive);

} // namespace oryn::tarva::library
