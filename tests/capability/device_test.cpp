// The devices of a machine, as the capability library finds and offers them, and what it does in their place.
#include "capability/capability_rule.h"
#include "capability/environment.h"
#include "capability/machine.h"
#include "capability/program_checks.h"
#include "tests/capability/fake_opencl.h"
#include "tests/failing_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <tuple>

using namespace capability_test;
using qv::operation;

namespace {

// What a device of version 3.0 need not have, but 2.0 does.
const std::map<cl_uint, std::uint64_t> features_of_2_0{{CL_DEVICE_DEVICE_ENQUEUE_CAPABILITIES, 3},
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

// One that has all of 2.2.
fake_device full_device() {
  fake_device device = plain_device("OpenCL 3.0 full");
  device.texts[CL_DEVICE_IL_VERSION] = "SPIR-V_1.0 SPIR-V_1.2";
  device.numbers.insert(features_of_2_0.begin(), features_of_2_0.end());
  device.numbers.insert({{CL_DEVICE_IMAGE_SUPPORT, 1}, {CL_DEVICE_MAX_NUM_SUB_GROUPS, 1}});
  return device;
}

class capability : public testing::Test {
protected:
  capability() {
    fake = &opencl_;
    calls.clear();
  }

  // The one device of a machine, offered under all capabilities.
  qv::root_device only_device(fake_platform platform, fake_device device) {
    platform.devices.push_back(std::move(device));
    opencl_.platforms.clear();
    opencl_.platforms.push_back(std::move(platform));
    return qv::find_root_devices(fake_functions(), qv::parse_capability_list("1.0,1.1,1.2,2.0,2.1,2.2"))
        .at(0);
  }

  qv::root_device only_device(const std::string& platform_name) {
    return only_device({platform_name}, full_device());
  }

  // The transport code of one command; its status is in the record.
  template <operation Op>
  static std::int32_t call(const qv::root_device& device, std::uint32_t capability, qv::record<Op>& record) {
    return qv::call_command({&device, &qv::commands_of_capability(capability)},
                            qv::command_number(Op, capability), &record);
  }

  fake_opencl opencl_;
};

TEST_F(capability, lists_of_versions_are_read_leniently_and_what_is_wrong_is_told) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"1.0,1.1 , 2.0", "0010110", ""},
      {"2.2", "1000000", ""},
      {" ,,\t1.2\n,", "0001000", ""},
      {"3.0,9.9", "0000000", "\"3.0\", \"9.9\""},
      {"1.2;2.0, all ,1.1", "0000100", "\"1.2;2.0\", \"all\""},
      {"1.2x,1,.2,1.,2.1", "0100000", "\"1.2x\", \"1\", \".2\", \"1.\""},
      {"-1.0,1.99999999999", "0000000", "\"-1.0\", \"1.99999999999\""}};
  for (const auto& [list, expected, wrong] : rows) {
    std::string unknown;
    EXPECT_EQ(qv::parse_capability_list(list, &unknown).to_string(), expected) << list;
    EXPECT_EQ(unknown, wrong);
  }
  testing::internal::CaptureStderr();
  for (const char* versions : {"1.2,2.0,", "1.2;2.0", "all"})
    qv::look_at_machine("libno-such-opencl.so.1", versions);
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_NE(said.find("\"1.2;2.0\"; devices are offered as what they report\n"), said.npos) << said;
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << "once";
}

TEST_F(capability, older_devices_have_the_capability_of_their_version) {
  const std::pair<const char*, const char*> rows[] = {
      {"OpenCL 1.0 x", "0000010"},     {"OpenCL 1.1", "0000100"},   {"OpenCL 1.2 (x)", "0001000"},
      {"OpenCL 2.0 CUDA", "0010000"},  {"OpenCL 2.1 x", "0100000"}, {"OpenCL 2.2 x", "1000000"},
      {"OpenCL 3.0 plain", "0001000"}, {"OpenCL 4.1", "0001000"},   {"OpenCL 1.7", "0000000"}};
  for (const auto& [version, expected] : rows) {
    opencl_.platforms = {{}};
    opencl_.platforms[0].devices = {plain_device(version)};
    EXPECT_EQ(qv::find_root_devices(fake_functions(), {}).at(0).capabilities.to_string(), expected)
        << version;
  }
}

