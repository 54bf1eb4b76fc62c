// The access layer over a capability library made of this file: it knows the commands by literal numbers and
// the records by literal offsets, so that nothing here repeats what the layer itself reads.
#include "access/opencl/opencl_1_0.h"
#include "access/opencl/opencl_1_1.h"
#include "access/opencl/opencl_1_2.h"
#include "access/opencl/opencl_2_0.h"
#include "access/opencl/opencl_2_1.h"
#include "access/opencl/opencl_2_2.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

using namespace oryn::skerv;
using opencl::version;

namespace {

using bytes = std::vector<unsigned char>;
using names = std::vector<std::string>;

struct command_layout {
  const char* name;
  std::array<int, 6> numbers;
  int size;
  int status = -1;
  int result = -1;
};

// clang-format off
const command_layout command_layouts[] = {
    {"build", {1, 1, 1, 1, 1, 1}, 48, 40},
    {"create_buffer", {2, 2, 3, 3, 3, 3}, 48, 40, 32},
    {"create_queue", {3, 3, 4, 0, 0, 0}, 40, 24, 32},
    {"create_queue_2", {0, 0, 0, 4, 4, 4}, 40, 32, 24},
    {"create_context", {4, 4, 5, 5, 5, 5}, 56, 48, 40},
    {"create_kernels", {8, 8, 0, 0, 0, 0}, 32, 24},
    {"create_kernel", {9, 9, 9, 9, 9, 9}, 32, 24, 16},
    {"create_with_binary", {10, 10, 10, 11, 11, 11}, 56, 48, 40},
    {"create_with_builtin", {0, 0, 11, 12, 12, 12}, 40, 32, 24},
    {"create_with_source", {11, 11, 12, 13, 13, 13}, 40, 32, 24},
    {"create_with_il", {0, 0, 0, 0, 95, 95}, 40, 32, 24},
    {"copy", {14, 16, 18, 19, 19, 19}, 72, 64},
    {"fill", {0, 0, 23, 24, 24, 24}, 72, 64},
    {"launch", {22, 25, 30, 31, 31, 31}, 72, 56},
    {"read", {23, 26, 31, 32, 32, 32}, 72, 56},
    {"write", {28, 32, 36, 41, 41, 41}, 72, 56},
    {"finish", {30, 35, 39, 44, 44, 44}, 16, 8},
    {"device_of_handle", {32, 37, 41, 46, 46, 46}, 8, -1, 0},
    {"context_info", {34, 39, 43, 48, 48, 48}, 48, 40},
    {"device_info", {36, 41, 45, 50, 50, 50}, 48, 40},
    {"event_info", {37, 42, 46, 51, 51, 51}, 40, 32},
    {"profiling_info", {38, 43, 47, 52, 52, 52}, 40, 32},
    {"extension_address", {0, 0, 48, 53, 0, 0}, 24, -1, 16},
    {"kernel_info", {41, 46, 51, 56, 56, 56}, 40, 32},
    {"work_group_info", {42, 47, 52, 57, 57, 57}, 48, 40},
    {"build_info", {45, 50, 55, 61, 61, 61}, 48, 40},
    {"program_info", {46, 51, 56, 62, 62, 62}, 40, 32},
    {"release_queue", {49, 54, 60, 66, 66, 66}, 16, 8},
    {"release_context", {50, 55, 61, 67, 67, 67}, 16, 8},
    {"release_device", {0, 0, 62, 68, 68, 68}, 16, 8},
    {"release_event", {51, 56, 63, 69, 69, 69}, 16, 8},
    {"release_kernel", {52, 57, 64, 70, 70, 70}, 16, 8},
    {"release_memory", {53, 58, 65, 71, 71, 71}, 16, 8},
    {"release_program", {54, 59, 66, 72, 72, 72}, 16, 8},
    {"retain_context", {57, 62, 69, 75, 75, 75}, 16, 8},
    {"retain_device", {0, 0, 70, 76, 76, 76}, 16, 8},
    {"retain_event", {58, 63, 71, 77, 77, 77}, 16, 8},
    {"retain_program", {61, 66, 74, 80, 80, 80}, 16, 8},
    {"set_argument", {63, 69, 77, 83, 83, 83}, 32, 24},
    {"set_constant", {0, 0, 0, 0, 0, 99}, 40, 32},
};

struct info_layout { int parameter, size, value, size_ret; };
const std::map<std::string, info_layout> info_layouts = {
    {"context_info", {8, 16, 24, 32}},    {"device_info", {24, 32, 8, 16}},
    {"event_info", {36, 8, 16, 24}},      {"profiling_info", {36, 8, 16, 24}},
    {"kernel_info", {36, 8, 16, 24}},     {"program_info", {36, 8, 16, 24}},
    {"work_group_info", {44, 16, 24, 32}}, {"build_info", {44, 16, 24, 32}},
};
const std::map<std::string, int> event_offsets = {{"copy", 56}, {"fill", 56}, {"launch", 48}, {"read", 48}, {"write", 48}};
// clang-format on

struct call_seen {
  std::string name;
  int capability;
  bytes record;

