// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What devices, programs, kernels and memory objects tell of themselves, under each version. Where each answer of a
// device comes from is taken from the headers of OpenCL.
#include "tests/scripted/catalogue_table.h"
#include "tests/scripted/scripted_test.h"

namespace scripted {

using namespace caller;

class properties : public each_version {};
INSTANTIATE_TEST_SUITE_P(scripted, properties, ::testing::Range(1u, version_count + 1), version_name);

std::vector<property> all_children(const property& parent) {
  tarva_abi_property_array_s* all = nullptr;
  must(call<tarva_abi_get_all_children_properties>(parent.get(), &all));
  std::vector<property> result;
  for (std::uint64_t i = 0; i < all->count; ++i)
    result.emplace_back(all->properties[i]);
  tarva_abi_free_property_array(nullptr, all);
  return result;
}

// "NAME=value,value"; of identifiers the name alone.
std::string written(const property& one) {
  std::string result = one->name;
  for (std::uint64_t i = 0; i < one->element_count && result != "OBJECT_ID"; ++i) {
    result += i == 0 ? "=" : ",";
    if (one->data_type == TARVA_ABI_TYPE_STRING)
      result += text(one, i);
    else if (one->data_type == TARVA_ABI_TYPE_UINT64)
      result += std::to_string(static_cast<const std::uint64_t*>(one->data)[i]);
    else if (one->data_type == TARVA_ABI_TYPE_BOOLEAN)
      result += static_cast<const std::uint32_t*>(one->data)[i] != 0 ? "true" : "false";
    else
      result += static_cast<const char*>(one->data)[i];
  }
  return result;
}

std::string children_of(const property& parent) {
  std::string result;
  for (const property& one : all_children(parent))
    result += (result.empty() ? "" : " ") + written(one);
  return result;
}

// Each has its words, and a value or children.
void expect_texts_and_values(const property& parent) {
  for (const property& one : all_children(parent)) {
    EXPECT_TRUE(*one->friendly_name != 0 && *one->description != 0) << one->name;
    EXPECT_TRUE(one->has_data != 0 || !all_children(one).empty()) << one->name;
    expect_texts_and_values(one);
  }
}

// As `written` gives it; nothing for what is no number.
std::string expected(const catalogue_table::row& from) {
  using catalogue_table::form;
  const std::uint64_t number = number_of(from.query);
  const auto flag = [](bool holds) { return holds ? "true" : "false"; };
  switch (from.as) {
  case form::number:
  case form::wide:
    return std::string(from.key) + "=" +
           (from.query == CL_DEVICE_MAX_WORK_GROUP_SIZE ? "256" : std::to_string(number));
  case form::flag:
    return std::string(from.key) + "=" + flag(number != 0);
  case form::bit:
    return std::string(from.key) + "=" + flag((number & from.operand) != 0);
  case form::equals:
    return std::string(from.key) + "=" + flag(number == from.operand);
  default:
    return {};
  }
}

// Users read the words of all properties, and their order, so both are on record: by their checksum.
std::uint64_t checksum_of_words(std::initializer_list<const property*> roots) {
  const tarva_abi_tree_format_s words{TARVA_ABI_TREE_TEXT, 1, 1, 1, 1, 1, 0};
  std::uint64_t sum = 0xcbf29ce484222325;
  for (const property* from : roots) {
    char* text = nullptr;
    must(call<tarva_abi_get_property_tree_string>(from->get(), &words, &text));
    for (const char* letter = text; *letter != 0; ++letter)
      sum = (sum ^ static_cast<unsigned char>(*letter)) * 0x100000001b3;
    tarva_abi_free_property_tree_string(nullptr, text);
  }
  return sum;
}

TEST_P(properties, of_a_device_are_those_of_its_version) {
  const auto of_device = root<tarva_abi_get_device_root_property>(device(version()));
  const std::string summary = "OpenCL " + std::string(version_texts[version() - 1]) + " device named: first";
  EXPECT_EQ(children_of(of_device), "FRIENDLY_SHORT_DESCRIPTION=" + summary + " FRIENDLY_SUMMARY=" + summary +
                                        " NAME=first OBJECT_ID OPENCL");
  const property opencl = child(of_device, "OPENCL");
  EXPECT_EQ(opencl->has_data, 0U);
  const auto all = all_children(opencl);
  std::set<std::string> keys;
  for (const property& one : all)
    EXPECT_TRUE(keys.insert(one->name).second) << one->name;
  EXPECT_EQ(keys, catalogue_table::keys_below("OPENCL", static_cast<int>(version())));
  EXPECT_STREQ(all.front()->name, "CL_DEVICE_TYPE_DEFAULT");
  expect_texts_and_values(of_device);
  for (const catalogue_table::block& each : catalogue_table::blocks) {
    if (const int now = static_cast<int>(version()); now < each.first || now > each.last)
      continue;
    property parent = child(of_device, "OPENCL");
    if (each.parent != "OPENCL")
      parent = child(parent, each.parent.c_str());
    for (const catalogue_table::row& one : each.rows)
      if (const std::string value = expected(one); !value.empty()) {
        EXPECT_EQ(written(child(parent, one.key)), value);
      }
  }
  for (const char* unknown :
       {"", "ROOT", "NAME", "OPENCL", "cl_device_name", "CL_DEVICE_SINGLE_FP_CONFIG_FMA"})
    EXPECT_STREQ(child(opencl, unknown)->name, "") << unknown;

  const tarva_abi_tree_format_s whole{TARVA_ABI_TREE_TEXT, 1, 1, 1, 1, 1, 1};
  char* none = nullptr;
  fail_call(qv::operation::get_device_info, 60, -5);
  EXPECT_NE(call<tarva_abi_get_property_tree_string>(of_device.get(), &whole, &none), outcome());
  EXPECT_EQ(none, nullptr) << "half a tree";
}

TEST_P(properties, of_a_size_that_they_cannot_have_are_refused) {
  const program made = compile(device(version()), "kernel void one() {}");
  const property of_device = child(root<tarva_abi_get_device_root_property>(device(version())), "OPENCL"),
                 of_program = child(root<tarva_abi_get_program_root_property>(made), "OPENCL");
  const auto refuse = [&](const property& parent, const char* name, std::uint32_t query, std::size_t size,
                          const std::string& reason) {
    set_info(device_index(version(), role::first), query, bytes(size));
    tarva_abi_property_s* none = nullptr;
    const outcome ended = call<tarva_abi_get_child_property_by_name>(parent.get(), name, &none);
    EXPECT_TRUE(ended.message.ends_with(reason) && none == nullptr) << name << ": " << ended;
    set_info(device_index(version(), role::first), query, {});
  };
  refuse(of_device, "CL_DEVICE_MAX_COMPUTE_UNITS", 0x1002, 2,
         "Expected: 4 bytes, but implementation provided 2 bytes.");
  refuse(of_device, "CL_DEVICE_MAX_WORK_ITEM_SIZES", 0x1005, 20,
         "Implementation reported the array to be 20 bytes, but expected the array to be 24 bytes.");
  refuse(of_program, "CL_PROGRAM_BINARY", 0x1165, 16,
         "The number of binary sizes returned should be equal to the number of devices.");
}

// Those of the big-endian devices.
TEST_P(properties, of_a_device_bear_rare_answers) {
  const auto of_device = root<tarva_abi_get_device_root_property>(device(version(), role::big_endian));
  const property opencl = child(of_device, "OPENCL");
  for (const std::string expected :
       {"CL_DEVICE_TYPE_CPU=false", "CL_DEVICE_TYPE_DEFAULT=false", "CL_DEVICE_ENDIAN_LITTLE=false",
        "CL_DEVICE_EXTENSIONS=cl_a,cl_b", "CL_DEVICE_MAX_WORK_ITEM_SIZES=256,256,64",
        "CL_DEVICE_PROFILE_FULL=false", "CL_DEVICE_PROFILE_EMBEDDED=true", "DEDICATED_LOCAL_MEMORY=true",
        "CL_DEVICE_VENDOR=Scripted Vendor",
        version() < 3 ? "CL_DRIVER_VERSION=0.1" : "CL_DEVICE_BUILT_IN_KERNELS",
        version() < 2 ? "CL_DRIVER_VERSION=0.1" : "CL_DEVICE_OPENCL_C_VERSION=OpenCL C scripted",
        version() < 5 ? "CL_DRIVER_VERSION=0.1" : "CL_DEVICE_IL_VERSION=SPIR-V_1.0 SPIR-V_1.1"})
    EXPECT_EQ(written(child(opencl, expected.substr(0, expected.find('=')).c_str())), expected);
  const auto below = [&](const char* key, const char* end) {
    return written(child(child(opencl, key), (std::string(key) + end).c_str()));
  };
  EXPECT_EQ(below("CL_DEVICE_GLOBAL_MEM_CACHE_TYPE", "_READ_WRITE"),
            "CL_DEVICE_GLOBAL_MEM_CACHE_TYPE_READ_WRITE=true");
  EXPECT_EQ(below("CL_DEVICE_SINGLE_FP_CONFIG", "_INF_NAN"), "CL_DEVICE_SINGLE_FP_CONFIG_INF_NAN=true");
  EXPECT_EQ(below("CL_DEVICE_SINGLE_FP_CONFIG", "_FMA"), "CL_DEVICE_SINGLE_FP_CONFIG_FMA=false");
  EXPECT_EQ(children_of(child(opencl, "CL_DEVICE_IMAGE_SUPPORT")), "") << "a device without images";
}

TEST_P(properties, of_programs_kernels_and_memory_are_those_of_the_version) {
  const program made = compile(device(version()), source), small = compile(device(version()), "kernel");
  const auto of_kernel = root<tarva_abi_get_kernel_root_property>(find_kernel(made, "fixed")),
             of_program = root<tarva_abi_get_program_root_property>(made);
  EXPECT_EQ(children_of(of_kernel),
            "MAX_WORK_ITEM_DIMENSIONS=3 MAX_WORK_GROUP_SIZE=256 KERNEL_NAME=fixed OPENCL OBJECT_ID "
            "REQUIRED_WORK_GROUP_SIZE=8,4,2 MAX_GLOBAL_WORK_SIZE=18446744073709551615,18446744073709551615,"
            "18446744073709551615");
  EXPECT_EQ(children_of(child(of_kernel, "OPENCL")),
            std::string("CL_KERNEL_NUM_ARGS=1 ") +
                (version() >= 3 ? "CL_KERNEL_ATTRIBUTES=reqd_work_group_size " : "") +
                "CL_KERNEL_COMPILE_WORK_GROUP_SIZE=8,4,2" +
                (version() >= 2 ? " CL_KERNEL_PREFERRED_WORK_GROUP_SIZE_MULTIPLE=32" : ""));
  EXPECT_EQ(children_of(of_program),
            "USER_LABEL=a test program KERNEL_NAMES=add,sum,observe,flag,fixed,empty OPENCL OBJECT_ID");
  EXPECT_EQ(children_of(child(root<tarva_abi_get_program_root_property>(small), "OPENCL")),
            std::string("CL_PROGRAM_SOURCE=kernel ") + (version() >= 5 ? "CL_PROGRAM_IL " : "") +
                "CL_PROGRAM_BINARY=B,I,N,:,k,e,r,n,e,l");
  EXPECT_EQ(children_of(root<tarva_abi_get_memory_root_property>(allocate(TARVA_ABI_TYPE_FLOAT, 10))),
            "USER_LABEL=a test NUM_ELEMENTS=10 TYPE=12 OBJECT_ID");
  tarva_abi_error_s* failure = nullptr;
  tarva_abi_get_devices(nullptr, nullptr, &failure);
  EXPECT_EQ(
      children_of(tarva::detail::root<tarva_abi_get_error_root_property>(failure)),
      "EXCEPTION_TYPE=2 EXCEPTION_MESSAGE=tarva_abi_get_devices: devices argument is NULL, but expected a memory location to return the device array.");
  tarva_abi_free_error(nullptr, failure);
  const auto of_device = root<tarva_abi_get_device_root_property>(device(version())),
             of_memory = root<tarva_abi_get_memory_root_property>(make(counted(1)));
  EXPECT_EQ(checksum_of_words({&of_device, &of_program, &of_kernel, &of_memory}),
            catalogue_table::checksums_of_words[version() - 1])
      << "the words or the order of properties have changed";
  const auto other = root<tarva_abi_get_device_root_property>(device(version(), role::second));
  std::set<std::uint64_t> identifiers;
  for (int time = 0; time < 2; ++time)
    for (const property* one : {&of_device, &other, &of_program, &of_kernel, &of_memory})
      identifiers.insert(child(*one, "OBJECT_ID").get<std::uint64_t>());
  EXPECT_EQ(identifiers.size(), 5U);
}

} // namespace scripted
