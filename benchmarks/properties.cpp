// The whole property tree of a device, against the queries of OpenCL that tell what is in it.
#include "access/opencl/device_parameters.h"
#include "benchmarks/comparison.h"
#include "benchmarks/measures.h"
#include "benchmarks/raw_device.h"
#include "benchmarks/tarva_device.h"

namespace benchmarks {

namespace {

void write_tree(const caller::property& root, tarva_abi_tree_kind kind) {
  const tarva_abi_tree_format_s format{kind, 1, 1, 0, 0, 0, 1};
  char* text = nullptr;
  tarva_abi_error_s* error = nullptr;
  check_call(tarva_abi_get_property_tree_string(nullptr, root.get(), &format, &text, &error),
             "Writing a tree");
  tarva_abi_free_property_tree_string(nullptr, text);
}

// Each once, by size and value.
void ask_all(cl_device_id device) {
  using namespace oryn::skerv::opencl;
  for (const device_parameter_row& row : device_parameter_table) {
    if (row.first > version::v1_2 || row.last < version::v1_2 || row.form == info_form::handle)
      continue;
    const auto parameter = static_cast<cl_device_info>(row.parameter);
    std::size_t size = 0;
    if (opencl().get_device_info(device, parameter, 0, nullptr, &size) != CL_SUCCESS)
      continue;
    std::string value(size, '\0');
    check(opencl().get_device_info(device, parameter, size, value.data(), &size), "A device query");
  }
}

void compare_trees(benchmark::State& state, tarva_abi_tree_kind kind) {
  const caller::property root = caller::root<tarva_abi_get_device_root_property>(tarva_devices().front());
  cl_device_id device = find_raw_devices().front();
  compare(state, std::vector<subject>{{"tarva", [&] { write_tree(root, kind); }},
                                      {"raw", [&] { ask_all(device); }}});
}

} // namespace

void add_properties() {
  add("property_tree/text", 500, [](benchmark::State& state) { compare_trees(state, TARVA_ABI_TREE_TEXT); });
  add("property_tree/xml", 500, [](benchmark::State& state) { compare_trees(state, TARVA_ABI_TREE_XML); });
}

} // namespace benchmarks
