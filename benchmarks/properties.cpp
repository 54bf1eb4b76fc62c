// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The whole property tree of a device, against the queries of OpenCL that tell what is in it.
#include "benchmarks/comparison.h"
#include "benchmarks/measures.h"
#include "benchmarks/raw_device.h"
#include "benchmarks/tarva_device.h"
#include "properties/device_catalogue.h"

#include <algorithm>
#include <string>
#include <vector>

namespace benchmarks {

namespace {

using namespace oryn::tarva::library;

void write_tree(const tarva::property& root, tarva_abi_tree_kind kind) {
  const tarva_abi_tree_format_s format{kind, 1, 1, 0, 0, 0, 1};
  char* text = nullptr;
  tarva_abi_error_s* error = nullptr;
  check_call(tarva_abi_get_property_tree_string(nullptr, root.get(), &format, &text, &error),
             "Writing a tree");
  tarva_abi_free_property_tree_string(nullptr, text);
}

constexpr version_number opencl_1_2 = 3;

// What the values below a node are read from, in their order, with repeats: several keys are bits of one parameter.
void add_parameters(const device_catalogue::node& parent, std::vector<cl_device_info>& parameters) {
  for (const device_catalogue::node* child : parent.children) {
    const device_catalogue::row& row = *child->self;
    if (!row.versions.contains(opencl_1_2))
      continue;
    if (row.parent == image_support_key)
      parameters.push_back(image_support_parameter);
    if (row.source.parameter != 0)
      parameters.push_back(row.source.parameter);
    add_parameters(*child, parameters);
  }
}

std::vector<cl_device_info> parameters_of_tree() {
  std::vector<cl_device_info> parameters;
  add_parameters(*get_device_catalogue().find(opencl_1_2, {"ROOT"}), parameters);
  return parameters;
}

std::vector<cl_device_info> without_repeats(std::vector<cl_device_info> parameters) {
  std::sort(parameters.begin(), parameters.end());
  parameters.erase(std::unique(parameters.begin(), parameters.end()), parameters.end());
  return parameters;
}

// By size and value.
void ask_all(cl_device_id device, const std::vector<cl_device_info>& parameters) {
  for (const cl_device_info parameter : parameters) {
    std::size_t size = 0;
    check(opencl().get_device_info(device, parameter, 0, nullptr, &size), "A device query");
    std::string value(size, '\0');
    check(opencl().get_device_info(device, parameter, size, value.data(), &size), "A device query");
  }
}

void compare_trees(benchmark::State& state, tarva_abi_tree_kind kind) {
  const tarva::property root = tarva_devices().front().properties();
  cl_device_id device = find_raw_devices().front();
  const std::vector<cl_device_info> parameters = parameters_of_tree();
  const std::vector<cl_device_info> distinct = without_repeats(parameters);
  compare(state, std::vector<subject>{{"tarva", [&] { write_tree(root, kind); }},
                                      {"raw", [&] { ask_all(device, parameters); }},
                                      {"once", [&] { ask_all(device, distinct); }}});
}

} // namespace

void add_properties() {
  add("property_tree/text", 500, [](benchmark::State& state) { compare_trees(state, TARVA_ABI_TREE_TEXT); });
  add("property_tree/xml", 500, [](benchmark::State& state) { compare_trees(state, TARVA_ABI_TREE_XML); });
}

} // namespace benchmarks
