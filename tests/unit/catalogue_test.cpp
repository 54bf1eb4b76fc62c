#include "abi/error_object.h"
#include "memory/library_memory.h"
#include "objects/opencl/device_properties.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>

namespace oryn::tarva::library {
namespace {

using names = std::vector<std::string>;

constexpr version_number first_version = 1;
constexpr version_number last_version = 6;

std::string value_text(const std::shared_ptr<property_base>& property) {
  if (property->is_empty()) {
    return "empty";
  }
  if (!property->has_data()) {
    return "none";
  }
  std::string text = std::to_string(static_cast<std::uint64_t>(property->get_data_type())) + ":";
  for (std::uint64_t index = 0; index < property->get_element_count(); ++index) {
    text += (index == 0 ? "" : ",") + property->element_to_string(index);
  }
  return text;
}

// The paths of a whole tree, found through the lists of children alone.
void collect_paths(property_interface& owner, const property_path& path, std::vector<property_path>& paths) {
  paths.push_back(path);
  for (const std::string& name : owner.get_child_names(path)) {
    property_path child = path;
    child.push_back(name);
    collect_paths(owner, child, paths);
  }
}

// A device whose answers are scripted by parameter; all others are distinct numbers.
struct scripted_device {
  std::map<std::uint32_t, std::uint64_t> numbers;
  std::map<std::uint32_t, std::string> strings;

  std::uint64_t get_uint64(std::uint32_t parameter) const {
    const auto found = numbers.find(parameter);
    return found == numbers.end() ? parameter : found->second;
  }
  std::uint32_t get_uint32(std::uint32_t parameter) const {
    return static_cast<std::uint32_t>(get_uint64(parameter));
  }
  bool get_bool(std::uint32_t parameter) const { return get_uint64(parameter) != 0; }
  std::string get_string(std::uint32_t parameter) const {
    const auto found = strings.find(parameter);
    return found == strings.end() ? "text " + std::to_string(parameter) : found->second;
  }
  std::array<std::uint64_t, 3> get_sizes(std::uint32_t parameter) const { return {parameter, 2, 3}; }
};

struct fake_device : property_interface {
  version_number number = last_version;
  scripted_device queries;

