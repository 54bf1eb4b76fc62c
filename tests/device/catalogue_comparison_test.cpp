// Every property of every device that the environment offers, under each version it is offered as, against
// what OpenCL itself says of the same device in the same process. A query that the implementation refuses has
// to be an error of that property alone. Without a device it is skipped, by status 77, unless there has to be
// one.
#include "capability/opencl_version.h"
#include "tests/device/caller.h"
#include "tests/device/catalogue_table.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>

namespace {

using namespace caller;
using namespace catalogue_table;

// The loader, opened the way that keeps it out of the implementations' sight.
class raw_opencl {
public:
  raw_opencl() : library_(dlopen("libOpenCL.so.1", RTLD_NOW | RTLD_LOCAL)) {
    cl_uint count = 0;
    if (library_ == nullptr || find<decltype(clGetPlatformIDs)>("clGetPlatformIDs")(0, nullptr, &count) != 0)
      return;
    std::vector<cl_platform_id> platforms(count);
    find<decltype(clGetPlatformIDs)>("clGetPlatformIDs")(count, platforms.data(), nullptr);
    auto* get_devices = find<decltype(clGetDeviceIDs)>("clGetDeviceIDs");
    for (cl_platform_id platform : platforms) {
      if (get_devices(platform, CL_DEVICE_TYPE_ALL, 0, nullptr, &count) != CL_SUCCESS)
        continue;
      const std::size_t before = devices.size();
      devices.resize(before + count);
      get_devices(platform, CL_DEVICE_TYPE_ALL, count, devices.data() + before, nullptr);
    }
  }

  // The bytes of an answer; nothing if it is refused.
  std::unique_ptr<std::string> ask(cl_device_id device, cl_device_info query) const {
    auto* get_info = find<decltype(clGetDeviceInfo)>("clGetDeviceInfo");
    std::size_t size = 0;
    if (get_info(device, query, 0, nullptr, &size) != CL_SUCCESS)
      return nullptr;
    auto answer = std::make_unique<std::string>(size, '\0');
    return get_info(device, query, size, answer->data(), nullptr) == CL_SUCCESS ? std::move(answer) : nullptr;
  }

  std::string text(cl_device_id device, cl_device_info query) const {
    const auto answer = ask(device, query);
    return answer == nullptr ? "" : answer->c_str();
  }

  std::vector<cl_device_id> devices;

private:
  template <class Function>
  Function* find(const char* name) const {
    return reinterpret_cast<Function*>(dlsym(library_, name));
  }

  void* library_;
};

// A value in one line: its data type, and its elements each in brackets.
std::string line(tarva_abi_data_type type, const std::vector<std::string>& elements) {
  std::string result = std::to_string(type);
  for (const std::string& element : elements)
    result += " [" + element + "]";
  return result;
}

std::string number_line(std::uint64_t number) {
  return line(TARVA_ABI_TYPE_UINT64, {std::to_string(number)});
}
std::string flag_line(bool flag) {
  return line(TARVA_ABI_TYPE_BOOLEAN, {flag ? "1" : "0"});
}

std::string list_line(const std::string& text, bool at_blanks) {
  std::vector<std::string> parts;
  std::istringstream in(at_blanks ? text : text + ';');
  for (std::string part; at_blanks ? bool(in >> part) : bool(std::getline(in, part, ';'));)
    if (!part.empty())
      parts.push_back(part);
  return line(TARVA_ABI_TYPE_STRING, parts);
}

const char* const refused = "refused";
const char* const no_value = "no value";

// What the property has to say.
std::string expected(const raw_opencl& raw, cl_device_id device, const row& asked) {
  const auto answer = raw.ask(device, asked.query);
  if (answer == nullptr)
    return refused;
  std::uint64_t number = 0;
  std::memcpy(&number, answer->data(), std::min(sizeof number, answer->size()));
  const std::string text = answer->substr(0, answer->find('\0'));
  switch (asked.as) {
  case form::number:
  case form::wide:
    return number_line(number);
  case form::flag:
    return flag_line(number != 0);
  case form::text:
    return line(TARVA_ABI_TYPE_STRING, {text});
  case form::words:
    return list_line(text, true);
  case form::parts:
    return list_line(text, false);
  case form::bit:
    return flag_line((number & asked.operand) != 0);
  case form::equals:
    return flag_line(number == asked.operand);
  case form::embedded:
    return flag_line(text == "EMBEDDED_PROFILE");
  case form::full:
    return flag_line(text != "EMBEDDED_PROFILE");
  case form::sizes:
    break;
  }
  std::vector<std::string> sizes;
  for (std::size_t at = 0; at + sizeof(std::size_t) <= answer->size(); at += sizeof(std::size_t)) {
    std::size_t size = 0;
    std::memcpy(&size, answer->data() + at, sizeof size);
    sizes.push_back(std::to_string(size));
  }
  return line(TARVA_ABI_TYPE_UINT64, sizes);
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

std::string text_of(const lines& all) {
  std::string result;
  for (const auto& [key, value] : all)
    result.append(key).append(": ").append(value).append(1, '\n');
  return result;
}

// One device under one version, and the raw device that it is.
struct pair {
  const raw_opencl& raw;
  cl_device_id device;
  int version;
};

bool has_images(const pair& of) {
  return expected(of.raw, of.device, {"", CL_DEVICE_IMAGE_SUPPORT, form::flag}) == flag_line(true);
}

lines expected_children(const pair& of, const std::string& parent) {
  lines result;
  for (const block& each : blocks) {
    if (of.version < each.first || of.version > each.last)
      continue;
    if (parent == opencl_key && each.parent != opencl_key && each.parent != images_key)
      result[each.parent] = no_value;
    if (parent == each.parent && (parent != images_key || has_images(of)))
      for (const row& child : each.rows)
        result[child.key] = expected(of.raw, of.device, child);
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

void compare(const pair& of, const property& root) {
  const std::string name = expected(of.raw, of.device, {"", CL_DEVICE_NAME, form::text});
  EXPECT_EQ(told(root, "NAME"), name);

  const property opencl = child(root, opencl_key);
  const lines wanted = expected_children(of, opencl_key);
  EXPECT_EQ(text_of(told_children(opencl, wanted)), text_of(wanted));
  EXPECT_EQ(told(opencl, "DEDICATED_LOCAL_MEMORY"),
            expected(of.raw, of.device, {"", CL_DEVICE_LOCAL_MEM_TYPE, form::equals, CL_LOCAL}));

  for (const auto& [key, value] : wanted) {
    if (value != refused) {
      const lines below = expected_children(of, key);
      EXPECT_EQ(text_of(told_children(child(opencl, key.c_str()), below)), text_of(below)) << key;
    }
  }
}

// Devices of one version come in the order in which OpenCL has them, if perhaps not all.
TEST(catalogue, says_what_opencl_says) {
  const raw_opencl raw;
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
    while (i < raw.devices.size() && (summary != start + raw.text(raw.devices[i], CL_DEVICE_NAME) ||
                                      reported != raw.text(raw.devices[i], CL_DEVICE_VERSION)))
      ++i;
    ASSERT_LT(i, raw.devices.size()) << "no such device";
    EXPECT_EQ(told(root, "FRIENDLY_SHORT_DESCRIPTION"), line(TARVA_ABI_TYPE_STRING, {summary}));
    compared.insert(raw.devices[i]);
    compare({raw, raw.devices[i++], static_cast<int>(version)}, root);
  }
  EXPECT_EQ(compared.size(), raw.devices.size()) << "devices that the library does not have";
}

} // namespace
