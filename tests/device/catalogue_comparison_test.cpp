// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Every property of every device that the environment offers, under each version it is offered as, against
// what OpenCL itself says of the same device in the same process. A query that the implementation refuses has
// to be an error of that property alone. Without a device it is skipped, by status 77, unless there has to be
// one.
#include "capability/opencl_version.h"
#include "tests/device/caller.h"
#include "tests/device/catalogue_table.h"

#include <algorithm>
#include <cctype>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <set>
#include <sstream>

namespace {

using namespace caller;
using namespace catalogue_table;

// The loader is opened the way that keeps it out of the implementations' sight.
void* const loader = dlopen("libOpenCL.so.1", RTLD_NOW | RTLD_LOCAL);
#define FIND(name) reinterpret_cast<decltype(name)*>(dlsym(loader, #name))

std::vector<cl_device_id> raw_devices() {
  std::vector<cl_platform_id> platforms(64);
  std::vector<cl_device_id> all, some(64);
  cl_uint count = 0;
  FIND(clGetPlatformIDs)(64, platforms.data(), &count);
  platforms.resize(count);
  for (cl_platform_id platform : platforms)
    if (FIND(clGetDeviceIDs)(platform, CL_DEVICE_TYPE_ALL, 64, some.data(), &count) == CL_SUCCESS)
      all.insert(all.end(), some.begin(), some.begin() + count);
  return all;
}

// The bytes of an answer; nothing if it is refused.
std::optional<std::string> ask(cl_device_id device, cl_device_info query) {
  std::size_t size = 0;
  if (FIND(clGetDeviceInfo)(device, query, 0, nullptr, &size) != CL_SUCCESS)
    return {};
  std::string answer(size, '\0');
  if (FIND(clGetDeviceInfo)(device, query, size, answer.data(), nullptr) != CL_SUCCESS)
    return {};
  return answer;
}
std::string ask_text(cl_device_id device, cl_device_info query) {
  return ask(device, query).value_or("").c_str();
}

// A value in one line: its data type, and its elements each in brackets.
std::string line(tarva_abi_data_type type, const std::vector<std::string>& elements) {
  std::string result = std::to_string(type);
  for (const std::string& element : elements)
    result += " [" + element + "]";
  return result;
}

const char* const refused = "refused";
const char* const no_value = "no value";

// What the property has to say.
std::string expected(cl_device_id device, const row& asked) {
  const auto answer = ask(device, asked.query);
  if (!answer)
    return refused;
  std::string text = answer->c_str();
  std::uint64_t number = 0;
  std::memcpy(&number, answer->data(), std::min(sizeof number, answer->size()));
  std::vector<std::string> elements;
  switch (asked.as) {
  case form::number:
  case form::wide:
    return line(TARVA_ABI_TYPE_UINT64, {std::to_string(number)});
  case form::sizes:
    for (std::size_t at = 0; at + sizeof number <= answer->size(); at += sizeof number) {
      std::memcpy(&number, answer->data() + at, sizeof number);
      elements.push_back(std::to_string(number));
    }
    return line(TARVA_ABI_TYPE_UINT64, elements);
  case form::text:
    return line(TARVA_ABI_TYPE_STRING, {text});
  case form::words:
    std::replace_if(
        text.begin(), text.end(), [](unsigned char one) { return std::isspace(one); }, ';');
    [[fallthrough]];
  case form::parts: {
    std::istringstream in(text);
    for (std::string part; std::getline(in, part, ';');)
      if (!part.empty())
        elements.push_back(part);
    return line(TARVA_ABI_TYPE_STRING, elements);
  }
  default:
    break;
  }
  const bool holds = asked.as == form::flag  ? number != 0
                     : asked.as == form::bit ? (number & asked.operand) != 0
                     : asked.as == form::equals
                         ? number == asked.operand
                         : (text == "EMBEDDED_PROFILE") == (asked.as == form::embedded);
  return line(TARVA_ABI_TYPE_BOOLEAN, {holds ? "1" : "0"});
}

std::string value_line(const property& of) {
  if (!of.has_value())
    return *of.name() == '\0' ? "absent" : no_value;
  std::vector<std::string> elements;
  for (std::size_t i = 0; i < of.size(); ++i)
    elements.push_back(of.type() == TARVA_ABI_TYPE_STRING    ? of.get<std::string>(i)
                       : of.type() == TARVA_ABI_TYPE_BOOLEAN ? std::to_string(of.get<bool>(i))
                                                             : std::to_string(of.get<std::uint64_t>(i)));
  return line(of.type(), elements);
}

// What is said of a query that OpenCL refuses, or the words of any other failure.
std::string refusal(const tarva::error& failed) {
  return failed.kind() == tarva::failure_kind::other ? refused : failed.what();
}

// What the property says.
std::string told(const property& parent, const std::string& key) {
  const auto found = tarva::attempt([&] { return value_line(child(parent, key.c_str())); });
  return found ? *found : refusal(found.error());
}

using lines = std::map<std::string, std::string>;

lines expected_children(cl_device_id device, int version, const std::string& parent) {
  const bool has_images = ask(device, CL_DEVICE_IMAGE_SUPPORT).value_or("").find('\1') != std::string::npos;
  lines result;
  for (const block& each : blocks) {
    if (version < each.first || version > each.last)
      continue;
    if (parent == opencl_key && each.parent != opencl_key && each.parent != images_key)
      result[each.parent] = no_value;
    if (parent == each.parent && (parent != images_key || has_images))
      for (const row& child : each.rows)
        result[child.key] = expected(device, child);
  }
  return result;
}

// Of the children that the library lists. Where one is refused it cannot list any; then of those that it has
// to have.
lines told_children(const property& parent, const lines& wanted) {
  lines result;
  const auto found = tarva::attempt([&] { return parent.children(); });
  if (found) {
    for (const property& one : *found)
      if (*one.name() != '\0')
        result[one.name()] = value_line(one);
    return result;
  }
  EXPECT_EQ(refusal(found.error()), refused);
  for (const auto& [key, value] : wanted)
    result[key] = told(parent, key);
  return result;
}

void compare(cl_device_id device, int version, const property& root) {
  EXPECT_EQ(told(root, "NAME"), expected(device, {"", CL_DEVICE_NAME, form::text}));
  const property opencl = child(root, opencl_key);
  const lines wanted = expected_children(device, version, opencl_key);
  EXPECT_EQ(told_children(opencl, wanted), wanted);
  EXPECT_EQ(told(opencl, "DEDICATED_LOCAL_MEMORY"),
            expected(device, {"", CL_DEVICE_LOCAL_MEM_TYPE, form::equals, CL_LOCAL}));
  for (const auto& [key, value] : wanted)
    if (value != refused) {
      const lines below = expected_children(device, version, key);
      EXPECT_EQ(told_children(child(opencl, key.c_str()), below), below) << key;
    }
}

// Devices of one version come in the order in which OpenCL has them, if perhaps not all.
TEST(catalogue, says_what_opencl_says) {
  const auto raw = raw_devices();
  std::map<int, std::size_t> next;
  std::set<cl_device_id> compared;
  for (const device& each : devices()) {
    const property root = caller::root<tarva_abi_get_device_root_property>(each);
    const std::string summary = text(child(root, "FRIENDLY_SUMMARY"));
    SCOPED_TRACE(summary);
    std::string_view from_version = std::string_view(summary).substr(7);
    const std::uint32_t version = qv::capability_of_version(qv::take_version(from_version).value());
    ASSERT_NE(version, 0U);
    const std::string start = "OpenCL " + summary.substr(7, 3) + " device named: ";
    // Two implementations may have one name for the processor.
    const std::string reported = text(child(child(root, opencl_key), "CL_DEVICE_VERSION"));
    std::size_t& i = next[static_cast<int>(version)];
    while (i < raw.size() && (summary != start + ask_text(raw[i], CL_DEVICE_NAME) ||
                              reported != ask_text(raw[i], CL_DEVICE_VERSION)))
      ++i;
    ASSERT_LT(i, raw.size()) << "no such device";
    EXPECT_EQ(told(root, "FRIENDLY_SHORT_DESCRIPTION"), line(TARVA_ABI_TYPE_STRING, {summary}));
    compared.insert(raw[i]);
    compare(raw[i++], static_cast<int>(version), root);
  }
  EXPECT_EQ(compared.size(), raw.size()) << "devices that the library does not have";
}

} // namespace