TEST_F(capability, newer_devices_are_offered_by_what_they_can_do) {
  fake_platform platform;
  fake_device device;
  qv::opencl_functions cl = fake_functions();
  const auto result = [&](const char* il, cl_device_info changed = 0, std::uint64_t value = 0) {
    device = full_device();
    device.texts[CL_DEVICE_IL_VERSION] = il;
    device.numbers[changed] = value;
    return qv::natural_capability(cl, reinterpret_cast<cl_platform_id>(&platform),
                                  reinterpret_cast<cl_device_id>(&device), {3, 0});
  };
  constexpr const char *none = "", *other = "PTX_2.0", *spirv = "SPIR-V_1.0 ";
  // With SPIR-V and its constants nothing else counts.
  EXPECT_EQ(result(spirv), 6u);
  EXPECT_EQ(result(none), 4u);
  EXPECT_EQ(result(other), 4u);
  for (const auto& [name, value] : features_of_2_0) {
    EXPECT_EQ(result(spirv, name), 6u) << std::hex << name;
    EXPECT_EQ(result(none, name), 3u) << std::hex << name;
  }
  EXPECT_EQ(result(none, CL_DEVICE_MAX_GLOBAL_VARIABLE_SIZE, 1024), 3u);

  cl.set_program_specialization_constant = nullptr; // an older loader's
  EXPECT_EQ(result(spirv), 5u);
  EXPECT_EQ(result(other), 4u);
  EXPECT_EQ(result(spirv, CL_DEVICE_DEVICE_ENQUEUE_CAPABILITIES, 1), 4u);
  EXPECT_EQ(result(spirv, CL_DEVICE_MAX_NUM_SUB_GROUPS), 4u);
  EXPECT_EQ(result(spirv, CL_DEVICE_MAX_READ_WRITE_IMAGE_ARGS), 3u);
  platform.timer = 0;
  EXPECT_EQ(result(spirv), 4u);
  cl = fake_functions();
  cl.create_program_with_il = nullptr;
  EXPECT_EQ(result(spirv, CL_DEVICE_IMAGE_SUPPORT), 4u) << "no images, so none to read and write";
}

// A plain queue is the default one then, and what 2.2 demands besides is the device's to answer.
TEST_F(capability, spirv_without_device_queues_is_a_capability_of_2_2) {
  fake_platform platform;
  fake_device known = plain_device("OpenCL 3.0");
  known.texts[CL_DEVICE_IL_VERSION] = "SPIR-V_1.2";
  platform.devices = {known};
  opencl_.platforms = {platform};
  const qv::root_device device = qv::find_root_devices(fake_functions(), {}).at(0);
  ASSERT_EQ(device.capabilities.to_string(), "1000000");
  const std::array<std::uint64_t, 3> words{CL_QUEUE_PROPERTIES, 13, 0};
  qv::create_command_queue_with_properties_record queue{device.id, fake, words.data(), nullptr, 77};
  ASSERT_EQ(call<operation::create_command_queue_with_properties>(device, 6, queue), QV_OK);
  EXPECT_EQ(queue.status, CL_SUCCESS);
  EXPECT_EQ(opencl_.queue_words, std::vector<std::uint64_t>{0});
  qv::get_device_info_record pipes{device.id, nullptr, nullptr, CL_DEVICE_PIPE_SUPPORT, 0, 77};
  call<operation::get_device_info>(device, 6, pipes);
  EXPECT_EQ(pipes.status, CL_INVALID_VALUE);
}

TEST_F(capability, devices_that_are_custom_or_not_available_are_offered) {
  fake_device busy = full_device(), silent = full_device(), custom = plain_device("OpenCL 1.2");
  busy.numbers[CL_DEVICE_AVAILABLE] = 0;
  silent.numbers.erase(CL_DEVICE_AVAILABLE);
  fake_platform platform;
  platform.devices = {busy, silent, full_device()};
  platform.custom_devices = {custom};
  fake_platform old = platform;
  old.version = "OpenCL 1.1";
  opencl_.platforms = {platform, old};
  const auto devices = qv::find_root_devices(fake_functions(), {});
  ASSERT_EQ(devices.size(), 7u) << "a platform of 1.1 knows no custom devices";
  EXPECT_EQ(devices[3].version, (qv::opencl_version{1, 2}));
  for (const auto& [place, expected] : {std::pair{0, false}, {1, false}, {2, true}, {3, true}}) {
    const qv::root_device& device = devices[static_cast<std::size_t>(place)];
    std::uint64_t available = expected ? 0 : 1; // the fake's numbers are wide
    qv::get_device_info_record record{device.id, &available, nullptr, CL_DEVICE_AVAILABLE, 8, 77};
    call<operation::get_device_info>(device, 3, record);
    EXPECT_EQ(record.status, CL_SUCCESS);
    EXPECT_EQ(available != 0, expected) << place;
  }
}

