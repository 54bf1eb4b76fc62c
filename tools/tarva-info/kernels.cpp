// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The kernels of a program in a file, for --kernels.
#include "tools/tarva-info/property_tree.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace tarva_info {
namespace {

std::string content_of(const std::string& path) {
  try {
    std::ifstream file;
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.open(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  } catch (const std::ios::failure&) { // a directory can be opened, and then not be read
    throw std::runtime_error("cannot read " + path);
  }
}

} // namespace

property_node read_kernels(const tarva::device& device, const std::string& path) {
  const std::string content = content_of(path);
  const bool is_module = content.starts_with("\x03\x02\x23\x07");
  const tarva::program program =
      device.load(is_module ? tarva::ir::spir_v : tarva::ir::source_1_0, tarva::as_bytes(content), "", path);
  property_node root;
  for (const std::string& name : program.kernel_names()) {
    root.children.push_back(read_tree(program.kernel(name).properties()));
    root.children.back().key = name;
    root.children.back().friendly_name = name;
  }
  return root;
}

} // namespace tarva_info