  explicit fake_device(version_number version) : number(version) {}
  std::shared_ptr<property_base> get_property(const property_path& path) override {
    return device_property(*this, path, queries, number);
  }
  std::vector<std::string> get_child_names(const property_path& path) override {
    return device_child_names(number, path);
  }
  std::string get_friendly_short_description() { return "short"; }
  std::string get_friendly_summary() { return "summary"; }
  std::uint64_t get_unique_identifier() { return 77; }
};

TEST(device_catalogue, every_listed_key_has_texts_and_a_value) {
  constexpr std::size_t below_opencl[] = {45, 56, 60, 69, 72, 72};
  std::set<std::string> keys;
  for (version_number number = first_version; number <= last_version; ++number) {
    fake_device device(number);
    EXPECT_EQ(device.get_child_names({"ROOT", "OPENCL"}).size(), below_opencl[number - 1]) << number;
    std::vector<property_path> paths;
    collect_paths(device, {"ROOT"}, paths);
    for (const property_path& path : paths) {
      const auto property = device.get_property(path);
      EXPECT_EQ(property->get_name(), path.back());
      EXPECT_FALSE(property->get_friendly_name().empty() || property->get_description().empty())
          << path.back();
      const auto type = value_type(get_device_catalogue().find(number, path)->source);
      EXPECT_EQ(property->has_data(), type.has_value()) << path.back();
      EXPECT_TRUE(!type || property->get_data_type() == *type) << path.back();
      keys.insert(path.back());
    }
  }
  EXPECT_EQ(keys.size(), 124u);
  EXPECT_FALSE(keys.contains("DEDICATED_LOCAL_MEMORY"));
  EXPECT_EQ(get_device_catalogue().get_dictionary().size(), 125u);
}

TEST(device_catalogue, order_and_texts) {
  fake_device device(4);
  EXPECT_EQ(device.get_child_names({"ROOT"}),
            (names{"FRIENDLY_SHORT_DESCRIPTION", "FRIENDLY_SUMMARY", "NAME", "OBJECT_ID", "OPENCL"}));
  const names below_opencl = device.get_child_names({"ROOT", "OPENCL"});
  EXPECT_EQ(below_opencl.front(), "CL_DEVICE_TYPE_DEFAULT");
  EXPECT_EQ(below_opencl.back(), "CL_DEVICE_PREFERRED_LOCAL_ATOMIC_ALIGNMENT");
  EXPECT_EQ(device.get_child_names({"ROOT", "OPENCL", "CL_DEVICE_IMAGE_SUPPORT"}).back(),
            "CL_DEVICE_MAX_READ_WRITE_IMAGE_ARGS");

  const auto& texts = get_device_catalogue().get_dictionary();
  EXPECT_EQ(texts.get_description("CL_DEVICE_TYPE_ACCELERATOR"), "The OpenCL device is a Accelerator type.");
  EXPECT_EQ(texts.get_friendly_name("CL_DEVICE_QUEUE_ON_DEVICE_MAX_SIZE"),
            "Maxium devices command queue size");
}

TEST(device_catalogue, unknown_paths_give_empty_properties) {
  fake_device device(6);
  const property_path paths[] = {
      {},
      {""},
      {"OPENCL"},
      {"ROOT", "ROOT"},
      {"ROOT", "CL_DEVICE_NAME"},
      {"ROOT", "OPENCL", "NAME"},
      {"ROOT", "OPENCL", "cl_device_name"},
      {"ROOT", "OPENCL", "CL_DEVICE_NAME", "CL_DEVICE_NAME"},
      {"ROOT", "OPENCL", "CL_DEVICE_SINGLE_FP_CONFIG", "CL_DEVICE_DOUBLE_FP_CONFIG_FMA"},
  };
  for (const property_path& path : paths) {
    EXPECT_TRUE(device.get_property(path)->is_empty()) << ::testing::PrintToString(path);
    EXPECT_TRUE(device.get_child_names(path).empty()) << ::testing::PrintToString(path);
  }
}

// What each query gives is compared on real devices; here, what those do not answer.
TEST(device_properties, read_answers_that_are_rare) {
  fake_device device(6);
  device.queries.strings = {
      {0x1030, "  cl_a   cl_b\n"}, {0x103f, ";one;;two;"}, {0x102e, "EMBEDDED_PROFILE"}};
  // A type of 3, a processor and the default device at once, counts as neither.
  device.queries.numbers = {{0x1000, 3}, {0x101b, 0x82}, {0x1032, 0x40}, {0x101c, 2}, {0x1022, 1}};
  const std::pair<const char*, const char*> rows[] = {
      {"CL_DEVICE_EXTENSIONS", "1:cl_a,cl_b"},
      {"CL_DEVICE_BUILT_IN_KERNELS", "1:one,two"},
      {"CL_DEVICE_MAX_WORK_ITEM_SIZES", "9:4101,2,3"},
      {"CL_DEVICE_TYPE_CPU", "2:false"},
      {"CL_DEVICE_TYPE_DEFAULT", "2:false"},
      {"DEDICATED_LOCAL_MEMORY", "2:true"},
      {"CL_DEVICE_PROFILE_FULL", "2:false"},
      {"CL_DEVICE_PROFILE_EMBEDDED", "2:true"},
      {"CL_DEVICE_SINGLE_FP_CONFIG/CL_DEVICE_SINGLE_FP_CONFIG_CORRECTLY_ROUNDED_DIVIDE_SQRT", "2:true"},
      {"CL_DEVICE_SINGLE_FP_CONFIG/CL_DEVICE_SINGLE_FP_CONFIG_SOFTWARE_EMULATED", "2:false"},
      {"CL_DEVICE_DOUBLE_FP_CONFIG/CL_DEVICE_DOUBLE_FP_CONFIG_SOFTWARE_EMULATED", "2:true"},
      {"CL_DEVICE_GLOBAL_MEM_CACHE_TYPE/CL_DEVICE_GLOBAL_MEM_CACHE_TYPE_READ_WRITE", "2:true"},
      {"CL_DEVICE_IMAGE_SUPPORT/CL_DEVICE_IMAGE2D_MAX_WIDTH", "9:4113"},
  };
  const auto value_at = [&](const std::string& keys) {
    property_path path = {"ROOT", "OPENCL"};
    std::istringstream stream(keys);
    for (std::string key; std::getline(stream, key, '/');)
      path.push_back(key);
    return value_text(device.get_property(path));
  };
  for (const auto& [keys, expected] : rows)
    EXPECT_EQ(value_at(keys), expected) << keys;
  device.queries.numbers[0x1016] = 0;
  EXPECT_EQ(value_at(std::end(rows)[-1].first), "empty") << "a device without images";
}

std::vector<std::string> values_of(property_interface& owner, const property_path& path) {
  std::vector<std::string> values;
  for (const auto& child : owner.get_property(path)->get_children()) {
    values.push_back(child->get_name() + "=" + value_text(child));
  }
  return values;
}

TEST(memory_properties, describe_the_allocation) {
  library_memory memory(data_type::float_, 10, "");
  EXPECT_EQ(values_of(memory, {"ROOT"}),
            (names{"USER_LABEL=1:", "NUM_ELEMENTS=9:10", "TYPE=9:12",
                   "OBJECT_ID=9:" + std::to_string(memory.get_unique_identifier())}));
  EXPECT_EQ(library_memory(data_type::uint32v3_, 10, "label").get_size_in_bytes(), 160u);
  EXPECT_EQ(library_memory(data_type::uint64_, ~0ul / 8 + 2, "").get_size_in_bytes(), ~0ul); // no wrap
  EXPECT_NE(memory.get_unique_identifier(),
            library_memory(data_type::float_, 10, "").get_unique_identifier());
}

TEST(error_properties, describe_the_exception_and_lead_inward) {
  error_object error(2, "outer");
  EXPECT_EQ(values_of(error, {"ROOT"}), (names{"EXCEPTION_TYPE=9:2", "EXCEPTION_MESSAGE=1:outer"}));
  EXPECT_EQ(error.get_nested_error(), nullptr);
  const auto nested = error.set_nested_error(7, "inner");
  EXPECT_EQ(values_of(*error.get_nested_error(), {"ROOT"}).back(), "EXCEPTION_MESSAGE=1:inner");
  EXPECT_THROW(error.set_nested_error(7, "again"), std::logic_error);
  EXPECT_EQ(error.get_nested_error(), nested);
}

} // namespace
} // namespace oryn::tarva::library
