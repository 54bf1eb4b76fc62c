// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Which devices of a machine are offered, as what, and the handles that lead to them.
#include "tests/capability/library.h"
#include "tests/failing_memory.h"

#include <algorithm>
#include <functional>
#include <thread>

namespace capability_test {
namespace {

using discovery = capability;

TEST_F(discovery, lists_of_versions_are_read_leniently_and_what_is_wrong_is_told) {
  use(plain_device());
  for (const auto& [list, expected, wrong] : std::initializer_list<std::array<const char*, 3>>{
           {"1.0,1.1 , 2.0,", "124", ""},
           {"2.2", "6", ""},
           {" ,,\t1.2\n,", "3", ""},
           {"1.2x,1,.2,1.,2.1", "5", "\"1.2x\", \"1\", \".2\", \"1.\""},
           {"1.2;2.0, all ,1.1", "2", "\"1.2;2.0\", \"all\""},
           {"-1.0,1.99999999999,3.0", "6", "\"-1.0\", \"1.99999999999\", \"3.0\""}}) { // the device's own
    testing::internal::CaptureStderr();
    const library made(list);
    EXPECT_EQ(made.capabilities(), expected) << list;
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), *wrong == 0 ? 0 : 1) << said;
    EXPECT_NE(said.find(wrong), said.npos) << said;
  }
}

TEST_F(discovery, older_devices_have_the_capability_of_their_version) {
  for (const auto& [version, expected] :
       std::initializer_list<std::pair<const char*, const char*>>{{"OpenCL 1.0 x", "1"},
                                                                  {"OpenCL 1.1", "2"},
                                                                  {"OpenCL 1.2 (x)", "3"},
                                                                  {"OpenCL 2.0 CUDA", "4"},
                                                                  {"OpenCL 2.1 x", "5"},
                                                                  {"OpenCL 2.2 x", "6"},
                                                                  {"OpenCL 3.0 plain", "3"},
                                                                  {"OpenCL 4.1", "3"},
                                                                  {"OpenCL 1.7", ""}}) {
    device_options device = plain_device(version);
    device.info[CL_DEVICE_IL_VERSION] = text_answer("");
    use(device);
    const library made("");
    EXPECT_EQ(made.capabilities(), expected) << version;
    EXPECT_EQ(live_objects().empty(), *expected == 0) << "tried, though nobody can use it";
  }
}

// What a device of version 3.0 need not have, but 2.0 does.
const std::pair<std::uint32_t, std::uint64_t> features_of_2_0[] = {
    {CL_DEVICE_DEVICE_ENQUEUE_CAPABILITIES, 3},
    {CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES, 3},
    {CL_DEVICE_MAX_ON_DEVICE_QUEUES, 1},
    {CL_DEVICE_SVM_CAPABILITIES, 1},
    {CL_DEVICE_ATOMIC_MEMORY_CAPABILITIES, 0x7f},
    {CL_DEVICE_GENERIC_ADDRESS_SPACE_SUPPORT, 1},
    {CL_DEVICE_NON_UNIFORM_WORK_GROUP_SUPPORT, 1},
    {CL_DEVICE_WORK_GROUP_COLLECTIVE_FUNCTIONS_SUPPORT, 1},
    {CL_DEVICE_PIPE_SUPPORT, 1},
    {CL_DEVICE_MAX_GLOBAL_VARIABLE_SIZE, 65536},
    {CL_DEVICE_MAX_READ_WRITE_IMAGE_ARGS, 64},
    {CL_DEVICE_IMAGE_PITCH_ALIGNMENT, 1}};

// With SPIR-V, which brings its constants along, nothing else counts; otherwise all of 2.0 must be there.
TEST_F(discovery, newer_devices_are_offered_by_what_they_can_do) {
  const auto result_with = [](const char* il, std::pair<std::uint32_t, std::uint64_t> changed = {}) {
    device_options device = plain_device("OpenCL 3.0 full");
    for (const auto& [name, value] : features_of_2_0)
      device.info[name] = value_answer(value);
    device.info[changed.first] = value_answer(changed.second);
    device.info[CL_DEVICE_IL_VERSION] = text_answer(il);
    use(device);
    return library("").capabilities();
  };
  for (const auto& [name, value] : features_of_2_0) {
    EXPECT_EQ(result_with("SPIR-V_1.0 ", {name, 0}), "6") << std::hex << name;
    EXPECT_EQ(result_with("", {name, 0}), "3") << std::hex << name;
  }
  EXPECT_EQ(result_with("PTX_2.0 SPIR-V_1.2"), "6");
  EXPECT_EQ(result_with("PTX_2.0"), "4");
  EXPECT_EQ(result_with("", {CL_DEVICE_MAX_GLOBAL_VARIABLE_SIZE, 1024}), "3");
}