TEST_F(capability, a_bad_device_takes_nothing_from_the_others) {
  struct row {
    void (*spoil)(fake_device&);
    const char* reason;
  };
  for (const auto& [spoil, reason] :
       {row{[](fake_device& it) { it.bad_objects[id<&cl::create_context>] = fault::refused; },
            "\"a fake\" of the platform \"Fake\" is left out: it gives no context (status -5)"},
        row{[](fake_device& it) { it.bad_objects[id<&cl::create_context>] = fault::thrown; }, "(status -6)"},
        row{[](fake_device& it) {
              it.bad_objects[id<&cl::create_command_queue_with_properties>] = fault::refused;
            },
            "no queue"},
        row{[](fake_device& it) { it.bad_texts[CL_DEVICE_NAME] = fault::grows; }, "device 1 \"\""},
        row{[](fake_device& it) { it.bad_texts[CL_DEVICE_VENDOR] = fault::absurd; }, "in one piece"},
        row{[](fake_device& it) { it.bad_texts[CL_DEVICE_EXTENSIONS] = fault::thrown; }, "in one piece"},
        row{[](fake_device& it) { it.bad_texts[CL_DEVICE_PROFILE] = fault::refused; }, "in one piece"},
        row{[](fake_device& it) { it.numbers.erase(CL_DEVICE_ENDIAN_LITTLE); }, "in which order"},
        row{[](fake_device& it) { it.texts[CL_DEVICE_VERSION] = "non\nsense"; }, "no version"},
        row{[](fake_device& it) {
              it.numbers[CL_DEVICE_AVAILABLE] = 0;
              it.bad_objects[id<&cl::create_context>] = fault::refused;
            },
            "no context"}}) {
    fake_platform platform;
    platform.devices = {plain_device("OpenCL 1.1"), plain_device("OpenCL 1.2"), full_device()};
    spoil(platform.devices[1]);
    opencl_.platforms = {fake_platform(), platform};
    for (const char* wanted : {"1", "0"}) {
      setenv("QV_LOG", wanted, 1);
      testing::internal::CaptureStderr();
      const auto devices = qv::find_root_devices(fake_functions(), {});
      const std::string said = testing::internal::GetCapturedStderr();
      EXPECT_EQ(said.find(reason) != std::string::npos, *wanted == '1') << said;
      EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), *wanted == '1');
      ASSERT_EQ(devices.size(), 2u) << reason;
      EXPECT_EQ(devices[0].version, (qv::opencl_version{1, 1}));
      EXPECT_EQ(devices[1].version, (qv::opencl_version{3, 0}));
      EXPECT_EQ(opencl_.live_objects, 6) << "a context and two queues each";
    }
    EXPECT_EQ(opencl_.live_objects, 0);
  }
  unsetenv("QV_LOG");
}

TEST_F(capability, a_bad_platform_takes_nothing_from_the_others) {
  opencl_.platforms = {fake_platform(), fake_platform(), fake_platform()};
  for (fake_platform& platform : opencl_.platforms)
    platform.devices = {plain_device("OpenCL 1.2")};
  opencl_.platforms[0].devices_status = CL_OUT_OF_HOST_MEMORY;
  opencl_.platforms[2].count_of_devices = ~cl_uint{0};
  EXPECT_EQ(qv::find_root_devices(fake_functions(), {}).size(), 1u);
  opencl_.platforms_status = -1001;
  EXPECT_TRUE(qv::find_root_devices(fake_functions(), {}).empty()) << "no platform is no failure";
  opencl_.platforms_status = CL_OUT_OF_HOST_MEMORY;
  EXPECT_THROW(qv::find_root_devices(fake_functions(), {}), std::bad_alloc);
}

TEST_F(capability, short_memory_is_told_from_a_small_machine) {
  fake_platform platform;
  platform.devices = {full_device(), full_device()};
  platform.devices[1].texts[CL_DEVICE_BUILT_IN_KERNELS] = "of a name that is too long for the string itself";
  opencl_.platforms = {platform};
  const qv::opencl_functions cl = fake_functions();
  for (std::size_t left = 0;; ++left) {
    ASSERT_LT(left, 1000u);
    bool found = false;
    allocations_left = left;
    try {
      found = qv::find_root_devices(cl, {}).size() == 2;
      allocations_left = endless;
      ASSERT_TRUE(found) << left;
    } catch (const std::bad_alloc&) {
    }
    allocations_left = endless;
    ASSERT_EQ(opencl_.live_objects, 0) << left;
    if (found)
      break;
  }
}

// The callback of a test's context notes who is told what.
void note_error(const char* message, const void*, std::size_t, void* user_data) {
  *static_cast<std::string*>(user_data) = message;
}

class tried : public capability, public testing::WithParamInterface<const char*> {};
// The second loses what its callbacks are given.
INSTANTIATE_TEST_SUITE_P(, tried, testing::Values("Fake", "Oclgrind"));

