// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// A tree of properties, read once and free of handles.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <tarva.hpp>
#include <variant>
#include <vector>

namespace tarva_info {

// The elements of a value, or nothing.
using property_value =
    std::variant<std::monostate, std::vector<std::string>, std::vector<bool>, std::vector<std::uint64_t>>;

struct property_node {
  std::string key;
  std::string friendly_name{};
  property_value value{};
  std::string error{}; // what the library said instead of a value
  std::vector<property_node> children{};
};

// Without children.
property_node read_property(const tarva::property& property);

// With all descendants. One that cannot be read becomes a node with an error, and the others are read.
property_node read_tree(const tarva::property& property);

// The kernels of a program, which is built from a file for that device: a node for each, by its name.
property_node read_kernels(const tarva::device& device, const std::string& path);

// The property at the end of a path such as "OPENCL/CL_DEVICE_NAME", below the root; of a key that is known the last
// part will do. Throws if there is none.
tarva::property find_property(const tarva::property& root, std::string_view path);

// Null if there is no such child.
const property_node* find_child(const property_node& parent, std::string_view key);

// Takes out what has no key that contains `part`, in letters of either case, and no descendant with one. Returns whether
// anything is left.
bool keep_matching(property_node& node, std::string_view part);

// One text for each element, as scripts want it: numbers without unit, "true" and "false".
std::vector<std::string> plain_elements(const property_value& value);

} // namespace tarva_info
