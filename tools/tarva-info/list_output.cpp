// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The list of the devices.
#include "tools/tarva-info/output.h"

#include <algorithm>
#include <array>

namespace tarva_info {
namespace {

constexpr std::size_t column_count = 7;
constexpr std::size_t gap = 2;
using line = std::array<std::string, column_count>;

property_value value_at(const tarva::property& root, const char* path) {
  try {
    return read_property(find_property(root, path)).value;
  } catch (const std::runtime_error&) {
    return {};
  }
}

std::string text_at(const tarva::property& root, const char* path) {
  const std::vector<std::string> elements = plain_elements(value_at(root, path));
  return elements.empty() ? "?" : printable(elements.front());
}

std::string version_of(const tarva::device& device) {
  return tarva::attempt([&] { return device.version(); }).value_or("?");
}

std::string type_of(const tarva::device& device) {
  constexpr const char* shown[] = {"other", "custom", "CPU", "accelerator", "GPU"};
  const auto type = tarva::attempt([&] { return device.type(); });
  return type ? shown[static_cast<std::size_t>(*type)] : "?";
}

std::string memory_of(const tarva::property& root) {
  const property_value value = value_at(root, "OPENCL/CL_DEVICE_GLOBAL_MEM_SIZE");
  const auto* numbers = std::get_if<std::vector<std::uint64_t>>(&value);
  return numbers == nullptr || numbers->empty() ? "?" : human_size(numbers->front());
}

line line_of(const numbered_device& device) {
  const tarva::property root = device.handle.properties();
  return {std::to_string(device.number),
          version_of(device.handle),
          text_at(root, "NAME"),
          type_of(device.handle),
          text_at(root, "OPENCL/CL_DEVICE_MAX_COMPUTE_UNITS"),
          memory_of(root),
          text_at(root, "OPENCL/CL_DRIVER_VERSION")};
}

// As wide as what stands in them. Where that is more than the terminal has, what is widest is cut.
std::array<std::size_t, column_count> widths_of(const std::vector<line>& lines, std::size_t line_width) {
  std::array<std::size_t, column_count> widths{};
  std::size_t total = gap * (column_count - 1);
  for (std::size_t column = 0; column < column_count; ++column) {
    for (const line& each : lines)
      widths[column] = std::max(widths[column], width_of(each[column]));
    total += widths[column];
  }
  for (constexpr std::size_t least = 8; total > line_width; --total) {
    auto& widest = *std::max_element(widths.begin(), widths.end());
    if (widest <= least)
      break;
    --widest;
  }
  return widths;
}

} // namespace

void write_list(std::ostream& out, const std::vector<numbered_device>& devices, const style& look) {
  std::vector<line> lines{{"Device", "OpenCL", "Name", "Type", "Units", "Memory", "Driver"}};
  for (const numbered_device& device : devices)
    lines.push_back(line_of(device));
  const auto widths = widths_of(lines, look.line_width);
  for (const line& each : lines) {
    std::string text;
    for (std::size_t column = 0; column + 1 < column_count; ++column)
      text += padded(cut(each[column], widths[column]), widths[column] + gap);
    text += cut(each.back(), widths.back());
    out << (&each == &lines.front() ? look.heading(text) : text) << '\n';
  }
}

} // namespace tarva_info
