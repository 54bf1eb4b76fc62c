// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The C++ layer over the library and the scripted machine. The fixture sees to it that whatever a test does, no
// OpenCL object is left behind.
#include "tests/error_of.h"
#include "tests/scripted/scripted_test.h"

#include <climits>
#include <cmath>
#include <limits>
#include <tarva.hpp>

namespace scripted {

using op = qv::operation;
using ints = std::vector<int>;
template <class... Arguments>
constexpr bool add_takes =
    std::is_invocable_v<tarva::function<tarva::memory<int>, int>, tarva::range, Arguments...>;

template <class From, class = void>
constexpr bool can_write_later = false;
template <class From>
constexpr bool can_write_later<
    From, std::void_t<decltype(std::declval<tarva::memory<int>>().async_write(std::declval<From>()))>> = true;

// Misuse that does not compile.
struct own {
  int a, b;
};
static_assert(add_takes<tarva::memory<int>, int> && add_takes<std::nullptr_t, long>);
static_assert(!add_takes<tarva::memory<float>, int> && !add_takes<int*, int> && !add_takes<ints, int>);
static_assert(!add_takes<tarva::memory<int>, float> && !add_takes<tarva::memory<int>, bool>);
static_assert(!add_takes<tarva::memory<int>> && !add_takes<tarva::memory<int>, int, int>);
static_assert(!std::is_constructible_v<tarva::view<int>, const ints&>);
static_assert(!std::is_constructible_v<tarva::view<int>, ints&&>);
static_assert(can_write_later<ints&> && can_write_later<ints> && can_write_later<tarva::view<const int>>);
static_assert(!can_write_later<std::array<int, 2>> && !can_write_later<std::vector<float>&>);
static_assert(!std::is_copy_constructible_v<tarva::future<>>);
static_assert(!tarva::is_element<bool> && !tarva::is_element<own> && !tarva::is_element<int*>);
static_assert(std::is_convertible_v<int, tarva::count> && !std::is_convertible_v<float, tarva::count>);
static_assert(!std::is_constructible_v<tarva::memory<int>, double> &&
              !std::is_constructible_v<tarva::local<int>, bool>);

class cpp_layer : public scripted_test {
protected:
  static tarva::device on(std::uint32_t version) {
    return tarva::devices().at(device_index(version, role::first));
  }
  static auto adder() { return on(3).build(source).kernel<tarva::memory<int>, int>("add"); }
};

TEST_F(cpp_layer, content_goes_the_whole_road) {
  const tarva::memory data(counted(6), "numbers");
  const auto add = adder();
  add(tarva::range::items(4).from(1), data, 10U);
  EXPECT_EQ(data.read(), (ints{1, 12, 13, 14, 15, 6}));

  data.part(1, 4).part(1, 2).fill(-7);
  const tarva::memory<int> other(3);
  data.part(1, 3).copy_to(other.all());
  EXPECT_EQ(other.read(), (ints{12, -7, -7}));
  data.part(4, 2).write(ints{8, 9});
  EXPECT_EQ(data.async_read().get(), (ints{1, 12, -7, -7, 8, 9}));
  EXPECT_EQ(other.async_write(ints{3, 2, 1}).get(), (ints{3, 2, 1}));
  int array[3] = {};
  other.async_read(array).get();
  EXPECT_EQ(array[0] * 100 + array[1] * 10 + array[2], 321);
  const tarva::memory<float> none(std::vector<float>{});
  none.write(std::vector<float>{});
  EXPECT_TRUE(none.read().empty() && none.async_read().get().empty());

  // What a kernel is given: bytes of local memory, a vector, and a null buffer.
  const tarva::memory<short> seen(6);
  on(2).build(source).kernel("observe")(tarva::range::items(1), seen, tarva::local<float>(5),
                                        tarva::short4{1, 2, 3, 4}, nullptr);
  EXPECT_EQ(seen.read(), (std::vector<short>{20, 1, 2, 3, 4, 1}));
}

// What the next error is about, in the place of what the library says: its own errors are about nothing.
tarva_abi_error_s* nested = nullptr;
extern "C" tarva_abi_result tarva_abi_get_nested_error(void*, tarva_abi_error_s*,
                                                       tarva_abi_error_s** out_nested, tarva_abi_error_s**) {
  *out_nested = std::exchange(nested, nullptr);
  return TARVA_ABI_OK;
}

TEST_F(cpp_layer, failures_tell_the_whole_chain_and_end_it) {
  const tarva::memory data(counted(1));
  tarva_abi_get_devices(nullptr, nullptr, &nested);
  tarva_abi_error_s* const inner = nested;
  const auto failed = tarva::attempt([&] { tarva::slice<int>(data.get(), 1, 1).fill(1); });
  const auto& chain = failed.error().chain();
  ASSERT_EQ(chain.size(), 2U);
  EXPECT_EQ(chain[1].kind, tarva::failure_kind::invalid_argument);
  EXPECT_EQ(failed.error().what(), chain[0].message + ": " + chain[1].message);
  tarva_abi_property_s* none = nullptr;
  EXPECT_NE(caller::call<tarva_abi_get_error_root_property>(inner, &none), caller::outcome());
}

TEST_F(cpp_layer, owners_balance) {
  tarva::memory<int> first(counted(2)), second(first), third(counted(3));
  EXPECT_EQ(first.get(), second.get());
  third = second;
  second = std::move(third);
  tarva::memory<int>& same = second;
  second = same;
  EXPECT_EQ(second.read(), counted(2));

  // A memory object outlives the owners that are gone, and a handle can leave the layer and come back.
  EXPECT_EQ(tarva::memory<int>::adopt(second.release()).read(), counted(2));
  tarva_abi_memory_s* shared = first.get();
  tarva_abi_retain_memory(nullptr, shared);
  EXPECT_EQ(error_of<std::invalid_argument>([&] { (void)tarva::memory<float>::adopt(shared); }),
            "The memory object has elements of another type.");
  EXPECT_EQ(first.read(), counted(2));
  { const auto dropped = first.async_read(); }
  tarva::future<ints> replaced = first.async_read();
  replaced = first.async_write({5, 6});
  EXPECT_EQ(replaced.get(), (ints{5, 6}));
  EXPECT_FALSE(replaced.valid());
  const ints storage = counted(2);
  tarva::future<> left = first.async_write(storage);
  left.abandon();
}

TEST_F(cpp_layer, failures_are_exceptions) {
  const tarva::memory data(counted(4));
  const tarva::slice<int> beyond(data.get(), 1, 4);
  EXPECT_THROW(beyond.fill(1), tarva::logic_failure);
  EXPECT_THROW(beyond.async_write(ints(4)).get(), tarva::logic_failure);
  EXPECT_EQ(error_of<std::length_error>([&] { data.write(counted(5)); }),
            "The two sides of a transfer have different numbers of elements: 4 and 5.");
  EXPECT_EQ(error_of<std::out_of_range>([&] { (void)data.part(3, 2); }),
            "A part of 2 elements from element 3 on reaches beyond the whole of 4 elements.");
  volatile int below_zero = -1;
  EXPECT_EQ(error_of<std::out_of_range>([&] { (void)data.part(below_zero, 1); }), "A count cannot be -1.");
  EXPECT_THROW((void)tarva::range::items(1, below_zero), std::out_of_range);

  // The work of a read fails on the device.
  const auto add = adder();
  add(tarva::range::items(4), data, 0);
  for (const bool by_future : {false, true}) {
    fail_event(op::enqueue_read_buffer, 1, -5);
    try {
      by_future ? data.async_read().get() : data.read();
      ADD_FAILURE();
    } catch (const tarva::error& caught) {
      EXPECT_EQ(caught.code(), TARVA_ABI_RUNTIME_FAILURE);
      EXPECT_EQ(caught.kind(), tarva::failure_kind::other);
      ASSERT_EQ(caught.chain().size(), 1U);
      EXPECT_EQ(caught.chain()[0].message, caught.what());
    }
  }
  { // The destructor waits and lets the failure go.
    fail_event(op::enqueue_read_buffer, 1, -5);
    const auto dropped = data.async_read();
  }
  EXPECT_EQ(data.read(), counted(4));

  EXPECT_EQ(error_of<std::invalid_argument>([&] { (void)on(1).build(source).kernel<int>("add"); }),
            "The kernel add has 2 parameters, not 1.");
  EXPECT_THROW(add(tarva::range::items(0), data, 0), tarva::logic_failure);
}

// What does not exist any more, or never has, is told by its kind and place.
TEST_F(cpp_layer, empty_and_stale_objects_are_named) {
  tarva::memory<int> gone(2), none;
  const tarva::memory data(counted(2));
  tarva::kernel add = on(3).build(source).kernel("add");
  const tarva::slice<int> stale = gone.all();
  int into[2] = {};
  tarva::future<> waited = data.async_read(into);
  waited.get();
  gone.reset();
  EXPECT_FALSE(gone || none || tarva::kernel() || tarva::program() || tarva::device() ||
               tarva::function<int>());
  const auto last = tarva::range::items(1);
  const auto told = [](auto action) {
    const auto result = tarva::attempt(action);
    EXPECT_EQ(result.error().code(), TARVA_ABI_RUNTIME_FAILURE);
    EXPECT_EQ(result.error().chain().front().message, "Lookup of internal type map failed.");
    return std::string(result.error().what()).substr(result.error().chain().front().message.size());
  };
  const std::string empty = " is empty: it was moved from or given up, or never made.",
                    given_up = " has been given up.";
  const std::array raw{tarva::argument(data), tarva_abi_kernel_argument_s{TARVA_ABI_ARGUMENT_MEMORY, 16, 0}};
  EXPECT_EQ(told([&] { none.fill(1); }), " The memory object" + empty);
  EXPECT_EQ(told([&] { data.copy_to(stale); }), " The memory object" + given_up);
  EXPECT_EQ(told([&] { add(last, data, none); }), " The memory object of argument 1" + empty);
  EXPECT_EQ(told([&] { add.launch(last, raw); }), " The memory object of argument 1" + given_up);
  EXPECT_EQ(told([&] { tarva::kernel()(last, data); }), " The kernel is empty or has been given up.");
  EXPECT_EQ(told([&] { (void)tarva::program().kernel("add"); }), " The program" + empty);
  EXPECT_EQ(told([&] { (void)tarva::device().name(); }), " The device" + empty);
  EXPECT_EQ(told([&] { waited.get(); }),
            " The future is empty: it was moved from, or it has been waited for.");
}

TEST_F(cpp_layer, programs_build_or_tell_why_not) {
  const tarva::device device = on(3);
  const std::string log = "error: the text says #error";
  const std::pair<std::array<const char*, 3>, std::string> failures[] = {
      {{"#error", "", ""},
       "The program does not build: " + log + " A source is the text of a program, not the name of a file."},
      {{"#error {}", "-w", "mine"}, "The program mine does not build with the options -w: " + log}};
  for (const auto& [given, words] : failures)
    try {
      (void)device.build(given[0], given[1], given[2]);
      ADD_FAILURE();
    } catch (const tarva::build_failure& caught) {
      EXPECT_EQ(caught.log(), log);
      EXPECT_EQ(caught.what(), words);
    }
  fail_call(op::build_program, 1, -43);
  const auto refused = tarva::attempt([&] { return device.build(source, "-odd"); });
  EXPECT_EQ(refused.error().what(), refused.error().chain()[0].message + " The options were: -odd");

  // The label is the name of the file, whatever is in it.
  const auto named = device.build("\xEF\xBB\xBF" + source, "", "a \"file\"\\\n");
  EXPECT_EQ(named.properties()["OPENCL"]["CL_PROGRAM_SOURCE"].get<std::string>(),
            "#line 1 \"a \\\"file\\\"\\\\ \"\n" + source);
  EXPECT_EQ(error_of<tarva::runtime_failure>([&] { (void)named.kernel("ad"); }),
            "Kernel name not found in the program. There is no ad, but there are: add, sum, observe, flag, "
            "fixed, empty.");
  EXPECT_FALSE(on(4).supports(tarva::ir::spir_v));
  EXPECT_TRUE(on(6).supports(tarva::ir::spir_v, {{1, 2}}));

  static std::map<std::uint32_t, bytes> constants;
  set_kernel("flag", [](const kernel_run& now) { constants = now.constants; });
  const std::string module = "SPV:" + source;
  const auto made = on(6).load(tarva::ir::spir_v, tarva::as_bytes(module), "", "module",
                               {{1, 2}, {7, 0.5}, {9, tarva::uchar2{4, 5}}});
  made.kernel("flag")(tarva::range::items(1), tarva::memory<int>(1));
  set_kernel("flag", [](const kernel_run& now) { now.set(0, 0, std::int32_t{1}); });
  EXPECT_EQ(constants, (std::map<std::uint32_t, bytes>{
                           {1, {2, 0, 0, 0}}, {7, {0, 0, 0, 0, 0, 0, 0xe0, 0x3f}}, {9, {4, 5}}}));
}

TEST_F(cpp_layer, numbers_are_converted_or_refused) {
  const tarva::memory data(ints{0});
  const auto add = adder();
  const auto last = tarva::range::items(1);
  add(last, data, static_cast<unsigned long>(INT_MAX));
  add(last, data, LONG_MIN / (LONG_MIN / INT_MIN)); // INT_MIN as a long
  EXPECT_EQ(error_of<std::out_of_range>([&] { add(last, data, 1UL << 31); }),
            "Parameter 1 of the kernel add cannot hold 2147483648.");
  EXPECT_THROW(add(last, data, static_cast<long>(INT_MIN) - 1), std::out_of_range);
  EXPECT_THROW(add(last, data, ~0ULL), std::out_of_range);
  EXPECT_EQ(data.read(), ints{-1});

  using tarva::detail::fits;
  EXPECT_TRUE(fits<float>(3.4e38) && fits<float>(std::numeric_limits<double>::infinity()) &&
              !fits<float>(-1e300));
  static_assert(fits<unsigned char>(255) && !fits<unsigned char>(256) && !fits<unsigned char>(-1));
  static_assert(fits<signed char>(-128) && !fits<signed char>(-129) && !fits<signed char>(128U));
  static_assert(fits<unsigned long>(LONG_MAX) && !fits<unsigned long>(-1L) && fits<long>(0xffffffffU));
}

TEST_F(cpp_layer, properties_are_a_tree_to_walk) {
  const tarva::property root = on(3).properties();
  std::vector<std::string> names;
  for (const tarva::property& child : root)
    names.emplace_back(child.name());
  EXPECT_EQ(names, (std::vector<std::string>{"FRIENDLY_SHORT_DESCRIPTION", "FRIENDLY_SUMMARY", "NAME",
                                             "OBJECT_ID", "OPENCL"}));
  EXPECT_EQ(root["NAME"].get<std::string>(), "first");
  const tarva::property opencl = root["OPENCL"];
  EXPECT_FALSE(opencl.has_value());
  EXPECT_TRUE(opencl["CL_DEVICE_AVAILABLE"].get<bool>());
  EXPECT_EQ(opencl["CL_DEVICE_MAX_WORK_ITEM_SIZES"].get_all<std::uint64_t>().size(), 3U);
  EXPECT_NE(root.to_text(), root.to_xml());

  EXPECT_FALSE(root.find("NO_SUCH"));
  EXPECT_EQ(error_of<std::out_of_range>([&] { (void)root["NO_SUCH"]; }),
            "There is no property NO_SUCH below ROOT.");
  EXPECT_THROW((void)root["NAME"].get<int>(), std::logic_error);
  EXPECT_EQ(error_of([&] { (void)root["NAME"].get<std::string>(1); }),
            "The property NAME has no value of that type or place.");
  EXPECT_THROW((void)tarva::memory<int>(256).properties()["NUM_ELEMENTS"].get<std::uint8_t>(),
               std::out_of_range);
}

TEST_F(cpp_layer, the_best_device_is_chosen) {
  constexpr std::uint32_t type = 0x1000, units = 0x1002, clock = 0x100C, available = 0x1027;
  const std::tuple<std::size_t, std::uint32_t, bytes> told[] = {
      {7, type, value_answer(std::uint64_t{2})}, // a processor, and a fast one
      {7, units, value_answer(500U)},
      {10, clock, value_answer(5000U)},
      {13, units, value_answer(64U)},
      {13, available, value_answer(0U)},
      {4, clock, text_answer("")}}; // refused
  for (const auto& [device, parameter, answer] : told)
    set_info(device, parameter, answer);
  const auto id = [](const tarva::device& of) { return of.properties()["OBJECT_ID"].get<std::uint64_t>(); };
  const auto all = tarva::devices();
  const std::pair<const char*, std::size_t> rows[] = {{"", 10},    {"gpu", 10}, {"Cpu", 7},    {"13", 13},
                                                      {"0", 0},    {"BIG", 17}, {"first", 15}, {"econd", 10},
                                                      {"2.2", 99}, {"18", 99},  {"custom", 99}};
  for (const auto& [wanted, index] : rows) {
    setenv("TARVA_DEVICE", wanted, 1);
    const auto best = tarva::attempt([] { return tarva::best_device(); });
    ASSERT_EQ(static_cast<bool>(best), index < all.size()) << wanted;
    if (best)
      EXPECT_EQ(id(*best), id(all[index])) << wanted << " is " << best->name();
    else
      EXPECT_NE(std::string(best.error().what()).find(" is that. There are: 0 (first, gpu, OpenCL 1.0), 1 ("),
                std::string::npos);
  }
  unsetenv("TARVA_DEVICE");
  EXPECT_EQ(tarva::devices(tarva::device_type::cpu).size(), 1U);
  EXPECT_EQ(tarva::devices(tarva::device_type::gpu).size(), 11U);
  for (const auto& [device, parameter, answer] : told)
    set_info(device, parameter, {});
}

TEST(cpp_devices, without_one_it_is_told_what_to_install) {
  const auto without = [] {
    set_devices({});
    for (const auto choose : {tarva::first_device, tarva::best_device})
      std::fputs(tarva::attempt(choose).error().what(), stderr);
    std::exit(0);
  };
  EXPECT_EXIT(without(), ::testing::ExitedWithCode(0), "no OpenCL device.*pocl-opencl-icd.*pocl-opencl-icd");
}

TEST(cpp_ranges, are_the_records_of_the_interface) {
  using tarva::range;
  const std::pair<range, tarva_abi_launch_range_s> rows[] = {
      {range::items(5), {TARVA_ABI_LAUNCH_EXPLICIT, {1, 0, 0, 0, 5}}},
      {range::items(5, 6, 7).in_groups_of(1, 2, 7).from(3, 4, 5),
       {TARVA_ABI_LAUNCH_EXPLICIT, {3, 3, 4, 5, 5, 6, 7, 1, 2, 7}}},
      {range::at_least(5, 6), {TARVA_ABI_LAUNCH_GLOBAL_SIZE, {2, 5, 6}}},
      {range::groups(5), {TARVA_ABI_LAUNCH_GROUPS, {5}}},
      {range::groups_of(5, 8, 4), {TARVA_ABI_LAUNCH_GROUPS_SIZED, {2, 5, 8, 4}}},
      {range::groups_per_unit(5), {TARVA_ABI_LAUNCH_GROUPS_PER_UNIT, {5}}},
      {range::group_per_unit_of(8, 4, 2), {TARVA_ABI_LAUNCH_GROUP_PER_UNIT_SIZED, {3, 0, 8, 4, 2}}},
  };
  for (const auto& [made, expected] : rows)
    EXPECT_EQ(std::memcmp(&made.record(), &expected, sizeof expected), 0) << "type " << expected.type;
}

// Their sizes and numbers in turn.
template <class... Types>
constexpr bool are(std::initializer_list<std::size_t> expected) {
  const auto* next = expected.begin();
  return ((sizeof(Types) == *next++ && tarva::element<Types>::type == *next++) && ...);
}

TEST(cpp_types, are_those_of_the_library) {
  static_assert(are<char, tarva::boolean, std::byte, signed char, unsigned short, short, unsigned, int>(
      {1, TARVA_ABI_TYPE_STRING, 4, TARVA_ABI_TYPE_BOOLEAN, 1, TARVA_ABI_TYPE_UINT8, 1, TARVA_ABI_TYPE_INT8,
       2, TARVA_ABI_TYPE_UINT16, 2, TARVA_ABI_TYPE_INT16, 4, TARVA_ABI_TYPE_UINT32, 4,
       TARVA_ABI_TYPE_INT32}));
  static_assert(
      are<unsigned long long, long, tarva::half, double, tarva::float16, tarva::double3, tarva::double16>(
          {8, TARVA_ABI_TYPE_UINT64, 8, TARVA_ABI_TYPE_INT64, 2, TARVA_ABI_TYPE_HALF, 8,
           TARVA_ABI_TYPE_DOUBLE, 64, TARVA_ABI_TYPE_FLOAT16, 32, TARVA_ABI_TYPE_DOUBLE3, 128,
           TARVA_ABI_TYPE_DOUBLE16}));
  static_assert(are<tarva::uchar2, tarva::char16, tarva::ushort3, tarva::short8, tarva::uint4, tarva::int3>(
      {2, TARVA_ABI_TYPE_UINT8V2, 16, TARVA_ABI_TYPE_INT8V16, 8, TARVA_ABI_TYPE_UINT16V3, 16,
       TARVA_ABI_TYPE_INT16V8, 16, TARVA_ABI_TYPE_UINT32V4, 16, TARVA_ABI_TYPE_INT32V3}));
  static_assert(are<tarva::ulong8, tarva::long2, tarva::half3>(
      {64, TARVA_ABI_TYPE_UINT64V8, 16, TARVA_ABI_TYPE_INT64V2, 8, TARVA_ABI_TYPE_HALF3}));
  EXPECT_TRUE((tarva::float3{1, 2, 3, 4} == tarva::float3{1, 2, 3, 5})) << "the fourth is no component";
  EXPECT_TRUE((tarva::float4{1, 2, 3, 4} != tarva::float4{1, 2, 3, 5}));
}

TEST(cpp_types, halves_survive_and_round_to_even) {
  for (std::uint32_t bits = 0; bits < 0x10000; ++bits) {
    tarva::half from{};
    from.bits = static_cast<std::uint16_t>(bits);
    const auto value = static_cast<float>(from);
    if (std::isnan(value))
      EXPECT_TRUE((bits & 0x7c00) == 0x7c00 && (bits & 0x3ff) != 0 &&
                  std::isnan(static_cast<float>(tarva::half(value))));
    else
      ASSERT_EQ(tarva::half(value).bits, bits);
  }
  const std::pair<float, std::uint16_t> rows[] = {
      {1.0F, 0x3c00},         {-2.0F, 0xc000},      {65519.0F, 0x7bff},      {65520.0F, 0x7c00},
      {0x1.002p0F, 0x3c00},   {0x1.006p0F, 0x3c02}, {0x1.002002p0F, 0x3c01}, {0x1p-25F, 0x0000},
      {0x1.8p-25F, 0x0001},   {0x1.8p-24F, 0x0002}, {-0x1p-24F, 0x8001},     {0x1p-14F, 0x0400},
      {0x1.ffep-15F, 0x0400}, {1e-40F, 0x0000},     {HUGE_VALF, 0x7c00},     {-1e30F, 0xfc00}};
  for (const auto& [value, bits] : rows)
    EXPECT_EQ(tarva::half(value).bits, bits) << value;
}

} // namespace scripted
