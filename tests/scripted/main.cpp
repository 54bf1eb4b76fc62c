// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Sets the scripted machine up before anything starts the library.
#include "tests/scripted/scripted_test.h"

namespace scripted {

std::vector<device_options> standard_devices() {
  std::vector<device_options> devices;
  for (std::uint32_t version = 1; version <= version_count; ++version)
    for (const char* name : {"first", "second", "big-endian"}) {
      device_options options{name, {version}};
      options.little_endian = std::string(name) != "big-endian";
      if (version >= 3 && std::string(name) == "second")
        options.info[0x103F] = text_answer(";copy_all;;sort_all"); // BUILT_IN_KERNELS
      if (!options.little_endian) {                                // answers that real devices rarely give
        options.info[0x1000] = value_answer(std::uint64_t{3});     // TYPE: two at once
        options.info[0x101B] = value_answer(std::uint64_t{2});     // SINGLE_FP_CONFIG
        options.info[0x101C] = value_answer(std::uint32_t{2});     // GLOBAL_MEM_CACHE_TYPE
        options.info[0x1016] = value_answer(std::uint32_t{0});     // IMAGE_SUPPORT
        options.info[0x1030] = text_answer("  cl_a   cl_b\n");
        options.info[0x102E] = text_answer("EMBEDDED_PROFILE");
      }
      devices.push_back(options);
    }
  return devices;
}

void register_kernels() {
  set_kernel("add", [](const kernel_run& now) {
    for (std::size_t i = 0; i < now.global[0]; ++i)
      now.set(0, now.offset[0] + i, now.get<std::int32_t>(0, now.offset[0] + i) + now.get<std::int32_t>(1));
  });
  set_kernel("sum", [](const kernel_run& now) {
    for (std::size_t i = 0; i < now.global[0]; ++i)
      now.set(0, i, now.get<std::int32_t>(1, i) + now.get<std::int32_t>(2, i));
  });
  // What it was given: the size of the local memory, the four values, and whether the last argument is null.
  set_kernel("observe", [](const kernel_run& now) {
    now.set(0, 0, static_cast<std::int16_t>(now.arguments[1].size));
    for (std::size_t i = 0; i < 4; ++i)
      now.set(0, 1 + i, now.get<std::int16_t>(2, i));
    now.set(0, 5, static_cast<std::int16_t>(now.arguments[3].kind == argument_kind::null));
  });
  set_kernel("flag", [](const kernel_run& now) { now.set(0, 0, std::int32_t{1}); });
}

} // namespace scripted

int main(int argc, char** argv) {
  scripted::set_devices(scripted::standard_devices());
  scripted::register_kernels();
  scripted::check_at_exit(true);
  ::testing::InitGoogleTest(&argc, argv);
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  return RUN_ALL_TESTS();
}