TEST_P(tried, objects_are_used_once) {
  fake_device known = full_device();
  known.texts[CL_DEVICE_BUILT_IN_KERNELS] = "one;two";
  const qv::root_device device = only_device({GetParam()}, known);
  ASSERT_EQ(opencl_.made_objects, 4u);
  const qv::context_notify notify = fake->notify;
  notify("nobody listens yet", nullptr, 0, fake->user_data);

  void* const id = device.id;
  std::string told;
  const std::uint64_t own_word[] = {1, 0};
  using op = operation;
  const auto context = [&](const std::uint64_t* properties) {
    qv::create_context_record record{properties, 1, &id, note_error, &told, nullptr, 77};
    call<op::create_context>(device, 4, record);
    EXPECT_EQ(record.status, CL_SUCCESS);
    return record.result;
  };
  EXPECT_EQ(as_number(context(own_word)), 5u);
  void* const tried = context(nullptr);
  EXPECT_EQ(as_number(tried), 1u);
  EXPECT_EQ(as_number(context(nullptr)), 6u);
  // The context that was made first tells of its errors to whoever has it now, as far as it can be known.
  notify("an error", nullptr, 0, device.kept.get());
  EXPECT_EQ(told, "an error");
  notify("another", nullptr, 0, nullptr);
  EXPECT_EQ(told, GetParam() == std::string("Fake") ? "an error" : "another");

  const std::uint64_t plain[] = {CL_QUEUE_PROPERTIES, 0, 0};
  const std::uint64_t profiling[] = {CL_QUEUE_PROPERTIES, CL_QUEUE_PROFILING_ENABLE, 0};
  const std::uint64_t sized[] = {CL_QUEUE_PROPERTIES, 0, CL_QUEUE_SIZE, 0, 0};
  const auto queue = [&](void* context, const std::uint64_t* properties) {
    qv::create_command_queue_with_properties_record record{id, context, properties, nullptr, 77};
    call<op::create_command_queue_with_properties>(device, 4, record);
    return as_number(static_cast<qv::queue_object*>(record.result)->queue());
  };
  const auto program = [&](void* context, const char* names) {
    qv::create_program_with_builtin_kernels_record record{context, &id, names, nullptr, 77, 1};
    call<op::create_program_with_builtin_kernels>(device, 4, record);
    return as_number(static_cast<qv::program_object*>(record.result)->program());
  };
  EXPECT_EQ(queue(fake, plain), 7u) << "another context";
  EXPECT_EQ(queue(tried, sized), 8u);
  EXPECT_EQ(queue(tried, plain), 2u);
  EXPECT_EQ(queue(tried, plain), 9u);
  EXPECT_EQ(queue(tried, profiling), 3u);
  EXPECT_EQ(program(tried, "one"), 10u);
  EXPECT_EQ(program(tried, "one;two"), 4u);
  EXPECT_EQ(program(tried, "one;two"), 11u);
}

TEST_F(capability, built_in_kernels_are_listed_if_a_program_can_be_made_of_them) {
  using row = std::tuple<const char*, std::function<void(fake_device&)>, const char*>;
  for (const auto& [platform, spoil, listed] :
       {row{"Fake", [](fake_device&) {}, "one;two"}, row{"rusticl", [](fake_device&) {}, ""},
        row{"Fake",
            [](fake_device& it) {
              it.bad_objects[id<&cl::create_program_with_builtin_kernels>] = fault::refused;
            },
            ""},
        row{"Fake", [](fake_device& it) { it.bad_texts[CL_DEVICE_BUILT_IN_KERNELS] = fault::absurd; }, ""}}) {
    fake_device known = full_device();
    known.texts[CL_DEVICE_BUILT_IN_KERNELS] = "one;two";
    spoil(known);
    const qv::root_device device = only_device({platform}, known);
    std::array<char, 8> text{"garbage"};
    std::size_t size = 0;
    qv::get_device_info_record record{device.id, text.data(), &size, CL_DEVICE_BUILT_IN_KERNELS, 8, 77};
    call<operation::get_device_info>(device, 4, record);
    EXPECT_EQ(record.status, CL_SUCCESS);
    EXPECT_STREQ(text.data(), listed);
    EXPECT_EQ(size, std::strlen(listed) + 1);
  }
}

