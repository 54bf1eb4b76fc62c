// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The forms that the tool writes.
#pragma once

#include "tools/tarva-info/property_tree.h"
#include "tools/tarva-info/text.h"

#include <cstdint>
#include <ostream>
#include <vector>

namespace tarva_info {

// A device and its place in the library's list.
struct numbered_device {
  std::size_t number;
  const tarva::device& handle;
};

// One line for each device. What cannot be read is "?".
void write_list(std::ostream& out, const std::vector<numbered_device>& devices, const style& look);

// The tree of a device, by sections, for people.
void write_tree(std::ostream& out, std::size_t number, const property_node& root, const style& look);

// One line for each value: the device, the key and the plain value.
void write_raw(std::ostream& out, std::size_t number, const property_node& root);

struct numbered_tree {
  std::size_t number;
  property_node root;
};
void write_json(std::ostream& out, const std::vector<numbered_tree>& trees);

// The trees as the library writes them. What cannot be read is left out and told on standard error; returns
// whether there was nothing of that kind. `kind` is a tarva_abi_tree_kind.
bool write_library_trees(std::ostream& out, const std::vector<numbered_device>& devices, std::uint64_t kind,
                         bool as_one_document, const style& look);

} // namespace tarva_info