  template <typename T>
  T at(int offset) const {
    T value;
    std::memcpy(&value, record.data() + offset, sizeof(T));
    return value;
  }
  void* handle(int offset) const { return at<void*>(offset); }
};

struct fake_library {
  std::uint64_t version = 0x8000000000000000u;
  int root_count = 1, node_count = 1, disappeared = 0, open_handles = 0;
  std::int32_t entry_code = 0;
  names entries;
  std::vector<call_seen> calls;
  std::map<void*, int> references;
  std::map<std::string, std::int32_t> status, transport;
  std::map<std::uint32_t, bytes> values;
  std::map<std::string, std::function<void(call_seen&)>> on_call;
  std::uintptr_t next_handle = 0x1000;

  names called() const {
    names result;
    for (const call_seen& call : calls)
      result.push_back(call.name);
    return result;
  }
  int count(const std::string& name) const {
    return static_cast<int>(
        std::count_if(calls.begin(), calls.end(), [&](const call_seen& call) { return call.name == name; }));
  }
  const call_seen& last(const std::string& name) const {
    for (auto call = calls.rbegin(); call != calls.rend(); ++call)
      if (call->name == name)
        return *call;
    throw std::out_of_range(name);
  }
  void* new_object() {
    void* const handle = reinterpret_cast<void*>(next_handle++);
    references[handle] = 1;
    return handle;
  }
  template <typename T>
  void set(std::uint32_t parameter, const std::vector<T>& elements) {
    bytes value(elements.size() * sizeof(T));
    if (!value.empty())
      std::memcpy(value.data(), elements.data(), value.size());
    values[parameter] = value;
  }
  void set_text(std::uint32_t parameter, const std::string& text) {
    values[parameter] = bytes(text.c_str(), text.c_str() + text.size() + 1);
  }
};

fake_library fake;

template <typename T>
void put(call_seen& call, int offset, T value) {
  std::memcpy(call.record.data() + offset, &value, sizeof(T));
}

void answer_info(call_seen& call, const info_layout& layout) {
  const bytes& value = fake.values.at(call.at<std::uint32_t>(layout.parameter));
  const auto size = call.at<std::size_t>(layout.size);
  if (void* const destination = call.handle(layout.value); destination != nullptr && !value.empty())
    std::memcpy(destination, value.data(), std::min(size, value.size()));
  if (auto* const reported = static_cast<std::size_t*>(call.handle(layout.size_ret)))
    *reported = value.size();
}

void answer(call_seen& call, const command_layout& layout) {
  if (fake.status.count(call.name) != 0)
    return put(call, layout.status, fake.status[call.name]);
  if (layout.status >= 0)
    put(call, layout.status, std::int32_t{0});
  if (call.name.starts_with("retain"))
    ++fake.references[call.handle(0)];
  if (call.name.starts_with("release"))
    --fake.references[call.handle(0)];
  if (call.name == "device_of_handle")
    put(call, layout.result, reinterpret_cast<void*>(0xD0));
  else if (layout.result >= 0)
    put(call, layout.result, fake.new_object());
  if (event_offsets.count(call.name) != 0)
    *static_cast<void**>(call.handle(event_offsets.at(call.name))) = fake.new_object();
  if (info_layouts.count(call.name) != 0)
    answer_info(call, info_layouts.at(call.name));
}

std::int32_t give(std::uint64_t available, std::uint64_t count, std::uint64_t* array,
                  std::uint64_t* out_count) {
  if (array != nullptr)
    available -= static_cast<std::uint64_t>(fake.disappeared);
  for (std::uint64_t i = 0; i < std::min(count, available); ++i)
    array[i] = i + 1;
  *out_count = available;
  return fake.entry_code;
}

} // namespace

struct qv_call_handle {
  int capability;
};
namespace {
std::uint64_t asked_capability = 0;
}

extern "C" {
uint64_t qv_version(void) {
  return fake.version;
}
int32_t qv_get_root_devices(uint64_t count, uint64_t* array, uint64_t* out_count, uint64_t) {
  fake.entries.push_back("roots");
  return give(static_cast<std::uint64_t>(fake.root_count), count, array, out_count);
}
int32_t qv_find_capability_nodes(uint64_t, uint64_t capability, uint64_t count, uint64_t* array,
                                 uint64_t* out_count, uint64_t) {
  fake.entries.push_back("nodes");
  asked_capability = capability;
  return give(static_cast<std::uint64_t>(fake.node_count), count, array, out_count);
}
int32_t qv_create_call_handle(uint64_t root, uint64_t node, qv_call_handle** out_handle, uint64_t) {
  fake.entries.push_back("open " + std::to_string(root) + "/" + std::to_string(node));
  *out_handle = new qv_call_handle{static_cast<int>(asked_capability)};
  ++fake.open_handles;
  return 0;
}
int32_t qv_close_call_handle(qv_call_handle* handle) {
  delete handle;
  return --fake.open_handles;
}
int32_t qv_call_capability(qv_call_handle* handle, uint64_t command, void* record, uint64_t) {
  for (const command_layout& layout : command_layouts) {
    if (static_cast<std::uint64_t>(layout.numbers[static_cast<std::size_t>(handle->capability - 1)]) !=
        command)
      continue;
    auto* const begin = static_cast<unsigned char*>(record);
    call_seen call{layout.name, handle->capability, bytes(begin, begin + layout.size)};
    if (fake.transport.count(call.name) != 0) {
      fake.calls.push_back(call);
      return fake.transport[call.name];
    }
    answer(call, layout);
    if (fake.on_call.count(call.name) != 0)
      fake.on_call[call.name](call);
    std::memcpy(record, call.record.data(), call.record.size());
    fake.calls.push_back(std::move(call));
    return 0;
  }
  return -2;
}
}