TEST_F(capability, the_machine_checks_what_it_is_asked) {
  fake_platform platform;
  platform.devices = {plain_device("OpenCL 1.2"), plain_device("OpenCL 1.2")};
  opencl_.platforms = {platform};
  const qv::machine machine(qv::find_root_devices(fake_functions(), qv::parse_capability_list("1.0,2.2")));

  std::array<std::uint64_t, 3> roots{};
  std::uint64_t count = 0;
  EXPECT_EQ(machine.get_root_devices(1, roots.data(), &count), QV_OK);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(roots[1], 0u) << "written past the array";
  EXPECT_EQ(machine.get_root_devices(3, roots.data(), &count), QV_OK);
  EXPECT_EQ(machine.get_root_devices(1, nullptr, &count), -1);
  EXPECT_EQ(machine.get_root_devices(0, nullptr, nullptr), -1);

  std::uint64_t node = 0;
  EXPECT_EQ(machine.find_capability_nodes(roots[0], 3, 0, nullptr, &count), QV_OK);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(machine.find_capability_nodes(roots[0], 6, 1, &node, &count), QV_OK);
  EXPECT_EQ(count, 1u);
  for (const auto& [root, capability] : {std::pair{roots[0], 0}, {roots[0], 7}, {99ul, 1}, {0ul, 1}})
    EXPECT_EQ(machine.find_capability_nodes(root, static_cast<std::uint64_t>(capability), 0, nullptr, &count),
              -1);

  qv_call_handle* handle = nullptr;
  EXPECT_EQ(machine.create_call_handle(roots[1], node, &handle), -1) << "the node of another root";
  EXPECT_EQ(machine.create_call_handle(roots[0], node + 1, &handle), -1);
  EXPECT_EQ(machine.create_call_handle(roots[0], node, nullptr), -1);
  ASSERT_EQ(machine.create_call_handle(roots[0], node, &handle), QV_OK);
  qv::device_of_handle_record record{};
  EXPECT_EQ(qv::call_command(handle, qv::command_number(operation::device_of_handle, 6), &record), QV_OK);
  EXPECT_EQ(record.result, &opencl_.platforms[0].devices[0]);
  EXPECT_TRUE(qv::close_call_handle(handle));
}

bool is_open(qv_call_handle* handle) {
  return qv::call_command(handle, ~std::uint64_t{0}, nullptr) == QV_INVALID_COMMAND_ID;
}

TEST_F(capability, closed_handles_stay_closed) {
  const qv::root_device device = only_device("Fake");
  const qv::binding bound{&device, &qv::commands_of_capability(1)};
  for (const std::uintptr_t never_opened : {0, 5, 4095, 4096})
    // NOLINTNEXTLINE(performance-no-int-to-ptr): it is only ever compared
    EXPECT_FALSE(is_open(reinterpret_cast<qv_call_handle*>(never_opened))) << never_opened;
  qv_call_handle* const first = qv::open_call_handle(bound);
  qv_call_handle* const held = qv::open_call_handle(bound);
  EXPECT_TRUE(qv::any_call_handle_open());
  EXPECT_TRUE(qv::close_call_handle(first));
  EXPECT_FALSE(qv::close_call_handle(first));
  // More than there are slots, so that the first one's is used again.
  for (int i = 0; i < 10000; ++i) {
    qv_call_handle* const next = qv::open_call_handle(bound);
    ASSERT_NE(next, nullptr);
    ASSERT_NE(next, first);
    ASSERT_TRUE(is_open(next));
    ASSERT_FALSE(is_open(first));
    ASSERT_TRUE(qv::close_call_handle(next));
    ASSERT_TRUE(is_open(held));
  }
  EXPECT_TRUE(qv::close_call_handle(held));
  EXPECT_FALSE(qv::any_call_handle_open());
}

TEST_F(capability, handles_open_and_close_on_many_threads) {
  const qv::root_device device = only_device("Fake");
  std::vector<std::thread> threads;
  std::atomic<int> wrong{0};
  for (std::uint32_t capability = 1; capability <= 4; ++capability)
    threads.emplace_back([&, capability] {
      const qv::binding bound{&device, &qv::commands_of_capability(capability)};
      for (int i = 0; i < 5000; ++i) {
        qv_call_handle* const handle = qv::open_call_handle(bound);
        qv::device_of_handle_record record{};
        const auto number = qv::command_number(operation::device_of_handle, capability);
        if (qv::call_command(handle, number, &record) != QV_OK || record.result != device.id ||
            !qv::close_call_handle(handle))
          ++wrong;
      }
    });
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_FALSE(qv::any_call_handle_open());
}

TEST_F(capability, local_sizes_of_zero_never_reach_opencl) {
  using row = std::tuple<std::uint32_t, std::array<std::size_t, 3>, cl_int, bool>;
  const qv::root_device device = only_device("Fake");
  const own_objects own(device);
  const std::array<std::size_t, 3> global{64, 64, 64};
  for (const auto& [dimensions, local, status, given] :
       {row{1, {0, 0, 0}, 0, false}, row{3, {0, 0, 0}, 0, false}, row{1, {0, 8, 8}, 0, false},
        row{1, {8, 0, 0}, 0, true}, row{2, {8, 4, 0}, 0, true}, row{2, {8, 0, 4}, -54, false},
        row{3, {0, 0, 1}, -54, false}, row{0, {1, 1, 1}, -53, false}, row{4, {1, 1, 1}, -53, false},
        row{~0u, {0, 0, 0}, -53, false}}) {
    qv::enqueue_nd_range_kernel_record record{};
    record.command_queue = own.queue;
    record.kernel = own.kernel;
    record.work_dim = dimensions;
    record.global_work_size = global.data();
    record.local_work_size = local.data();
    record.status = 77;
    EXPECT_EQ(status_of<operation::enqueue_nd_range_kernel>(device, record), status);
    EXPECT_EQ(!calls.empty() && calls[0].arguments[5] != 0, given);
  }
}