TEST_F(discovery, devices_that_are_custom_or_not_available_are_offered) {
  std::vector<device_options> devices(4, plain_device("OpenCL 1.2"));
  devices[0].info[CL_DEVICE_AVAILABLE] = value_answer(0u);
  devices[1].defects[CL_DEVICE_AVAILABLE] = defect::refused;
  devices[3].info[CL_DEVICE_TYPE] = value_answer(cl_device_type{CL_DEVICE_TYPE_CUSTOM});
  set_devices(devices);
  set_platforms({{"Another", "OpenCL 1.2"}});
  library made("");
  ASSERT_EQ(made.count(), 4u);
  for (std::size_t place = 0; place < 4; ++place) {
    const user it(made, place, 3);
    std::uint32_t available = place < 2 ? 1 : 0;
    EXPECT_EQ(
        it.ask<op::get_device_info>({it.device, &available, nullptr, CL_DEVICE_AVAILABLE, 4, 77}).status,
        CL_SUCCESS);
    EXPECT_EQ(available != 0, place >= 2) << place;
  }
}

TEST_F(discovery, a_bad_device_takes_nothing_from_the_others) {
  struct row {
    std::function<void(device_options&)> spoil;
    const char* reason;
  };
  const auto defect_of = [](std::uint32_t query, defect what) {
    return [=](device_options& it) { it.defects[query] = what; };
  };
  const row rows[] = {
      {[](auto&) { fail_call(op::create_context, 2, CL_OUT_OF_RESOURCES); },
       "\"plain\" of the platform \"Second\" is left out: it gives no context (status -5)"},
      {[](auto&) { before_call(op::create_context, 2, [] { throw std::bad_alloc(); }); }, "(status -6)"},
      {[](auto&) { fail_call(op::create_context, 2, CL_SUCCESS); }, "(status -5)"}, // but it gives none
      {[](auto&) { fail_call(op::create_command_queue_with_properties, 3, -5); }, "no queue"},
      {defect_of(CL_DEVICE_NAME, defect::grows), "device 1 \"\""},
      {defect_of(CL_DEVICE_VENDOR, defect::absurd), "in one piece"},
      {defect_of(CL_DEVICE_EXTENSIONS, defect::thrown), "in one piece"},
      {defect_of(CL_DEVICE_PROFILE, defect::refused), "in one piece"},
      {defect_of(CL_DEVICE_ENDIAN_LITTLE, defect::refused), "in which order"},
      {[](auto& it) { it.info[CL_DEVICE_VERSION] = text_answer("non\nsense"); }, "no version"},
      {[](auto& it) { it.name = "a\nname", it.defects[CL_DEVICE_PROFILE] = defect::refused; },
       "\"a\\x0aname\""}};
  for (const row& one : rows)
    for (const char* wanted : {"1", "0"}) {
      std::vector<device_options> devices{plain_device("OpenCL 2.0"), plain_device("OpenCL 2.1"),
                                          plain_device("OpenCL 2.2")};
      one.spoil(devices[1]);
      for (device_options& each : devices)
        each.platform = 1;
      set_platforms({{"First"}, {"Second"}});
      set_devices(devices);
      setenv("QV_LOG", wanted, 1);
      testing::internal::CaptureStderr();
      const library made("");
      EXPECT_EQ(made.count(), 2u);
      const std::string said = testing::internal::GetCapturedStderr();
      EXPECT_EQ(said.find(one.reason) != std::string::npos, *wanted == '1') << one.reason << ": " << said;
      EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), *wanted == '1');
      EXPECT_EQ(made.capabilities(0) + made.capabilities(1), "46");
      EXPECT_EQ(live_objects(), (std::map<std::string, std::int64_t>{{"context", 2}, {"queue", 4}}));
    }
  unsetenv("QV_LOG");
}

TEST_F(discovery, a_bad_platform_takes_nothing_from_the_others) {
  std::vector<device_options> devices(3, plain_device());
  for (std::size_t i = 0; i < 3; ++i)
    devices[i].platform = i;
  set_devices(devices);
  const std::vector<platform_options> platforms{
      {.devices_status = CL_OUT_OF_HOST_MEMORY}, {}, {.false_count = ~0u}};
  set_platforms(platforms);
  EXPECT_EQ(library("").count(), 1u);
  set_platforms(platforms, -1001);
  EXPECT_EQ(library("").count(), 0u) << "no platform is no failure";
  set_platforms(platforms, CL_OUT_OF_HOST_MEMORY);
  const library again("");
  std::uint64_t count = 7;
  EXPECT_EQ(again.get_root_devices(0, nullptr, &count, 0), QV_UNRECOVERABLE_ERROR);
  set_platforms(platforms);
  EXPECT_EQ(again.count(), 1u) << "it looks again";
}

TEST_F(discovery, short_memory_is_told_from_a_small_machine) {
  std::vector<device_options> devices(2, plain_device());
  devices[1].info[CL_DEVICE_BUILT_IN_KERNELS] =
      text_answer("of a name that is too long for the string itself");
  set_devices(devices);
  is_exempt = is_inside;
  std::size_t point = 1;
  for (has_failed = true; has_failed; ++point) {
    const library made;
    std::uint64_t count = 7;
    has_failed = false;
    failing_allocation = point;
    const std::int32_t code = made.get_root_devices(0, nullptr, &count, 0);
    failing_allocation = endless;
    EXPECT_TRUE(code == QV_OK ? count == 2 : code == QV_UNRECOVERABLE_ERROR && has_failed) << point;
    EXPECT_EQ(made.count(), 2u) << point;
  }
  EXPECT_GT(point, 20u);
  is_exempt = [] { return false; };
}

