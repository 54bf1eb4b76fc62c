// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The commands: their numbers on the wire, and what the library adds to OpenCL's queues, events, programs and kernels.
// That arguments arrive in their order is to be seen where the suites of the scripted machine run over this library.
#include "tests/capability/library.h"

#include <algorithm>
#include <functional>
#include <thread>

namespace capability_test {
namespace {

constexpr const char* oclgrind = "Oclgrind";

using commands = capability;

// Programs speak these numbers to capability libraries of others, so the table is on record: by its checksum.
TEST_F(commands, have_their_numbers_and_there_are_no_others) {
  use(plain_device());
  library made;
  std::uint64_t sum = 0xcbf29ce484222325;
  for (std::uint32_t capability = 1; capability <= qv::capability_count; ++capability) {
    std::map<std::uint64_t, int> known;
    for (std::uint32_t i = 0; i < qv::operation_count; ++i) {
      const std::uint64_t number = qv::command_number(op{i}, capability);
      sum = (sum ^ number) * 0x100000001b3;
      if (number != 0) {
        EXPECT_EQ(++known[number], 1) << number;
      }
    }
    qv_call_handle* const handle = made.open(0, capability);
    for (std::uint64_t number = 0; number < 200; ++number)
      EXPECT_EQ(made.call_capability(handle, number, nullptr, 0),
                known.contains(number) ? QV_UNRECOVERABLE_ERROR : QV_INVALID_COMMAND_ID) // there is no record
          << number << " under " << capability;
  }
  EXPECT_EQ(sum, 4456532340994903786u);
}

// What was made to try the device is given to the first who asks for the same. Implementations may lose what their
// callbacks are given.
template <bool loses_user_data>
void use_objects_once() {
  library made;
  EXPECT_EQ(made.count(), 1u);
  raise_context_error(0, "nobody listens");
  qv::device_of_handle_record of{};
  made.call_capability(made.open(0, 6), qv::command_number(op::device_of_handle, 6), &of, 0);
  const std::uint64_t own_word[] = {1, 0};
  qv::create_context_record odd{own_word, 1, &of.result, nullptr, nullptr, nullptr, 77};
  made.call_capability(made.open(0, 6), qv::command_number(op::create_context, 6), &odd, 0);
  EXPECT_EQ(odd.status, CL_INVALID_VALUE) << "OpenCL was asked";
  std::string told;
  const user first(made, 0, 6, &told);
  EXPECT_EQ(first.status_of<op::create_program_with_builtin_kernels>(
                {first.context, &first.device, "one;two", nullptr, 77, 0}),
            CL_SUCCESS)
      << "OpenCL was asked";
  void* const other = first.make_context();
  raise_context_error(0, "an error");
  EXPECT_EQ(told, "an error");
  raise_context_error(0, "another", false);
  EXPECT_EQ(told, loses_user_data ? "another" : "an error");
  const auto makes_queue = [&](void* context, std::vector<std::uint64_t> properties) {
    properties.insert(properties.begin(), CL_QUEUE_PROPERTIES);
    forget_calls();
    const auto made = first.ask<op::create_command_queue_with_properties>(
        {first.device, context, properties.data(), nullptr, 77});
    first.release<op::release_command_queue>(made.result);
    return count_calls(op::create_command_queue_with_properties) != 0;
  };
  const auto makes_program = [&](const char* names) {
    forget_calls();
    const auto made = first.ask<op::create_program_with_builtin_kernels>(
        {first.context, &first.device, names, nullptr, 77, 1});
    first.release<op::release_program>(made.result);
    return count_calls(op::create_program_with_builtin_kernels) != 0;
  };
  EXPECT_TRUE(makes_queue(other, {CL_QUEUE_PROFILING_ENABLE, 0})) << "another context";
  EXPECT_TRUE(makes_queue(first.context, {CL_QUEUE_PROFILING_ENABLE, CL_QUEUE_SIZE, 0, 0}));
  EXPECT_TRUE(makes_queue(first.context, {0, 0})) << "the first has it";
  EXPECT_FALSE(makes_queue(first.context, {CL_QUEUE_PROFILING_ENABLE, 0}));
  EXPECT_TRUE(makes_queue(first.context, {CL_QUEUE_PROFILING_ENABLE, 0}));
  EXPECT_TRUE(makes_program("one"));
  EXPECT_FALSE(makes_program("one;two"));
  EXPECT_TRUE(makes_program("one;two"));
  first.release<op::release_context>(other);
}

TEST_F(commands, objects_from_the_look_at_a_device_are_used_once) {
  device_options known = plain_device();
  known.info[CL_DEVICE_BUILT_IN_KERNELS] = text_answer("one;two");
  use(known);
  use_objects_once<false>();
}

TEST_F(commands, plain_queues_stand_in_for_queues_that_a_device_lacks) {
  // The words of the queue that is made; bits alone: by the older function.
  enum device_queues { none, some, refused };
  using row = std::tuple<const char*, device_queues, std::uint64_t, std::vector<std::uint64_t>>;
  for (const auto& [version, queues, bits, expected] :
       {row{"OpenCL 3.0", some, 13, {0x1093, 13, 0x1094, 512}}, row{"OpenCL 3.0", refused, 13, {0}},
        row{"OpenCL 3.0", none, 13, {0}}, row{"OpenCL 3.0", none, 15, {2}}, row{"OpenCL 3.0", refused, 5, {}},
        row{"OpenCL 3.0", none, 3, {0x1093, 3, 0x1094, 512}}, row{"OpenCL 1.2", some, 13, {0}},
        row{"OpenCL 1.2", none, 3, {3}}}) {
    device_options known = plain_device();
    known.info[CL_DEVICE_MAX_ON_DEVICE_QUEUES] = value_answer(queues == none ? 0u : 1u);
    const only_user it(known, {"Another", version}, 4);
    void* const own_context = it.make_context();
    if (queues == refused)
      fail_call(op::create_command_queue_with_properties, 1, CL_INVALID_QUEUE_PROPERTIES);
    const std::uint64_t words[] = {0x1093, bits, 0x1094, 512, 0};
    forget_calls();
    const auto queue =
        it.ask<op::create_command_queue_with_properties>({it.device, own_context, words, nullptr, 77});
    EXPECT_EQ(queue.status, expected.empty() ? CL_INVALID_QUEUE_PROPERTIES : CL_SUCCESS);
    const auto calls = take_calls();
    EXPECT_EQ(calls.back().numbers, expected) << version << " " << bits;
    it.release<op::release_command_queue>(queue.result);
    it.release<op::release_context>(own_context);
  }
}

TEST_F(commands, platforms_are_not_asked_for_what_came_after_them) {
  for (const auto& [version, known] :
       {std::pair{"OpenCL 1.1 old", 0}, {"OpenCL 1.2", 2}, {"OpenCL 2.1", 3}, {"OpenCL 2.2", 4}}) {
    const only_user of(plain_device(version), {"Another", version});
    const cl_int statuses[] = {
        of.status_of<op::enqueue_fill_buffer>({of.queue, of.buffer, "", 1, 0, 1, nullptr, nullptr, 77, 0}),
        of.status_of<op::create_program_with_builtin_kernels>(
            {of.context, &of.device, "some", nullptr, 77, 1}),
        of.status_of<op::create_program_with_il>({of.context, "another", 7, nullptr, 77}),
        of.status_of<op::set_program_specialization_constant>({of.program, 0, 0, nullptr, 77})};
    for (int i = 0; i < 4; ++i)
      EXPECT_EQ(statuses[i], i < known ? CL_SUCCESS : CL_INVALID_OPERATION) << version << " " << i;
  }
  only_user it(plain_device("OpenCL 1.1"), {"Another", "OpenCL 1.1 old"});
  const user other(it.made, 0, 4);
  for (const char* const names : {"", static_cast<const char*>(nullptr)})
    EXPECT_EQ(it.status_of<op::create_program_with_builtin_kernels>(
                  {it.context, &it.device, names, nullptr, 77, 1}),
              CL_INVALID_VALUE);
  forget_calls();
  EXPECT_EQ(it.ask<op::retain_device>({it.device, 77}).status, CL_SUCCESS);
  EXPECT_EQ(other.ask<op::get_extension_function_address_for_platform>({&it, "clX", &it}).result, nullptr);
  EXPECT_TRUE(take_calls().empty());
}

TEST_F(commands, older_devices_answer_what_a_start_asks) {
  const only_user it(plain_device("OpenCL 1.1"), {}, 4);
  using row = std::tuple<std::uint32_t, std::size_t, cl_int, std::uint32_t, std::size_t>;
  for (const auto& [query, room, expected_status, expected_value, expected_size] :
       {row{CL_DEVICE_QUEUE_ON_DEVICE_PREFERRED_SIZE, 4, CL_SUCCESS, 0, 4},
        row{CL_DEVICE_QUEUE_ON_DEVICE_PREFERRED_SIZE, 2, CL_INVALID_VALUE, ~0u, 9},
        row{CL_DEVICE_BUILT_IN_KERNELS, 1, CL_SUCCESS, ~0xffu, 1},
        row{0xFFFF, 4, CL_INVALID_VALUE, ~0u, 9}}) {
    std::uint32_t value = ~0u;
    std::size_t size = 9;
    EXPECT_EQ(it.ask<op::get_device_info>({it.device, &value, &size, query, room, 77}).status,
              expected_status)
        << std::hex << query;
    EXPECT_EQ(value, expected_value);
    EXPECT_EQ(size, expected_size);
  }
}

TEST_F(commands, references_to_contexts_are_counted) {
  const only_user it(plain_device());
  cl_uint count = 1;
  for (const auto& [is_kept, expected] : {std::pair{true, 2u}, {true, 3u}, {false, 2u}, {false, 1u}}) {
    EXPECT_EQ(is_kept ? it.ask<op::retain_context>({it.context, 77}).status
                      : it.ask<op::release_context>({it.context, 77}).status,
              CL_SUCCESS);
    it.ask<op::get_context_info>({it.context, CL_CONTEXT_REFERENCE_COUNT, sizeof count, &count, nullptr, 77});
    EXPECT_EQ(count, expected);
  }
}

TEST_F(commands, kernels_refuse_what_opencl_would_follow_blindly) {
  for (const char* platform : {"Another", "Portable Computing Language"}) {
    device_options known = plain_device();
    known.info[CL_DEVICE_LOCAL_MEM_SIZE] = value_answer(std::uint64_t{1024});
    const only_user it(known, {platform});
    void* const kernel = it.make_kernel("k");
    void* buffer = it.make_buffer();
    const std::uint64_t number = 12345, zero = 0;
    const char zeros[128] = {};
    struct row {
      cl_uint index;
      std::size_t size;
      const void* value;
      cl_int status;
    };
    // Parameters 0 to 5: a buffer, a value, local memory, an image, a sampler, a queue.
    for (const row& each :
         {row{0, 8, &buffer, 0}, row{0, 8, &zero, 0}, row{0, 8, nullptr, 0}, row{0, 8, &number, -38},
          row{0, 4, &number, -51}, row{0, 16, nullptr, -51}, row{1, 4, &number, 0}, row{1, 8, &number, 0},
          row{1, 4, nullptr, -50}, row{2, 64, nullptr, 0}, row{2, 8, &buffer, -50}, row{2, 128, zeros, -50},
          row{3, 8, &buffer, -38}, row{3, 8, nullptr, -38}, row{4, 8, &number, -41}, row{5, 8, nullptr, -70},
          row{2, 1024, nullptr, 0}, row{2, 1025, nullptr, *platform == 'P' ? -5 : 0}}) {
      forget_calls();
      EXPECT_EQ(it.set(kernel, each.index, each.size, each.value), each.status)
          << each.index << ", " << each.size;
      EXPECT_EQ(count_calls(op::set_kernel_arg), each.status == CL_SUCCESS ? 1u : 0u);
    }
    // A buffer that has gone is a number like any other.
    EXPECT_EQ(it.set(kernel, 0, 8, &buffer), CL_SUCCESS);
    it.release<op::release_mem_object>(buffer);
    EXPECT_EQ(it.set(kernel, 0, 8, &buffer), CL_INVALID_MEM_OBJECT);
    EXPECT_EQ(it.set(kernel, 0, 8, &it.buffer), CL_SUCCESS);
    it.release<op::release_kernel>(kernel);
    forget_calls();
    it.release<op::release_kernel>(it.make_kernel("k"));
    EXPECT_EQ(count_calls(op::create_kernel), 1u) << "one that was refused something is not used again";
  }
}

TEST_F(commands, kernels_for_launches_take_everything_and_fail_there) {
  const only_user it(plain_device());
  void* const first = it.make_kernel();
  std::uint64_t number = 12345;
  fail_call(op::create_kernel, 1, CL_OUT_OF_RESOURCES);
  void* const broken = it.make_kernel();
  EXPECT_EQ(it.ask<op::get_kernel_info>({broken, 8, &number, nullptr, 77, CL_KERNEL_NUM_ARGS}).status,
            CL_SUCCESS);
  EXPECT_EQ(it.set(broken, 0, 4, &number), CL_SUCCESS);
  EXPECT_EQ(it.launch(broken), CL_OUT_OF_RESOURCES);
  fail_call(op::create_kernel, 1, CL_OUT_OF_RESOURCES);
  EXPECT_EQ(it.status_of<op::create_kernel>({it.program, "k", nullptr, 77}), CL_SUCCESS)
      << "OpenCL was asked";
  void* const second = it.make_kernel();
  EXPECT_EQ(it.set(first, 0, 8, &number), CL_INVALID_MEM_OBJECT);
  EXPECT_EQ(it.set(second, 0, 8, &number), CL_SUCCESS);
  EXPECT_EQ(it.launch(second), CL_INVALID_MEM_OBJECT);
  EXPECT_EQ(it.set(second, 0, 8, nullptr), CL_SUCCESS);
  void* event = nullptr;
  it.ask<op::enqueue_fill_buffer>({it.queue, it.buffer, "", 1, 0, 1, nullptr, &event, 77, 0});
  EXPECT_EQ(it.launch(second, &event), CL_SUCCESS) << "set rightly in the end, and behind other work";
  EXPECT_EQ(it.status_of<op::get_event_profiling_info>({event, 8, &number, nullptr, 77, 0x1283}), CL_SUCCESS);
  it.release<op::release_event>(event);
  for (void* const each : {first, broken, second})
    it.release<op::release_kernel>(each);
}

TEST_F(commands, released_kernels_are_used_again_only_as_long_as_they_are_harmless) {
  device_options silent = plain_device();
  silent.tells_parameters = false;
  const only_user it(silent);
  void* buffer = it.make_buffer();
  const auto use_kernel = [&] {
    void* const kernel = it.make_kernel();
    EXPECT_EQ(it.set(kernel, 0, 8, &buffer), CL_SUCCESS);
    return kernel;
  };
  void* kernel = use_kernel();
  EXPECT_EQ(it.launch(kernel), CL_SUCCESS);
  it.release<op::release_kernel>(kernel);
  forget_calls();
  kernel = it.make_kernel();
  EXPECT_EQ(count_calls(op::create_kernel), 0u);
  EXPECT_EQ(it.launch(kernel), CL_INVALID_KERNEL_ARGS) << "it still has that of its last use";
  EXPECT_EQ(it.set(kernel, 0, 8, &buffer), CL_SUCCESS);
  EXPECT_EQ(it.launch(kernel), CL_SUCCESS);
  it.release<op::release_kernel>(kernel);
  forget_calls();
  it.release<op::release_mem_object>(buffer);
  EXPECT_EQ(count_calls(op::release_kernel), 1u) << "it held the buffer";
  buffer = it.make_buffer();
  kernel = use_kernel();
  EXPECT_EQ(it.build(it.program, ""), CL_INVALID_OPERATION) << "the kernel is in use";
  it.release<op::release_kernel>(kernel);
  forget_calls();
  it.build(it.program, "");
  EXPECT_EQ(take_calls().at(0).operation, op::release_kernel) << "it would be in the way";
  // Four of a name, and 64 in all.
  void* const many = it.make_program(many_kernels(20));
  for (const std::size_t names : {1, 20}) {
    std::vector<void*> alive;
    for (std::size_t i = 0; i < names; ++i)
      for (int copy = 0; copy < 5; ++copy)
        alive.push_back(it.make_kernel("k" + std::to_string(i), many));
    for (void* const each : alive)
      it.release<op::release_kernel>(each);
    EXPECT_EQ(static_cast<std::size_t>(live_objects()["kernel"]), std::min<std::size_t>(names * 4, 64));
  }
  it.release<op::release_program>(many);
  it.release<op::release_mem_object>(buffer);
}

TEST_F(commands, queues_that_cannot_be_finished_fail_through_their_events) {
  const only_user it(plain_device());
  qv::enqueue_fill_buffer_record fill{it.queue, it.buffer, "", 1, 0, 1, nullptr, nullptr, 77, 0};
  void* events[2] = {};
  for (void*& event : events) {
    fill.event = &event;
    EXPECT_EQ(it.ask<op::enqueue_fill_buffer>(fill).status, CL_SUCCESS);
  }
  fail_waits(-14);
  fail_call(op::finish, 1, CL_OUT_OF_RESOURCES);
  EXPECT_EQ(it.finish(), CL_SUCCESS);
  for (void* const event : events)
    EXPECT_EQ(it.status_of_event(event), CL_OUT_OF_RESOURCES);
  void* const kernel = it.make_kernel();
  EXPECT_EQ(it.launch(kernel, events), CL_EXEC_STATUS_ERROR_FOR_EVENTS_IN_WAIT_LIST);
  void* queue = nullptr;
  it.ask<op::get_event_info>({events[0], sizeof queue, &queue, nullptr, 77, CL_EVENT_COMMAND_QUEUE});
  EXPECT_EQ(queue, it.queue);
  std::uint64_t time = 0;
  EXPECT_EQ(it.ask<op::get_event_profiling_info>(
                  {events[0], sizeof time, &time, nullptr, 77, CL_PROFILING_COMMAND_END})
                .status,
            CL_PROFILING_INFO_NOT_AVAILABLE);
  fill.event = nullptr;
  EXPECT_EQ(it.ask<op::enqueue_fill_buffer>(fill).status, CL_SUCCESS);
  fail_call(op::finish, 1, CL_OUT_OF_RESOURCES);
  EXPECT_EQ(it.finish(), CL_OUT_OF_RESOURCES) << "there is no event to tell";
  fail_waits(0);
  fill.command_queue = nullptr;
  EXPECT_EQ(it.ask<op::enqueue_fill_buffer>(fill).status, CL_INVALID_COMMAND_QUEUE);
  for (void* const event : events)
    it.release<op::release_event>(event);
  it.release<op::release_kernel>(kernel);
}

// As long as it is not there nothing is asked of it that might wait for its answer.
void lose_a_device() {
  library made;
  const user it(made), other(made, 1);
  char byte = 0;
  void* event = nullptr;
  const qv::enqueue_transfer_buffer_record write{it.queue, it.buffer, 0, 1, &byte, nullptr, &event, 77, 0, 0};
  it.release<op::release_kernel>(it.make_kernel());
  void* const spare = it.make_buffer();
  fail_call(op::finish, 1, CL_DEVICE_NOT_AVAILABLE);
  EXPECT_EQ(it.finish(), CL_SUCCESS);
  void* const there = it.make_buffer();
  EXPECT_NE(there, nullptr) << "it is there all the same";
  it.ask<op::enqueue_write_buffer>(write);
  set_info(0, CL_DEVICE_AVAILABLE, value_answer(0u));
  EXPECT_EQ(it.finish(), CL_SUCCESS);
  EXPECT_EQ(it.status_of_event(event), CL_DEVICE_NOT_AVAILABLE) << "although OpenCL says that it is complete";
  it.release<op::release_event>(event);
  EXPECT_EQ(it.make_buffer(), nullptr);
  EXPECT_EQ(it.status_of<op::enqueue_write_buffer>(write), CL_DEVICE_NOT_AVAILABLE);
  forget_calls();
  void* const many = other.make_program(many_kernels(64));
  for (int i = 0; i < 64; ++i)
    other.release<op::release_kernel>(other.make_kernel("k" + std::to_string(i), many));
  EXPECT_EQ(count_calls(op::release_kernel), 0u) << "to make room for those of another device";
  other.release<op::release_program>(many);
  forget_calls();
  it.release<op::release_mem_object>(spare);
  EXPECT_EQ(count_calls(op::release_mem_object), 0u);
  set_info(0, CL_DEVICE_AVAILABLE, {});
  EXPECT_EQ(it.status_of<op::enqueue_write_buffer>(write), CL_SUCCESS);
  it.release<op::release_mem_object>(there);
}

// What is given up meanwhile stays on the device.
TEST_F(commands, lost_devices_are_left_alone_until_they_are_back) {
  set_platforms({{"Portable Computing Language"}});
  set_devices({plain_device(), plain_device()});
  set_info(0, 0x4501, value_answer(0u)); // the traffic of a device on another machine
  run_in_child(lose_a_device);
}

TEST_F(commands, implementations_that_throw_or_lie_have_failed) {
  only_user it(plain_device());
  before_call(op::build_program, 1, [] { throw std::bad_alloc(); });
  EXPECT_EQ(it.build(it.program, ""), CL_OUT_OF_HOST_MEMORY);
  before_call(op::create_program_with_source, 1, [] { throw 1; });
  const char* const text = "";
  const qv::create_program_with_source_record source{it.context, &text, nullptr, nullptr, 77, 1};
  EXPECT_EQ(it.ask<op::create_program_with_source>(source).status, CL_OUT_OF_RESOURCES);
  const user old(it.made, 0, 1);
  void* kernels[2] = {};
  fail_call(op::get_kernel_info, 1, CL_OUT_OF_RESOURCES); // the name of the first
  EXPECT_EQ(old.ask<op::create_kernels_in_program>({old.program, kernels, nullptr, 77, 2}).status,
            CL_OUT_OF_RESOURCES);
  fail_call(op::create_program_with_source, 1, CL_SUCCESS); // but it makes none
  EXPECT_EQ(it.ask<op::create_program_with_source>(source).status, CL_OUT_OF_RESOURCES);
}

TEST_F(commands, sizes_that_only_the_attributes_tell_are_told) {
  using sizes = std::array<std::size_t, 3>;
  const only_user it(plain_device());
  using row = std::tuple<sizes, const char*, sizes>;
  for (const auto& [by_query, text, expected] :
       {row{{0, 0, 0}, "reqd_work_group_size(8,4,2),work_group_size_hint(1,1,1)", {8, 4, 2}},
        row{{0, 0, 0}, "x __attribute__((reqd_work_group_size( 8, 4 ,2 )))", {8, 4, 2}},
        row{{1, 2, 3}, "reqd_work_group_size(8,4,2)", {1, 2, 3}}, row{{0, 0, 0}, "", {0, 0, 0}},
        row{{0, 0, 0}, "reqd_work_group_size(8,4)", {0, 0, 0}},
        row{{0, 0, 0}, "reqd_work_group_size(8,0,1)", {0, 0, 0}},
        row{{0, 0, 0}, "reqd_work_group_size(8,99999999999999999999,1)", {0, 0, 0}},
        row{{0, 0, 0}, "work_group_size_hint(8,4,2)", {0, 0, 0}}}) {
    set_info(0, CL_KERNEL_COMPILE_WORK_GROUP_SIZE, value_answer(by_query));
    set_info(0, CL_KERNEL_ATTRIBUTES, text_answer(text));
    it.build(it.program, ""); // forgets what it knew
    void* const kernel = it.make_kernel();
    forget_calls();
    for (int i = 0; i < 2; ++i) {
      sizes told{};
      it.ask<op::get_kernel_work_group_info>(
          {it.device, kernel, sizeof told, &told, nullptr, 77, CL_KERNEL_COMPILE_WORK_GROUP_SIZE});
      EXPECT_EQ(told, expected) << text;
    }
    EXPECT_LE(count_calls(op::get_kernel_info), 2u) << "the length and the text, once";
    it.release<op::release_kernel>(kernel);
  }
}

// To programs from source alone, unseen by who asks for the options, and only where it is known.
TEST_F(commands, a_build_option_is_added_where_that_is_needed) {
  const std::string extra = "-cl-kernel-arg-info";
  const only_user it(plain_device(), {"Portable Computing Language"});
  const unsigned char bytes[] = "BIN:kernel void k() {}";
  const unsigned char* const binary = bytes;
  const std::size_t length = sizeof bytes;
  void* const from_binary = it.ask<op::create_program_with_binary>(
                                  {it.context, &it.device, &length, &binary, nullptr, nullptr, 77, 1})
                                .result;
  for (const auto& [is_from_source, given, expected] : {std::tuple{true, "-DX", extra + " -DX"},
                                                        {false, "-w", "-w"},
                                                        {true, nullptr, extra},
                                                        {true, extra.c_str(), extra},
                                                        {true, "-bad", "-bad"}}) {
    void* const program = is_from_source ? it.program : from_binary;
    forget_calls();
    it.build(program, given);
    EXPECT_EQ(take_calls().back().text, expected);
    char told[64] = "";
    it.ask<op::get_program_build_info>(
        {it.device, program, sizeof told, told, nullptr, 77, CL_PROGRAM_BUILD_OPTIONS});
    const std::string wanted = given == nullptr ? "" : given;
    EXPECT_EQ(told, is_from_source && wanted != extra ? wanted : "");
  }
  it.release<op::release_program>(from_binary);
}

// Calls a function when the thread's own objects are destroyed, after those that were made later.
struct at_thread_end {
  std::function<void()> function;
  ~at_thread_end() { function(); }
};

void finish_on_an_ended_thread() {
  library made;
  const user it(made);
  std::thread::id ended;
  void* const buffer = it.make_buffer();
  std::thread([&] {
    thread_local at_thread_end end{[&] {
      it.release<op::release_mem_object>(buffer);
      it.finish();
      ended = std::this_thread::get_id();
    }};
    it.finish();
    EXPECT_EQ(take_calls().back().thread, std::this_thread::get_id());
  }).join();
  const auto calls = take_calls();
  EXPECT_EQ(calls.size(), 1u) << "the release is left out";
  EXPECT_TRUE(calls.back().operation == op::finish && calls.back().thread != ended);
}

TEST_F(commands, implementations_with_thread_locals_are_called_on_living_threads) {
  use(plain_device(), {oclgrind});
  run_in_child(finish_on_an_ended_thread);
  device_options known = plain_device();
  known.info[CL_DEVICE_BUILT_IN_KERNELS] = text_answer("one;two");
  use(known, {oclgrind});
  run_in_child(use_objects_once<true>);
}

} // namespace
} // namespace capability_test