TEST_F(capability, plain_queues_stand_in_for_queues_that_a_device_lacks) {
  // The words of the queue that is made; bits alone: by the older function.
  enum device_queues { none, some, refused };
  using row = std::tuple<const char*, device_queues, std::uint64_t, std::vector<std::uint64_t>>;
  for (const auto& [platform_version, queues, bits, expected] :
       {row{"OpenCL 3.0", some, 13, {0x1093, 13, 0x1094, 512}}, row{"OpenCL 3.0", refused, 13, {0}},
        row{"OpenCL 3.0", none, 13, {0}}, row{"OpenCL 3.0", none, 15, {2}},
        row{"OpenCL 3.0", none, 3, {0x1093, 3, 0x1094, 512}}, row{"OpenCL 1.2", some, 13, {0}},
        row{"OpenCL 1.2", none, 3, {3}}}) {
    fake_platform platform;
    platform.version = platform_version;
    fake_device known = queues == none ? plain_device("OpenCL 3.0") : full_device();
    known.refuses_device_queues = queues == refused;
    const qv::root_device device = only_device(platform, known);
    const std::array<std::uint64_t, 5> words{0x1093, bits, 0x1094, 512, 0};
    qv::create_command_queue_with_properties_record record{device.id, fake, words.data(), nullptr, 77};
    ASSERT_EQ(call<operation::create_command_queue_with_properties>(device, 4, record), QV_OK);
    EXPECT_EQ(record.status, CL_SUCCESS);
    EXPECT_EQ(opencl_.queue_words, expected) << platform_version << " " << bits;
  }
}

TEST_F(capability, platforms_are_not_asked_for_what_came_after_them) {
  fake_platform platform;
  platform.version = "OpenCL 1.1 old";
  const qv::root_device device = only_device(platform, plain_device("OpenCL 1.1"));

  EXPECT_EQ(status_of<operation::create_program_with_il>(device, {}), CL_INVALID_OPERATION);
  qv::program_object program(nullptr, false);
  qv::queue_object queue(nullptr);
  EXPECT_EQ(status_of<operation::set_program_specialization_constant>(device, {&program, 0, 0, nullptr, 0}),
            CL_INVALID_OPERATION);
  qv::enqueue_fill_buffer_record fill{};
  fill.command_queue = &queue;
  EXPECT_EQ(status_of<operation::enqueue_fill_buffer>(device, fill), CL_INVALID_OPERATION);
  qv::create_program_with_builtin_kernels_record builtin{};
  for (const auto& [names, status] :
       {std::pair{"some", CL_INVALID_OPERATION}, {"", CL_INVALID_VALUE}, {nullptr, CL_INVALID_VALUE}}) {
    builtin.kernel_names = names;
    EXPECT_EQ(status_of<operation::create_program_with_builtin_kernels>(device, builtin), status);
  }

  qv::object_record retained{device.id, 77};
  call<operation::retain_device>(device, 6, retained);
  EXPECT_EQ(retained.status, CL_SUCCESS);
  qv::get_extension_function_address_for_platform_record address{&platform, "clX", &platform};
  call<operation::get_extension_function_address_for_platform>(device, 4, address);
  EXPECT_EQ(address.result, nullptr);
  EXPECT_TRUE(calls.empty());

  EXPECT_EQ(status_of<operation::create_program_with_il>(only_device("Fake"), {}), CL_SUCCESS);
}

TEST_F(capability, older_devices_answer_what_a_start_asks) {
  const qv::root_device device = only_device({}, plain_device("OpenCL 1.1"));
  using row = std::tuple<std::uint32_t, std::size_t, cl_int, std::uint32_t, std::size_t>;
  for (const auto& [query, room, expected_status, expected_value, expected_size] :
       {row{CL_DEVICE_QUEUE_ON_DEVICE_PREFERRED_SIZE, 4, CL_SUCCESS, 0, 4},
        row{CL_DEVICE_QUEUE_ON_DEVICE_PREFERRED_SIZE, 2, CL_INVALID_VALUE, ~0u, 9},
        row{CL_DEVICE_BUILT_IN_KERNELS, 1, CL_SUCCESS, ~0xffu, 1},
        row{CL_DEVICE_PIPE_SUPPORT, 4, CL_INVALID_VALUE, ~0u, 9}}) {
    std::uint32_t value = ~0u;
    std::size_t size = 9;
    qv::get_device_info_record record{device.id, &value, &size, query, room, 77};
    call<operation::get_device_info>(device, 4, record);
    EXPECT_EQ(record.status, expected_status) << std::hex << query;
    EXPECT_EQ(value, expected_value);
    EXPECT_EQ(size, expected_size);
  }
}