TEST_F(discovery, what_it_is_asked_is_checked) {
  set_devices({plain_device(), plain_device()});
  const library made("1.0,2.2");
  std::array<std::uint64_t, 3> roots{};
  std::uint64_t count = 0;
  EXPECT_EQ(made.get_root_devices(1, roots.data(), &count, 0), QV_OK);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(roots[1], 0u) << "written past the array";
  EXPECT_EQ(made.get_root_devices(3, roots.data(), &count, 0), QV_OK);
  EXPECT_EQ(made.get_root_devices(1, nullptr, &count, 0), -1);
  EXPECT_EQ(made.get_root_devices(0, nullptr, nullptr, 0), -1);
  EXPECT_EQ(made.capabilities(), "16");
  for (const auto& [root, capability] :
       {std::pair<std::uint64_t, int>{roots[0], 0}, {roots[0], qv::capability_count + 1}, {99, 1}, {0, 1}})
    EXPECT_EQ(made.find_capability_nodes(root, static_cast<std::uint64_t>(capability), 0, nullptr, &count, 0),
              -1);
  const std::uint64_t node = made.node(roots[0], 6);
  qv_call_handle* handle = nullptr;
  EXPECT_EQ(made.create_call_handle(roots[1], node, &handle, 0), -1) << "the node of another root";
  EXPECT_EQ(made.create_call_handle(roots[0], node + 1, &handle, 0), -1);
  EXPECT_EQ(made.create_call_handle(0, 0, &handle, 0), -1);
  EXPECT_EQ(made.create_call_handle(roots[0], node, nullptr, 0), -1);
  EXPECT_EQ(made.close_call_handle(nullptr), QV_OK);
}

TEST_F(discovery, closed_handles_stay_closed_whatever_other_threads_open) {
  use(plain_device());
  library made;
  const auto is_open = [&](qv_call_handle* handle) {
    return made.call_capability(handle, ~std::uint64_t{0}, nullptr, 0) == QV_INVALID_COMMAND_ID;
  };
  for (const std::uintptr_t never_opened : {std::uintptr_t{0}, std::uintptr_t{5}, std::uintptr_t{4095},
                                            std::uintptr_t{4096}, reinterpret_cast<std::uintptr_t>(&made)}) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): it is only ever compared
    auto* const handle = reinterpret_cast<qv_call_handle*>(never_opened);
    EXPECT_FALSE(is_open(handle)) << never_opened;
    EXPECT_EQ(made.close_call_handle(handle), never_opened == 0 ? 0 : -1);
  }
  qv_call_handle* const held = made.open(0, 1);
  const std::uint64_t root = made.root(0), node = made.node(root, 1);
  std::vector<std::jthread> threads;
  for (int thread = 0; thread < 4; ++thread)
    threads.emplace_back([&] {
      qv_call_handle* first = nullptr;
      // More than there are slots, so that the first one's is used again.
      for (int i = 0; i < 5000; ++i) {
        qv_call_handle* next = nullptr;
        ASSERT_EQ(made.create_call_handle(root, node, &next, 0), QV_OK);
        ASSERT_NE(next, first);
        ASSERT_TRUE(is_open(next) && is_open(held) && !is_open(first));
        ASSERT_EQ(made.close_call_handle(next), QV_OK);
        first = first == nullptr ? next : first;
        ASSERT_EQ(made.close_call_handle(first), -1);
      }
    });
}

TEST_F(discovery, built_in_kernels_are_listed_if_a_program_can_be_made_of_them) {
  using row = std::tuple<const char*, std::function<void(device_options&)>, const char*>;
  for (const auto& [platform, spoil, listed] :
       {row{"Another", [](auto&) {}, "one;two"}, row{"rusticl", [](auto&) {}, ""},
        row{"Another", [](auto&) { fail_call(op::create_program_with_builtin_kernels, 1, -5); }, ""},
        row{"Another", [](auto& it) { it.defects[CL_DEVICE_BUILT_IN_KERNELS] = defect::absurd; }, ""}}) {
    device_options known = plain_device();
    known.info[CL_DEVICE_BUILT_IN_KERNELS] = text_answer("one;two");
    spoil(known);
    const only_user it(known, {platform});
    std::array<char, 8> text{"garbage"};
    std::size_t size = 0;
    EXPECT_EQ(it.ask<op::get_device_info>({it.device, text.data(), &size, CL_DEVICE_BUILT_IN_KERNELS, 8, 77})
                  .status,
              CL_SUCCESS);
    EXPECT_STREQ(text.data(), listed);
    EXPECT_EQ(size, std::strlen(listed) + 1);
  }
}

} // namespace
} // namespace capability_test
