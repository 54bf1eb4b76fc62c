// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Loading, using and unloading the library again and again leaves nothing of it behind.
#include "tests/scripted/scripted_qv.h"

#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <malloc.h>
#include <tarva_abi.h>
#include <thread>

namespace {

std::ptrdiff_t thread_count() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                       std::filesystem::directory_iterator());
}

bool is_mapped(const std::string& name) {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);)
    if (line.find(name) != std::string::npos)
      return true;
  return false;
}

// Calls a function of the library.
#define CALL(name, ...) reinterpret_cast<decltype(name)*>(dlsym(library, #name))(__VA_ARGS__)

// Each kind of memory that is given to callers, more often than ended handles are kept from being used again.
void use(void* library) {
  constexpr int times = 1500;
  tarva_abi_error_s* failure = nullptr;
  for (int i = 0; i < times; ++i) {
    tarva_abi_device_array_s* array = nullptr;
    ASSERT_EQ(CALL(tarva_abi_get_devices, nullptr, &array, &failure), 0);
    tarva_abi_property_s* root = nullptr;
    if (i % 50 == 0) {
      EXPECT_EQ(CALL(tarva_abi_get_device_root_property, nullptr, array->devices[0], &root, &failure), 0);
      tarva_abi_property_array_s* children = nullptr;
      EXPECT_EQ(CALL(tarva_abi_get_all_children_properties, nullptr, root, &children, &failure), 0);
      for (std::uint64_t child = 0; child < children->count; ++child)
        CALL(tarva_abi_free_property, nullptr, children->properties[child]);
      CALL(tarva_abi_free_property_array, nullptr, children);
      const tarva_abi_tree_format_s format{TARVA_ABI_TREE_XML, 0, 1, 1, 1, 1, 1};
      char* text = nullptr;
      EXPECT_EQ(CALL(tarva_abi_get_property_tree_string, nullptr, root, &format, &text, &failure), 0);
      CALL(tarva_abi_free_property_tree_string, nullptr, text);
      CALL(tarva_abi_free_property, nullptr, root);
      tarva_abi_build_result_s* built = nullptr;
      EXPECT_EQ(CALL(tarva_abi_load_device_ir, nullptr, array->devices[0], nullptr, TARVA_ABI_IR_SOURCE_1_0,
                     "#error", 6, "", "", &built, &failure),
                0);
      CALL(tarva_abi_release_program, nullptr, built->program);
      CALL(tarva_abi_free_build_result, nullptr, built);
    }
    EXPECT_NE(CALL(tarva_abi_get_device_root_property, nullptr, nullptr, &root, &failure), 0);
    CALL(tarva_abi_free_error, nullptr, failure);
    for (std::uint64_t device = 0; device < 2; ++device)
      CALL(tarva_abi_release_device, nullptr, array->devices[device]);
    CALL(tarva_abi_free_device_array, nullptr, array);
  }
  tarva_abi_memory_s* memory = nullptr;
  EXPECT_EQ(CALL(tarva_abi_memory_allocate_typed, nullptr, "", TARVA_ABI_TYPE_FLOAT, 16, &memory, &failure),
            0);
  CALL(tarva_abi_release_memory, nullptr, memory);
}

class unloading : public ::testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(scripted, unloading, ::testing::Values(false, true));

TEST_P(unloading, leaves_no_thread_no_mapping_no_memory_and_no_opencl_object) {
  scripted::set_devices({{"one", {1}}, {"two", {6}}});
  std::thread([] {}).join(); // a sanitizer starts a thread of its own beside the first
  const auto threads = thread_count();
  std::size_t used = 0;
  for (int i = 0; i < 100; ++i) {
    void* const library = dlopen(TARVA_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_EQ(CALL(tarva_abi_get_abi_version), 0u);
    if (GetParam())
      use(library);
    EXPECT_EQ(dlclose(library), 0);
    ASSERT_EQ(thread_count(), threads) << "after " << i + 1;
    ASSERT_FALSE(is_mapped("liboryn-tarva")) << "after " << i + 1;
    ASSERT_EQ(scripted::live_objects(), (std::map<std::string, std::int64_t>()));
    scripted::forget_calls();
    if (i == 9)
      used = mallinfo2().uordblks;
  }
  // The one handle that is never given up leaves its record each time; a piece that was forgotten each time leaves more.
  EXPECT_LT(mallinfo2().uordblks, used + 90 * 400);
  EXPECT_EQ(scripted::misuses(), std::vector<std::string>());
}

} // namespace