TEST_F(capability, attributes_that_are_not_the_kernels_are_not_told) {
  for (const auto& [platform, expected] :
       {std::pair{"Oclgrind", ""}, std::pair{"Clover", ""}, std::pair{"Fake", "garbage"}}) {
    const qv::root_device device = only_device(platform);
    const own_objects own(device);
    std::array<char, 8> text{};
    qv::get_object_info_record record{own.kernel, text.size(), text.data(),
                                      nullptr,    77,          CL_KERNEL_ATTRIBUTES};
    call<operation::get_kernel_info>(device, 3, record);
    EXPECT_EQ(record.status, CL_SUCCESS);
    EXPECT_STREQ(text.data(), expected);
  }
}

TEST_F(capability, groups_may_be_as_large_as_they_can_be) {
  for (const auto& [platform, expected] : {std::pair{"rusticl", 1024u}, std::pair{"Fake", 32u}}) {
    fake_device known = full_device();
    known.numbers[CL_DEVICE_MAX_WORK_GROUP_SIZE] = 1024;
    const qv::root_device device = only_device({platform}, known);
    for (const cl_uint query : {CL_KERNEL_WORK_GROUP_SIZE, CL_KERNEL_PREFERRED_WORK_GROUP_SIZE_MULTIPLE}) {
      std::size_t size = 0;
      qv::get_object_device_info_record record{device.id, fake, sizeof size, &size, nullptr, 77, query};
      call<operation::get_kernel_work_group_info>(device, 3, record);
      EXPECT_EQ(record.status, CL_SUCCESS);
      EXPECT_EQ(size, query == CL_KERNEL_WORK_GROUP_SIZE ? expected : 32u) << platform;
    }
  }
}