namespace {

// Every object made is given up as often as it was taken, and every call handle is closed.
class access_test : public testing::Test {
protected:
  void SetUp() override { fake = fake_library(); }
  void TearDown() override {
    for (const auto& [handle, count] : fake.references)
      EXPECT_EQ(count, 0) << handle;
    EXPECT_EQ(fake.open_handles, 0);
  }
};

template <version V>
opencl::device<V> the_device() {
  return opencl::find_devices<V>().at(0);
}
template <version V>
opencl::context<V> the_context() {
  return {{}, {the_device<V>()}, nullptr, nullptr};
}

template <typename Tag>
class every_version : public access_test {};
template <version V>
using tag = std::integral_constant<version, V>;
using all_versions = testing::Types<tag<version::v1_0>, tag<version::v1_1>, tag<version::v1_2>,
                                    tag<version::v2_0>, tag<version::v2_1>, tag<version::v2_2>>;
TYPED_TEST_SUITE(every_version, all_versions);

TYPED_TEST(every_version, sends_its_own_commands_from_device_to_launch) {
  constexpr version V = TypeParam::value;
  std::array<int, 8> host{};
  {
    const opencl::device<V> device = the_device<V>();
    EXPECT_EQ(device.get_handle(), reinterpret_cast<void*>(0xD0));
    const opencl::context<V> context({}, {device}, nullptr, &host);
    EXPECT_EQ(fake.last("create_context").handle(0), nullptr);
    EXPECT_EQ(fake.last("create_context").template at<std::uint32_t>(8), 1u);
    EXPECT_EQ(fake.last("create_context").handle(32), &host);
    const opencl::host_queue<V> queue(context, device, false, true);
    const auto source = context.create_buffer(5, 64, nullptr);
    const auto target = context.create_buffer(1, 32, &host);
    EXPECT_EQ(fake.last("create_buffer").template at<std::uint64_t>(0), 1u);
    EXPECT_EQ(fake.last("create_buffer").handle(8), context.get_handle());
    EXPECT_EQ(fake.last("create_buffer").template at<std::size_t>(16), 32u);
    EXPECT_EQ(fake.last("create_buffer").handle(24), &host);

    fake.calls.clear();
    void* const wait_list[] = {&host};
    queue.enqueue(opencl::write_buffer<V>(target, true, 4, 8, &host), 1, wait_list);
    const call_seen& write = fake.last("write");
    EXPECT_EQ(write.handle(0), queue.get_handle());
    EXPECT_EQ(write.handle(8), target.get_handle());
    EXPECT_EQ(write.template at<std::size_t>(16), 4u);
    EXPECT_EQ(write.template at<std::size_t>(24), 8u);
    EXPECT_EQ(write.handle(32), &host);
    EXPECT_EQ(write.handle(40), wait_list);
    EXPECT_EQ(write.template at<std::uint32_t>(60), 1u);
    EXPECT_EQ(write.template at<std::uint32_t>(64), 1u);
    queue.enqueue(opencl::read_buffer<V>(source, false, 0, 8, &host), 0, nullptr);
    EXPECT_EQ(fake.last("read").template at<std::uint32_t>(60), 0u);
    queue.enqueue(opencl::copy_buffer<V>(source, target, 1, 2, 3), 0, nullptr);
    const call_seen& copy = fake.last("copy");
    EXPECT_EQ(copy.handle(8), source.get_handle());
    EXPECT_EQ(copy.handle(16), target.get_handle());
    EXPECT_EQ(copy.template at<std::size_t>(24), 1u);
    EXPECT_EQ(copy.template at<std::size_t>(32), 2u);
    EXPECT_EQ(copy.template at<std::size_t>(40), 3u);

    const auto program = context.create_program_with_source("text");
    const auto kernel = program.create_kernel("name");
    const std::array<std::size_t, 3> offset{1, 2, 3}, global{4, 5, 6}, local{0, 0, 0};
    constexpr bool has_offset = V != version::v1_0;
    fake.on_call["launch"] = [&](call_seen& call) {
      EXPECT_EQ(call.handle(8), kernel.get_handle());
      const auto* const sent_offset = call.at<const std::size_t*>(16);
      ASSERT_EQ(sent_offset != nullptr, has_offset);
      EXPECT_TRUE(!has_offset || std::equal(offset.begin(), offset.end(), sent_offset));
      EXPECT_TRUE(std::equal(global.begin(), global.end(), call.at<const std::size_t*>(24)));
      EXPECT_TRUE(std::equal(local.begin(), local.end(), call.at<const std::size_t*>(32)));
      EXPECT_EQ(call.at<std::uint32_t>(60), 2u);
    };
    if constexpr (has_offset)
      queue.enqueue(opencl::nd_range_kernel<V>(kernel, 2, offset, global, local), 0, nullptr);
    else
      queue.enqueue(opencl::nd_range_kernel<V>(kernel, 2, global, local), 0, nullptr);
    queue.finish();
    EXPECT_EQ(fake.called(),
              (names{"write", "release_event", "read", "release_event", "copy", "release_event",
                     "create_with_source", "create_kernel", "launch", "release_event", "finish"}));
    fake.calls.clear();
  }
  names ending{"release_kernel", "release_program", "release_memory",
               "release_memory", "release_queue",   "release_context"};
  if (V >= version::v1_2)
    ending.push_back("release_device");
  EXPECT_EQ(fake.called(), ending);
  for (const call_seen& call : fake.calls)
    EXPECT_EQ(call.capability, static_cast<int>(V));
}

TYPED_TEST(every_version, counts_references_of_what_can_be_copied) {
  constexpr version V = TypeParam::value;
  const int per_copy = V >= version::v1_2 ? 1 : 0;
  auto device = the_device<V>();
  fake.calls.clear();
  {
    auto copy = device;
    const auto moved = std::move(copy);
    EXPECT_EQ(copy.get_handle(), nullptr); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(moved.get_handle(), device.get_handle());
  }
  EXPECT_EQ(fake.count("retain_device"), per_copy);
  EXPECT_EQ(fake.count("release_device"), per_copy);

  auto context = the_context<V>();
  {
    auto copy = context;
    copy = the_context<V>();
    copy = context;
  }
  EXPECT_EQ(fake.count("retain_context"), 2);
  EXPECT_EQ(fake.count("release_context"), 3);
  fake.status["retain_context"] = -5;
  EXPECT_THROW(opencl::context<V>(context).get_handle(), common::out_of_resources);
  static_assert(std::is_copy_constructible_v<opencl::event<V>> &&
                std::is_copy_assignable_v<opencl::program<V>>);
  static_assert(!std::is_copy_constructible_v<opencl::kernel<V>> &&
                !std::is_copy_assignable_v<opencl::kernel<V>>);
  static_assert(!std::is_copy_constructible_v<opencl::buffer<V>> &&
                std::is_nothrow_move_assignable_v<opencl::buffer<V>>);
  static_assert(!std::is_copy_constructible_v<opencl::host_queue<V>>);
}

TYPED_TEST(every_version, a_kernel_is_cloned_and_takes_four_kinds_of_argument) {
  constexpr version V = TypeParam::value;
  const auto context = the_context<V>();
  const auto program = context.create_program_with_source("");
  auto kernel = program.create_kernel("first");
  fake.set<void*>(0x1194, {program.get_handle()});
  fake.set_text(0x1190, "the name");
  fake.calls.clear();
  fake.on_call["create_kernel"] = [](call_seen& call) { EXPECT_STREQ(call.at<const char*>(8), "the name"); };
  const auto clone = kernel.clone();
  EXPECT_EQ(fake.called(), (names{"kernel_info", "kernel_info", "retain_program", "kernel_info",
                                  "kernel_info", "create_kernel", "release_program"}));

  const auto buffer = context.create_buffer(1, 8, nullptr);
  const auto expect_argument = [](std::uint32_t index, std::size_t size, bool has_value) {
    const call_seen& call = fake.last("set_argument");
    EXPECT_EQ(call.at<std::uint32_t>(28), index);
    EXPECT_EQ(call.at<std::size_t>(8), size);
    EXPECT_EQ(call.handle(16) != nullptr, has_value);
  };
  kernel.set_null_argument(1);
  expect_argument(1, 8, false);
  kernel.set_local_argument(2, 40);
  expect_argument(2, 40, false);
  kernel.set_value_argument(3, 2, "ab");
  expect_argument(3, 2, true);
  fake.on_call["set_argument"] = [&](call_seen& call) {
    EXPECT_EQ(*call.at<void**>(16), buffer.get_handle());
  };
  kernel.set_memory_argument(4, buffer);
  expect_argument(4, 8, true);
}

TYPED_TEST(every_version, an_event_tells_what_its_command_failed_with) {
  constexpr version V = TypeParam::value;
  const auto context = the_context<V>();
  const opencl::host_queue<V> queue(context, the_device<V>(), false, false);
  const auto buffer = context.create_buffer(1, 8, nullptr);
  const opencl::event<V> event = queue.enqueue(opencl::copy_buffer<V>(buffer, buffer, 0, 4, 4), 0, nullptr);
  const auto set_status = [](std::int32_t status) { fake.set<std::int32_t>(0x11D3, {status}); };
  for (const std::int32_t status : {0, 1, 3}) {
    set_status(status);
    EXPECT_NO_THROW(event.check_execution_status());
  }
  set_status(-5);
  EXPECT_THROW(event.check_execution_status(), common::out_of_resources);
  set_status(-1000);
  EXPECT_THROW(event.check_execution_status(), common::unknown_opencl_error);
  fake.set<std::uint64_t>(0x1282, {7});
  fake.set<std::uint64_t>(0x1283, {1ull << 40});
  EXPECT_EQ(event.get_profiling_start(), 7u);
  EXPECT_EQ(event.get_profiling_end(), 1ull << 40);
}

TYPED_TEST(every_version, binaries_go_out_and_come_back) {
  constexpr version V = TypeParam::value;
  const auto context = the_context<V>();
  EXPECT_THROW(context.create_program_with_binaries({}), std::logic_error);
  fake.on_call["create_with_binary"] = [](call_seen& call) {
    EXPECT_EQ(call.at<void**>(8)[0], reinterpret_cast<void*>(0xD0));
    EXPECT_EQ(call.at<std::size_t*>(16)[0], 2u);
    EXPECT_EQ(call.at<unsigned char**>(24)[0][1], 9);
    EXPECT_EQ(call.handle(32), nullptr);
    EXPECT_EQ(call.at<std::uint32_t>(52), 1u);
  };
  const auto program = context.create_program_with_binaries({{the_device<V>(), {8, 9}}});

  fake.set<std::uint64_t>(0x1163, {0xD0, 0xD1});
  fake.set<std::uint64_t>(0x1165, {3});
  EXPECT_THROW(program.get_binaries(), common::bad_implementation);
  fake.set<std::uint64_t>(0x1165, {3, 0});
  fake.values[0x1166] = {};
  fake.on_call["program_info"] = [](call_seen& call) {
    if (call.at<std::uint32_t>(36) != 0x1166)
      return;
    EXPECT_EQ(call.at<std::size_t>(8), 16u);
    EXPECT_EQ(call.handle(24), nullptr);
    std::memcpy(call.at<void**>(16)[0], "xyz", 3);
  };
  const auto binaries = program.get_binaries();
  ASSERT_EQ(binaries.size(), 2u);
  EXPECT_EQ(binaries[0].binary, (bytes{'x', 'y', 'z'}));
  EXPECT_EQ(binaries[1].device.get_handle(), reinterpret_cast<void*>(0xD1));
  EXPECT_TRUE(binaries[1].binary.empty());
}

TYPED_TEST(every_version, a_build_that_fails_is_told_by_its_status) {
  constexpr version V = TypeParam::value;
  const auto device = the_device<V>();
  auto program = the_context<V>().create_program_with_source("");
  fake.status["build"] = -11;
  EXPECT_NO_THROW(program.build({device, device}, "-w", nullptr, nullptr));
  EXPECT_EQ(fake.last("build").template at<std::uint32_t>(44), 2u);
  fake.set<std::int32_t>(0x1181, {-2});
  fake.set_text(0x1183, "line 1");
  EXPECT_EQ(program.get_build_status(device), -2);
  EXPECT_EQ(program.get_build_log(device), "line 1");
  EXPECT_EQ(fake.last("build_info").handle(0), device.get_handle());
  EXPECT_EQ(fake.last("build_info").handle(8), program.get_handle());
  fake.status["build"] = -43;
  EXPECT_THROW(program.build({device}, "-w", nullptr, nullptr), common::invalid_build_options);
  fake.transport["build"] = -1;
  EXPECT_THROW(program.build({device}, "-w", nullptr, nullptr), qv::unrecoverable_error);
}

// What a version can do, one letter a member that not all have.
template <version V>
std::string abilities() {
  const auto ask = [](auto device, auto context, auto program, auto kernel) {
    using D = typename decltype(device)::type;
    using C = typename decltype(context)::type;
    using P = typename decltype(program)::type;
    using K = typename decltype(kernel)::type;
    // clang-format off
    std::string result;
    result += requires(P p) { p.create_kernels(); } ? "K" : "";
    result += requires(P p) { p.get_kernel_names(); } ? "N" : "";
    result += requires(K k) { k.get_attributes(); } ? "A" : "";
    result += requires(K k, D d) { k.get_preferred_work_group_size_multiple(d); } ? "M" : "";
    result += requires(K k, D d) { k.get_global_work_size(d); } ? "G" : "";
    result += requires(C c, std::vector<D> d) { c.create_program_with_builtin_kernels(d, names{}); } ? "B" : "";
    result += requires(C c) { c.create_program_with_il(nullptr, 0); } ? "X" : "";
    result += requires(C c) { c.create_program_with_il(bytes{}); } ? "I" : "";
    result += requires(P p) { p.get_il(); } ? "i" : "";
    result += requires(P p) { p.set_specialization_constant(1, true); } ? "S" : "";
    result += requires(D d) { d.has_spir_extension(); } ? "s" : "";
    result += requires(D d) { d.has_il_program_extension(); } ? "x" : "";
    result += requires(C c) { c.get_platform(); } ? "P" : "";
    using opencl::device_parameter;
    result += requires(D d) { d.template get<device_parameter::max_write_image_args>(); } ? "w" : "";
    result += requires(D d) { d.template get<device_parameter::host_unified_memory>(); } ? "u" : "";
    result += requires(D d) { d.template get<device_parameter::min_data_type_align_size>(); } ? "a" : "";
    result += requires(D d) { d.template get<device_parameter::printf_buffer_size>(); } ? "p" : "";
    result += requires(D d) { d.template get<device_parameter::svm_capabilities>(); } ? "v" : "";
    result += requires(D d) { d.template get<device_parameter::il_version>(); } ? "l" : "";
    using opencl::device_flag;
    result += requires(D d) { d.template is<device_flag::double_fp_software_emulated>(); } ? "6" : "";
    result += requires(D d) { d.template is<device_flag::single_fp_correctly_rounded_divide_sqrt>(); } ? "7" : "";
    // clang-format on
    return result;
  };
  return ask(std::type_identity<opencl::device<V>>(), std::type_identity<opencl::context<V>>(),
             std::type_identity<opencl::program<V>>(), std::type_identity<opencl::kernel<V>>());
}

TEST(versions, differ_in_what_they_can_do) {
  EXPECT_EQ(abilities<version::v1_0>(), "Kw");
  EXPECT_EQ(abilities<version::v1_1>(), "KMwua6");
  EXPECT_EQ(abilities<version::v1_2>(), "NAMGBXsxPwup67");
  EXPECT_EQ(abilities<version::v2_0>(), "NAMGBXsxPpv67");
  EXPECT_EQ(abilities<version::v2_1>(), "NAMGBIispvl67");
  EXPECT_EQ(abilities<version::v2_2>(), "NAMGBIiSspvl67");
}

TEST_F(access_test, discovery_asks_for_no_more_than_there_is) {
  fake.root_count = 0;
  EXPECT_TRUE(opencl_2_0::find_devices().empty());
  EXPECT_EQ(fake.entries, (names{"roots"}));
  fake.entries.clear();
  fake.root_count = 2;
  fake.node_count = 0;
  EXPECT_TRUE(opencl_2_0::find_devices().empty());
  EXPECT_EQ(fake.entries, (names{"roots", "roots", "nodes", "nodes"}));
  fake.entries.clear();
  fake.node_count = 2;
  EXPECT_EQ(opencl_1_2::find_devices().size(), 4u);
  EXPECT_EQ(fake.entries, (names{"roots", "roots", "nodes", "nodes", "nodes", "nodes", "open 1/1", "open 1/2",
                                 "open 2/1", "open 2/2"}));
  fake.disappeared = 1;
  EXPECT_EQ(opencl_1_0::find_devices().size(), 1u);
}

TEST_F(access_test, faults_of_the_transport_come_before_all_others) {
  fake.version = 1;
  EXPECT_THROW(opencl_1_0::find_devices(), std::runtime_error);
  EXPECT_TRUE(fake.entries.empty());
  fake.version = 0x8000000000000000u;
  fake.transport["device_of_handle"] = -2;
  EXPECT_THROW(opencl_1_0::find_devices(), qv::invalid_command_id);
  EXPECT_EQ(fake.open_handles, 0);

  const auto fault_of = [](std::int32_t code) -> std::pair<std::string, std::int32_t> {
    fake.entry_code = code;
    try {
      opencl_1_0::find_devices();
    } catch (const qv::qv_error& fault) {
      const bool recoverable = dynamic_cast<const qv::recoverable_error*>(&fault) != nullptr;
      EXPECT_NE(recoverable, dynamic_cast<const qv::unrecoverable_error*>(&fault) != nullptr);
      EXPECT_EQ(recoverable, code == -2);
      return {fault.what(), fault.get_code()};
    }
    return {"nothing", 0};
  };
  EXPECT_EQ(fault_of(-1), std::pair(std::string(), -1));
  EXPECT_EQ(fault_of(-2), std::pair(std::string("Invalid command ID provided to capability call."), -2));
  EXPECT_EQ(fault_of(5), std::pair(std::string("Unknown error code returned by libqv."), 5));
}

TEST_F(access_test, queues_carry_their_properties) {
  const auto check_list = [](std::vector<std::uint64_t> expected) {
    fake.on_call["create_queue_2"] = [expected = std::move(expected)](call_seen& call) {
      EXPECT_TRUE(std::equal(expected.begin(), expected.end(), call.at<const std::uint64_t*>(16)));
      EXPECT_EQ(call.handle(0), reinterpret_cast<void*>(0xD0));
    };
  };
  {
    const auto device = the_device<version::v2_0>();
    const opencl_2_0::context context({1, 2, 0}, {device, device}, nullptr, nullptr);
    EXPECT_EQ(fake.last("create_context").at<std::uint32_t>(8), 2u);
    check_list({0x1093, 13, 0x1094, 1024, 0});
    const opencl_2_0::device_command_queue first(context, device, false, 1024);
    check_list({0x1093, 15, 0x1094, 0xFFFFFFFF, 0});
    const opencl_2_0::device_command_queue second(context, device, true, 0xFFFFFFFF);
    check_list({0x1093, 1, 0});
    const opencl_2_0::host_command_queue third(context, device, true, false);
    EXPECT_EQ(fake.last("create_queue_2").handle(8), context.get_handle());
  }
  const auto context = the_context<version::v1_1>();
  const opencl_1_1::command_queue queue(context, the_device<version::v1_1>(), true, true);
  EXPECT_EQ(fake.last("create_queue").at<std::uint64_t>(16), 3u);
  EXPECT_THROW(opencl_1_1::context({}, {}, nullptr, nullptr), std::logic_error);
}

TEST_F(access_test, a_fill_keeps_its_pattern) {
  const auto context = the_context<version::v1_2>();
  const opencl_1_2::command_queue queue(context, the_device<version::v1_2>(), false, false);
  const auto buffer = context.create_buffer(1, 64, nullptr);
  bytes pattern{1, 2, 3, 4};
  const opencl_1_2::fill_buffer_bytes fill(buffer, pattern, 8, 10);
  pattern.assign(4, 0);
  fake.on_call["fill"] = [](call_seen& call) {
    EXPECT_EQ(std::memcmp(call.handle(16), "\1\2\3\4", 4), 0);
    EXPECT_EQ(call.at<std::size_t>(24), 4u);
    EXPECT_EQ(call.at<std::size_t>(32), 8u);
    EXPECT_EQ(call.at<std::size_t>(40), 40u);
  };
  queue.enqueue(fill, 0, nullptr);
  EXPECT_THROW(opencl_1_2::fill_buffer_bytes(buffer, {1, 2, 3, 4}, 0, ~std::size_t{0} / 2), std::logic_error);
  fake.status["fill"] = -4;
  EXPECT_THROW(queue.enqueue(fill, 0, nullptr), common::mem_object_allocation_failure);
}

TEST_F(access_test, a_device_reads_each_form_of_parameter) {
  using opencl::device_flag;
  using opencl::device_parameter;
  const auto device = the_device<version::v2_1>();
  fake.set_text(0x1030, " cl_khr_il  cl_khr_fp64 ");
  EXPECT_EQ(device.get<device_parameter::extensions>(), (names{"cl_khr_il", "cl_khr_fp64"}));
  EXPECT_FALSE(device.has_spir_extension());
  fake.set_text(0x103F, "a b;c");
  EXPECT_EQ(device.get<device_parameter::built_in_kernels>(), (names{"a b", "c"}));
  fake.set_text(0x105B, "SPIR-V_1.0 SPIR-V_1.1");
  EXPECT_EQ(device.get<device_parameter::il_version>(), "SPIR-V_1.0 SPIR-V_1.1");
  fake.set_text(0x40E0, "1.2 2.0");
  EXPECT_EQ(device.get<device_parameter::spir_versions>().at(1), "2.0");
  fake.set<std::uint64_t>(0x1005, {1, 2, 3});
  EXPECT_EQ(device.get<device_parameter::max_work_item_sizes>()[2], 3u);
  fake.set<std::uint64_t>(0x1005, {1, 2});
  EXPECT_THROW(device.get_sizes(0x1005), common::bad_implementation);
  fake.set<std::uint32_t>(0x1026, {2});
  EXPECT_TRUE(device.get<device_parameter::endian_little>());
  EXPECT_TRUE(device.get_bool(0x1026));
  fake.set<std::uint64_t>(0x1000, {3}); // default and CPU at once: neither
  EXPECT_FALSE(device.is<device_flag::type_cpu>() || device.is<device_flag::type_default>());
  fake.set<std::uint64_t>(0x101B, {0xC0});
  EXPECT_TRUE(device.is<device_flag::single_fp_software_emulated>());
  EXPECT_TRUE(device.is<device_flag::single_fp_correctly_rounded_divide_sqrt>());
  EXPECT_FALSE(device.is<device_flag::single_fp_fma>());
  fake.set<std::uint32_t>(0x101C, {2});
  EXPECT_TRUE(device.is<device_flag::global_mem_cache_read_write>());
  EXPECT_FALSE(device.is<device_flag::global_mem_cache_none>());
  fake.set_text(0x102E, "EMBEDDED_PROFILE");
  EXPECT_TRUE(device.is_embedded_profile());
  fake.status["device_info"] = -30;
  EXPECT_THROW(device.get_uint64(0x1000), common::invalid_value);
}

TEST_F(access_test, all_kernels_of_a_program_get_an_owner) {
  const auto program = the_context<version::v1_1>().create_program_with_source("");
  std::uint32_t available = 0;
  fake.on_call["create_kernels"] = [&](call_seen& call) {
    if (auto* const count = call.at<std::uint32_t*>(16))
      *count = available;
    for (std::uint32_t i = 0; i < call.at<std::uint32_t>(28); ++i)
      call.at<void**>(8)[i] = fake.new_object();
  };
  EXPECT_TRUE(program.create_kernels().empty());
  EXPECT_EQ(fake.count("create_kernels"), 1);
  available = 3;
  EXPECT_EQ(program.create_kernels().size(), 3u);
  EXPECT_EQ(fake.last("create_kernels").handle(16), nullptr);
  EXPECT_EQ(fake.count("release_kernel"), 3);
}

// Stands in for an entry point of the OpenCL implementation.
void* extension_entry(void*, const void* il, std::size_t length, std::int32_t* status) {
  EXPECT_EQ(std::memcmp(il, "spirv", length), 0);
  *status = length == 5 ? 0 : -30;
  return length == 5 ? fake.new_object() : nullptr;
}

TEST_F(access_test, intermediate_languages_take_the_road_of_their_version) {
  const auto old = the_context<version::v1_2>();
  fake.set<void*>(0x1081, {});
  EXPECT_THROW(old.create_program_with_il("spirv", 5), common::bad_implementation);
  fake.set<std::uint64_t>(0x1081, {0xD0});
  fake.set<std::uint64_t>(0x1031, {0xF00});
  void* address = nullptr;
  fake.on_call["extension_address"] = [&](call_seen& call) {
    EXPECT_EQ(call.handle(0), reinterpret_cast<void*>(0xF00));
    EXPECT_STREQ(call.at<const char*>(8), "clCreateProgramWithILKHR");
    fake.references.erase(call.handle(16));
    put(call, 16, address);
  };
  EXPECT_THROW(old.create_program_with_il("spirv", 5), std::logic_error);
  address = reinterpret_cast<void*>(&extension_entry);
  EXPECT_NE(old.create_program_with_il("spirv", 5).get_handle(), nullptr);
  EXPECT_THROW(old.create_program_with_il("spirv", 4), common::invalid_value);

  auto program = the_context<version::v2_2>().create_program_with_il(bytes{7, 8, 9});
  EXPECT_EQ(fake.last("create_with_il").at<std::size_t>(16), 3u);
  fake.values[0x1169] = {4, 5, 6};
  EXPECT_EQ(program.get_il(), (bytes{4, 5, 6}));
  fake.on_call["set_constant"] = [](call_seen& call) {
    EXPECT_EQ(call.at<std::uint32_t>(8), 42u);
    EXPECT_EQ(call.at<std::size_t>(16), 1u);
    EXPECT_EQ(*call.at<unsigned char*>(24), 1);
  };
  program.set_specialization_constant(42, true);
}

TEST_F(access_test, built_in_kernels_go_out_as_one_text) {
  const auto device = the_device<version::v2_1>();
  fake.on_call["create_with_builtin"] = [](call_seen& call) {
    EXPECT_STREQ(call.at<const char*>(16), "a;b");
  };
  const auto program = the_context<version::v2_1>().create_program_with_builtin_kernels({device}, {"a", "b"});
  fake.set_text(0x1168, "a;b;");
  EXPECT_EQ(program.get_kernel_names(), (names{"a", "b"}));
}

TEST_F(access_test, a_retain_that_fails_leaves_nothing_behind) {
  fake.status["retain_device"] = -6;
  EXPECT_THROW(opencl_1_2::find_devices(), common::out_of_host_memory);
  EXPECT_EQ(fake.count("release_device"), 0);
}

// A failing release costs one line in the log, whatever it failed with.
TEST_F(access_test, a_release_that_fails_is_logged) {
  const auto lines_of = [](auto make) {
    testing::internal::CaptureStderr();
    { const auto wrapper = make(); }
    const std::string text = testing::internal::GetCapturedStderr();
    const auto begin = text.find("Exception");
    return begin == std::string::npos ? text : text.substr(begin);
  };
  constexpr version V = version::v2_0;
  const auto device = the_device<V>();
  const auto context = the_context<V>();
  const auto program = context.create_program_with_source("");
  const opencl_2_0::host_command_queue queue(context, device, false, false);
  const auto buffer = context.create_buffer(0, 8, nullptr);
  const auto old_context = the_context<version::v1_0>();
  const auto old_device = the_device<version::v1_0>();
  const auto references = fake.references;

  for (const char* name : {"context", "event", "kernel", "memory", "program", "queue"})
    fake.status["release_" + std::string(name)] = -34;
  fake.transport["release_device"] = -1;
  EXPECT_EQ(lines_of([&] { return device; }), "Exception caught in device::~device().\n");
  EXPECT_EQ(lines_of([&] { return context; }), "Exception caught in context::~context().\n");
  EXPECT_EQ(lines_of([&] { return program; }), "Exception caught in program::~program().\n");
  EXPECT_EQ(lines_of([&] { return program.create_kernel("k"); }), "Exception caught in kernel::~kernel().\n");
  EXPECT_EQ(lines_of([&] { return context.create_buffer(0, 1, nullptr); }),
            "Exception caught in memory_object::~memory_object().\n");
  EXPECT_EQ(
      lines_of([&] { return queue.enqueue(opencl_2_0::copy_buffer(buffer, buffer, 0, 4, 4), 0, nullptr); }),
      "Exception caught in event::~event().\n");
  EXPECT_EQ(lines_of([&] { return opencl_2_0::host_command_queue(context, device, false, false); }),
            "Exception caught in host_command_queue::~host_command_queue().\n");
  EXPECT_EQ(lines_of([&] { return opencl_2_0::device_command_queue(context, device, false, 0); }),
            "Exception caught in device_command_queue::~device_command_queue().\n");
  EXPECT_EQ(lines_of([&] { return opencl_1_0::command_queue(old_context, old_device, false, false); }),
            "Exception caught in command_queue::~command_queue().\n");
  EXPECT_EQ(lines_of([&] { return old_device; }), "");
  fake.status.clear();
  fake.transport.clear();
  fake.references = references; // the failures above leaked on purpose
}

const bool logging_is_on = setenv("SKERV_LOG_LEVEL", "error", 1) == 0 &&  // NOLINT(concurrency-mt-unsafe)
                           setenv("SKERV_LOG_TARGET", "console", 1) == 0; // NOLINT(concurrency-mt-unsafe)

} // namespace
