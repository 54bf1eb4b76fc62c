#include "tools/tarva-info/output.h"

#include <algorithm>
#include <array>

namespace tarva_info {
namespace {

constexpr std::size_t column_count = 7;
using line = std::array<std::string, column_count>;

property_value value_at(const property_handle& root, const char* path) {
  try {
    return read_property(find_property(root, path)).value;
  } catch (const std::runtime_error&) {
    return {};
  }
}

std::string text_at(const property_handle& root, const char* path) {
  const std::vector<std::string> elements = plain_elements(value_at(root, path));
  return elements.empty() ? "?" : printable(elements.front());
}

// The version under which the library offers the device stands in its summary: "OpenCL 1.2 device ...". What
// the device says of itself may be a later one.
std::string version_of(const property_handle& root) {
  const std::string summary = text_at(root, "FRIENDLY_SUMMARY");
  const std::size_t start = summary.find(' ');
  return start == std::string::npos ? "?"
                                    : summary.substr(start + 1, summary.find(' ', start + 1) - start - 1);
}

// A device of several types at once is none of them.
std::string type_of(const property_handle& root) {
  constexpr std::array<std::array<const char*, 2>, 4> types = {
      {{"OPENCL/CL_DEVICE_TYPE_CPU", "CPU"},
       {"OPENCL/CL_DEVICE_TYPE_GPU", "GPU"},
       {"OPENCL/CL_DEVICE_TYPE_ACCELERATOR", "accelerator"},
       {"OPENCL/CL_DEVICE_TYPE_CUSTOM", "custom"}}};
  for (const auto& [path, name] : types)
    if (text_at(root, path) == "true")
      return name;
  return "other";
}

std::string memory_of(const property_handle& root) {
  const property_value value = value_at(root, "OPENCL/CL_DEVICE_GLOBAL_MEM_SIZE");
  const auto* numbers = std::get_if<std::vector<std::uint64_t>>(&value);
  return numbers == nullptr || numbers->empty() ? "?" : human_size(numbers->front());
}

line line_of(const numbered_device& device) {
  const property_handle root = get_root(device.handle);
  return {std::to_string(device.number),
          version_of(root),
          text_at(root, "NAME"),
          type_of(root),
          text_at(root, "OPENCL/CL_DEVICE_MAX_COMPUTE_UNITS"),
          memory_of(root),
          text_at(root, "OPENCL/CL_DRIVER_VERSION")};
}

} // namespace

void write_list(std::ostream& out, const std::vector<numbered_device>& devices, const style& look) {
  std::vector<line> lines{{"Device", "OpenCL", "Name", "Type", "Units", "Memory", "Driver"}};
  for (const numbered_device& device : devices)
    lines.push_back(line_of(device));
  for (const line& each : lines) {
    std::string text;
    for (std::size_t column = 0; column + 1 < column_count; ++column) {
      std::size_t width = 0;
      for (const line& other : lines)
        width = std::max(width, width_of(other[column]));
      text += padded(each[column], width + 2);
    }
    text += each.back();
    out << (&each == &lines.front() ? look.heading(text) : text) << '\n';
  }
}

} // namespace tarva_info