// A little-endian number, as binaries have it.
template <typename Number>
std::string number(Number value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

bool is_harmless(const char* platform, const std::string& binary) {
  return qv::is_harmless_binary(qv::quirks_of_platform(platform),
                                reinterpret_cast<const unsigned char*>(binary.data()), binary.size());
}

// A kernel of PoCL's, with one file.
std::string pocl_kernel(const std::string& name) {
  const std::string file = number(2u) + "/k" + number(3u) + "abc";
  const std::string told = number(std::uint64_t{file.size()}) + number(7u) +
                           number(std::uint32_t(name.size())) + name + std::string(40, 'i');
  return number(std::uint64_t{8 + told.size() + file.size()}) + told + file;
}

std::string pocl_binary(std::uint32_t version) {
  const std::string file = number(2u) + "/p" + number(3u) + "abc";
  const std::string files = number(std::uint64_t{file.size()}) + file;
  const std::string front = std::string("poclbin\0", 8) + number(std::uint64_t{1}) + number(version) +
                            number(2u) + number(std::uint64_t{2});
  const std::string hash(41, 'h');
  const std::string kernels = pocl_kernel("first") + pocl_kernel("second");
  if (version < 9)
    return front + hash + file + kernels;
  return front + number(2u) + hash + (version < 10 ? "" : number(std::uint64_t{64})) + files + files +
         kernels;
}

TEST_F(capability, binaries_cut_short_are_told_from_whole_ones) {
  const std::string rusticl = number(1u) + number(8u) + number(4u) + number(0x07230203u) + number(0u);
  const std::string clover = number(1u) + number(2u) + "k1" + number(1u) + "a" + number(1u) +
                             number(std::uint64_t{4}) + number(std::uint64_t{0}) + number(2u) +
                             std::string(48, 'a') + number(1u) + std::string(12, 's') + number(3u) + "abc" +
                             number(1u) + number(1u) + number(4u) + number(2u) + "%d" + number(0u);
  const char* const pocl = "Portable Computing Language";
  for (const auto& [platform, binary] : {std::pair{pocl, pocl_binary(8)},
                                         {pocl, pocl_binary(9)},
                                         {pocl, pocl_binary(11)},
                                         {"rusticl", rusticl},
                                         {"Clover", clover}}) {
    EXPECT_TRUE(is_harmless(platform, binary));
    EXPECT_FALSE(is_harmless(platform, binary + "x"));
    for (std::size_t length = 8; length < binary.size(); ++length) {
      EXPECT_FALSE(is_harmless(platform, binary.substr(0, length))) << platform << " " << length;
      EXPECT_TRUE(is_harmless("Fake", binary.substr(0, length)));
    }
  }
  for (const std::uint32_t unknown : {7u, 13u})
    EXPECT_FALSE(is_harmless(pocl, pocl_binary(unknown)));
  for (const char* platform : {"rusticl", "Clover"})
    EXPECT_FALSE(is_harmless(platform, pocl_binary(9)));
  EXPECT_FALSE(is_harmless("rusticl", "BC\xc0\xde, some bitcode")) << "aborts on it";
}

TEST_F(capability, bitcode_is_for_devices_that_take_spir) {
  const std::string bitcode = "BC\xc0\xde, some bitcode";
  fake_device device = full_device();
  for (const bool takes_spir : {false, true}) {
    if (takes_spir)
      device.texts[CL_DEVICE_EXTENSIONS] += " cl_khr_spir";
    for (const char* platform : {"Portable Computing Language", "Fake"})
      EXPECT_EQ(qv::is_harmless_binary(only_device({platform}, device).quirks,
                                       reinterpret_cast<const unsigned char*>(bitcode.data()),
                                       bitcode.size()),
                takes_spir || *platform == 'F');
  }
}

TEST_F(capability, refused_binaries_say_so) {
  const qv::root_device device = only_device("rusticl");
  const unsigned char bytes[] = "garbage, and long enough";
  const unsigned char* binary = bytes;
  std::size_t length = sizeof bytes;
  void* id = device.id;
  std::int32_t binary_status = 77;
  qv::create_program_with_binary_record record{fake, &id, &length, &binary, &binary_status, fake, 77, 1};
  call<operation::create_program_with_binary>(device, 3, record);
  EXPECT_EQ(record.status, CL_INVALID_BINARY);
  EXPECT_EQ(binary_status, CL_INVALID_BINARY);
  EXPECT_EQ(record.result, nullptr);
  length = 0;
  call<operation::create_program_with_binary>(device, 3, record);
  EXPECT_EQ(record.status, CL_INVALID_VALUE);
  EXPECT_TRUE(calls.empty());
}

// Calls a function when the thread's own objects are destroyed, after those that were made later.
struct at_thread_end {
  std::function<void()> function;
  ~at_thread_end() { function(); }
};

TEST_F(capability, ended_threads_do_not_call_implementations_that_need_them) {
  const qv::root_device device = only_device("Oclgrind");
  qv::queue_object queue(nullptr);
  qv::object_record finish{&queue, 77};
  qv::object_record release{fake, 77};
  std::thread::id ended;
  std::thread([&] {
    thread_local at_thread_end end{[&] {
      call<operation::release_context>(device, 3, release);
      call<operation::finish>(device, 3, finish);
      ended = std::this_thread::get_id();
    }};
    call<operation::finish>(device, 3, finish);
    EXPECT_EQ(calls.back().thread, std::this_thread::get_id());
    calls.clear();
    finish.status = 77;
  }).join();
  EXPECT_EQ(release.status, CL_SUCCESS);
  EXPECT_EQ(finish.status, CL_SUCCESS);
  ASSERT_EQ(calls.size(), 1u) << "the release is left out";
  EXPECT_EQ(calls[0].function, id<&cl::finish>);
  EXPECT_NE(calls[0].thread, ended);
}

TEST(capability_exports, refuse_bad_arguments_and_bear_a_machine_without_opencl) {
  setenv("OCL_ICD_VENDORS", "/none", 1);
  std::uint64_t count = 7;
  // The second is a library, but has none of the entry points.
  for (const char* loader : {"libno-such-opencl.so.1", "libm.so.6"}) {
    EXPECT_EQ(qv::look_at_machine(loader, "2.0").get_root_devices(0, nullptr, &count), QV_OK);
    EXPECT_EQ(count, 0u) << loader;
  }
  EXPECT_ANY_THROW(qv::look_at_machine("/dev/null", nullptr)) << "a loader that cannot be loaded";
  allocations_left = 0;
  EXPECT_EQ(qv_get_root_devices(0, nullptr, &count, 0), -1);
  allocations_left = endless;
  EXPECT_EQ(qv_get_root_devices(0, nullptr, &count, 0), 0) << "short memory is not remembered";
  qv_call_handle* handle = nullptr;
  EXPECT_EQ(qv_version(), 0x8000000000000000u);
  EXPECT_EQ(qv_get_root_devices(0, nullptr, nullptr, 0), -1);
  EXPECT_EQ(qv_find_capability_nodes(count + 1, 1, 0, nullptr, &count, 0), -1);
  EXPECT_EQ(qv_create_call_handle(0, 0, &handle, 0), -1);
  EXPECT_EQ(qv_close_call_handle(nullptr), 0);
  auto* const unknown = reinterpret_cast<qv_call_handle*>(&count);
  EXPECT_EQ(qv_close_call_handle(unknown), -1);
  EXPECT_EQ(qv_call_capability(unknown, 1, &count, 0), -1);
  EXPECT_EQ(qv_call_capability(nullptr, 1, &count, 0), -1);
}

} // namespace
