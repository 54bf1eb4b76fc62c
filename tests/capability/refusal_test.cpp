// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What would end the process in one implementation or another, and is refused before it gets there; and that
// what is valid passes everywhere.
#include "tests/capability/library.h"

#include <fstream>

namespace capability_test {
namespace {

enum implementation : std::size_t { another, pocl, rusticl, clover, oclgrind };
constexpr const char* names[] = {"Another", "Portable Computing Language", "rusticl", "Clover", "Oclgrind"};

using refusal = capability;

// One device of each. With Oclgrind it is for a process of its own.
void use_implementations(std::size_t count, const device_options& each = plain_device()) {
  std::vector<platform_options> platforms;
  std::vector<device_options> devices(count, each);
  for (std::size_t i = 0; i < count; ++i) {
    platforms.push_back({names[i]});
    devices[i].platform = i;
  }
  set_platforms(platforms);
  set_devices(devices);
}
constexpr std::size_t without_oclgrind = oclgrind, with_oclgrind = oclgrind + 1;

TEST_F(refusal, of_build_options_that_end_the_process) {
  // By the first letters of those who refuse them.
  static const std::pair<const char*, std::vector<const char*>> rows[] = {
      {"",
       {"", "  ", "-DSIZE=4 -cl-mad-enable", "-D SIZE", "-D SIZE=4 -I /tmp", "-I \"/tmp/a b\" -w",
        "-D \"TEXT=a b\"", "-x spir -spir-std=1.2", "-I /tmp/\xC3\xA9\xE2\x82\xAC\xF4\x8F\xBF\xBF",
        "-cl-std=CL1.2 -Werror", "-D-", "-U SIZE", "-include file", "-DD"}},
      {"P", {"-D", "-w -I", " -D  "}},
      {"OCr",
       {"\"", "-DX=\"", "'", "file.cl", "-w word", "-", "@file", "\\", "-s word", "-D A word", "-DX='a b'"}},
      {"r", {"-D A", "-DX=\"1\"", "-DX=\xFF", "-DX=\xC0\x80", "-DX=\xED\xA0\x80", "-DX=\xE2\x82"}}};
  use_implementations(with_oclgrind);
  run_in_child([&] {
    library made;
    for (std::size_t i = 0; i < with_oclgrind; ++i) {
      const user it(made, i);
      for (const auto& [refused_by, all] : rows)
        for (const char* options : all)
          EXPECT_EQ(
              it.status_of<op::build_program>({it.program, &it.device, options, nullptr, nullptr, 77, 1}),
              std::strchr(refused_by, *names[i]) != nullptr ? CL_INVALID_BUILD_OPTIONS : CL_SUCCESS)
              << names[i] << " " << options;
      EXPECT_EQ(it.status_of<op::create_kernel>({it.program, "\xFF", nullptr, 77}),
                i == rusticl ? CL_INVALID_KERNEL_NAME : CL_SUCCESS)
          << names[i];
      for (const std::size_t length : {252, 253})
        EXPECT_EQ(
            it.status_of<op::create_kernel>({it.program, std::string(length, 'k').c_str(), nullptr, 77}),
            *names[i] == 'P' && length > 252 ? CL_INVALID_KERNEL_NAME : CL_SUCCESS)
            << names[i];
    }
  });
}

TEST_F(refusal, of_more_groups_than_can_be_counted) {
  constexpr std::size_t giga = 1024 * 1024 * 1024;
  struct row {
    cl_uint dimensions;
    std::array<std::size_t, 3> global, local; // local 0: the device chooses, at most 64
    std::string_view refused_by;              // by letters
  };
  static const row rows[] = {
      {1, {4 * giga - 1, 1, 1}, {1, 1, 1}, ""},      {1, {4 * giga, 1, 1}, {1, 1, 1}, "Gorb"},
      {1, {8 * giga, 1, 1}, {2, 1, 1}, "Gorb"},      {1, {8 * giga - 1, 1, 1}, {2, 1, 1}, "Gorb"},
      {1, {8 * giga - 2, 1, 1}, {2, 1, 1}, "rb"},    {2, {giga, 4, 1}, {1, 1, 1}, "Gob"},
      {3, {giga, giga, giga}, {1, 1, 1}, "Gob"},     {2, {4 * giga, 4 * giga, 9}, {1, 1, 1}, "Gorb"},
      {1, {4 * giga, 1, 1}, {0, 0, 0}, "Gorb"}, // the group of one that does not tell its size
      {1, {4 * giga * 64, 1, 1}, {0, 0, 0}, "Gorb"}, {1, {4 * giga * 64 - 64, 1, 1}, {0, 0, 0}, "rbo"},
      {2, {0, ~std::size_t{0}, 1}, {1, 1, 1}, "rb"}};
  static const std::tuple<std::size_t, const char*, char> devices[] = {
      {another, "", ' '},    {pocl, "", 'G'},
      {rusticl, "AMD", 'r'}, {rusticl, "llvmpipe (LLVM)", 'b'},
      {clover, "AMD", ' '},  {clover, "llvmpipe (LLVM)", 'G'},
      {oclgrind, "", 'o'}};
  use_implementations(with_oclgrind);
  std::vector<device_options> all;
  for (const auto& [platform, name, letter] : devices) {
    all.push_back(plain_device());
    all.back().name = name;
    all.back().platform = platform;
    all.back().work_group_size = 64;
  }
  set_devices(all);
  run_in_child([] {
    library made;
    for (std::size_t i = 0; i < std::size(devices); ++i) {
      const auto& [platform, name, letter] = devices[i];
      const user it(made, i);
      void* const kernel = it.make_kernel();
      if (letter == 'G')
        fail_call(op::get_kernel_work_group_info, 1, CL_OUT_OF_RESOURCES);
      for (const row& one : rows) {
        const bool is_refused = one.refused_by.find(letter) != std::string_view::npos;
        EXPECT_EQ(it.status_of<op::enqueue_nd_range_kernel>({it.queue, kernel, nullptr, one.global.data(),
                                                             one.local.data(), nullptr, nullptr, 77,
                                                             one.dimensions, 0}),
                  is_refused ? CL_INVALID_GLOBAL_WORK_SIZE : CL_SUCCESS)
            << names[platform] << " " << name << " " << one.global[0] << " in groups of " << one.local[0];
      }
      it.release<op::release_kernel>(kernel);
    }
  });
}

TEST_F(refusal, of_local_sizes_of_zero) {
  const only_user it(plain_device());
  void* const kernel = it.make_kernel();
  EXPECT_EQ(it.set(kernel, 0, 8, nullptr), CL_SUCCESS);
  using row = std::tuple<std::uint32_t, std::array<std::size_t, 3>, cl_int, bool>;
  const std::array<std::size_t, 3> global{64, 64, 64};
  for (const auto& [dimensions, local, status, given] :
       {row{1, {0, 0, 0}, 0, false}, row{3, {0, 0, 0}, 0, false}, row{1, {0, 8, 8}, 0, false},
        row{1, {8, 0, 0}, 0, true}, row{2, {8, 4, 0}, 0, true}, row{2, {8, 0, 4}, -54, false},
        row{3, {0, 0, 1}, -54, false}, row{0, {1, 1, 1}, -53, false}, row{4, {1, 1, 1}, -53, false},
        row{~0u, {0, 0, 0}, -53, false}}) {
    void* event = nullptr;
    forget_calls();
    it.ask<op::enqueue_nd_range_kernel>(
        {it.queue, kernel, nullptr, global.data(), local.data(), nullptr, &event, 77, dimensions, 0});
    const auto calls = take_calls();
    EXPECT_EQ(std::min(it.status_of_event(event), 0), status);
    ASSERT_EQ(calls.size(), status == 0 ? 1u : 0u);
    EXPECT_EQ(status == 0 && calls[0].as<op::enqueue_nd_range_kernel>().local_work_size != nullptr, given);
    it.release<op::release_event>(event);
  }
  EXPECT_EQ(it.status_of<op::enqueue_nd_range_kernel>(
                {it.queue, kernel, nullptr, nullptr, nullptr, nullptr, nullptr, 77, 1, 0}),
            CL_INVALID_GLOBAL_WORK_SIZE);
  it.release<op::release_kernel>(kernel);
}

TEST_F(refusal, of_what_is_not_there_or_has_no_end) {
  const only_user it(plain_device());
  const char* const strings[] = {"", nullptr};
  qv::create_program_with_source_record source{it.context, nullptr, nullptr, nullptr, 77, 1};
  EXPECT_EQ(it.status_of<op::create_program_with_source>(source), CL_INVALID_VALUE);
  source.strings = strings;
  EXPECT_EQ(it.status_of<op::create_program_with_source>(source), CL_SUCCESS);
  source.count = 2;
  EXPECT_EQ(it.status_of<op::create_program_with_source>(source), CL_INVALID_VALUE);
  const std::size_t size = 1;
  EXPECT_EQ(it.status_of<op::enqueue_nd_range_kernel>(
                {it.queue, nullptr, nullptr, &size, nullptr, nullptr, nullptr, 77, 1, 0}),
            CL_INVALID_KERNEL);
  char host[4];
  void* const events[] = {nullptr};
  for (void* const* list : {static_cast<void* const*>(nullptr), events})
    EXPECT_EQ(
        it.status_of<op::enqueue_write_buffer>({it.queue, it.buffer, 0, 4, host, list, nullptr, 77, 0, 1}),
        CL_INVALID_EVENT_WAIT_LIST);
  constexpr std::size_t late = ~std::size_t{3};
  for (const std::size_t bytes : {0, 3, 4}) {
    const cl_int expected = bytes <= 3 ? CL_SUCCESS : CL_INVALID_VALUE;
    const qv::enqueue_transfer_buffer_record transfer{it.queue, it.buffer, late, bytes, host,
                                                      nullptr,  nullptr,   77,   0,     0};
    EXPECT_EQ(it.status_of<op::enqueue_read_buffer>(transfer), expected);
    EXPECT_EQ(it.status_of<op::enqueue_write_buffer>(transfer), expected);
    for (const auto& [from, to] : {std::pair{late, std::size_t{0}}, {std::size_t{0}, late}})
      EXPECT_EQ(it.status_of<op::enqueue_copy_buffer>(
                    {it.queue, it.buffer, it.buffer, from, to, bytes, nullptr, nullptr, 77, 0}),
                expected);
    EXPECT_EQ(it.status_of<op::enqueue_fill_buffer>(
                  {it.queue, it.buffer, host, 1, late, bytes, nullptr, nullptr, 77, 0}),
              expected);
  }
}

TEST_F(refusal, of_device_lists_with_a_device_that_is_not_there) {
  const only_user it(plain_device());
  void* const devices[] = {it.device, nullptr};
  const std::size_t lengths[] = {1, 1};
  constexpr unsigned char byte = 1;
  const unsigned char* const binaries[] = {&byte, &byte};
  std::int32_t statuses[2];
  for (const std::uint32_t count : {1u, 2u}) {
    const cl_int expected = count == 1 ? CL_SUCCESS : CL_INVALID_DEVICE;
    EXPECT_EQ(it.status_of<op::create_context>({nullptr, count, devices, nullptr, nullptr, nullptr, 77}),
              expected);
    EXPECT_EQ(it.status_of<op::build_program>({it.program, devices, "", nullptr, nullptr, 77, count}),
              expected);
    EXPECT_EQ(
        it.status_of<op::create_program_with_builtin_kernels>({it.context, devices, "a", nullptr, 77, count}),
        expected);
    EXPECT_EQ(it.status_of<op::create_program_with_binary>(
                  {it.context, devices, lengths, binaries, statuses, nullptr, 77, count}),
              expected);
  }
}

// What is known to be whole, behind the two bytes that the fuzzer of the same checks begins with.
std::string whole_of(const std::string& name) {
  std::ifstream file(CORPUS + name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {}).substr(2);
}
std::string with_version(std::string bytes, std::size_t place, std::uint32_t version) {
  return bytes.replace(place, sizeof version, reinterpret_cast<const char*>(&version), sizeof version);
}

TEST_F(refusal, of_modules_that_are_cut_short_or_too_new) {
  only_user it(plain_device());
  const user older(it.made, 0, 3);
  void* platform = nullptr;
  older.ask<op::get_device_info>({it.device, &platform, nullptr, CL_DEVICE_PLATFORM, sizeof platform, 77});
  const auto address_on = [&](void* which, const char* name = "clCreateProgramWithILKHR") {
    return older.ask<op::get_extension_function_address_for_platform>({which, name, nullptr}).result;
  };
  // By the address that stands for the extension, too, which is the same for another platform.
  EXPECT_EQ(address_on(it.device), address_on(platform));
  EXPECT_EQ(address_on(it.device, "clX"), nullptr);
  const auto by_extension =
      reinterpret_cast<void* (*)(void* context, const void* il, std::size_t length, cl_int* status)>(
          address_on(platform));
  const auto expect = [&](const std::string& il, cl_int status, const char* what) {
    EXPECT_EQ(it.status_of<op::create_program_with_il>({it.context, il.data(), il.size(), nullptr, 77}),
              status)
        << il.size() << " bytes, " << what;
    cl_int told = 77;
    forget_calls();
    EXPECT_EQ(by_extension(it.context, il.data(), il.size(), &told), nullptr);
    EXPECT_EQ(count_calls(op::create_program_with_il), status == CL_SUCCESS ? 1u : 0u)
        << il.size() << " " << what;
    EXPECT_EQ(told, CL_INVALID_VALUE); // the scripted OpenCL takes another language
  };
  using row = std::tuple<const char*, std::uint32_t, cl_int>;
  for (const auto& [list, version, status] :
       {row{"SPIR-V_1.0", 0x00010100, -30}, row{"SPIR-V_1.2 SPIR-V_1.0 ", 0x00010200, 0},
        row{"SPIR-V_1.0 SPIR-V_1.2", 0x00010300, -30}, row{"SPIR-V_1.0 SPIR-V_1.2", 0x00010200, 0},
        row{"SPIR-V_1.4", 0x00020000, -30}, row{"SPIR-V_1.10", 0x00010900, 0}, row{"", 0x00010600, 0},
        row{"SPIR-V_x.1", 0x00010600, 0}}) {
    set_info(0, CL_DEVICE_IL_VERSION, text_answer(list));
    expect(with_version(whole_of("module_little"), 4, version), status, list);
    expect(with_version(whole_of("module_big"), 4, __builtin_bswap32(version)), status, list);
  }
  for (const char* name : {"module_little", "module_big"}) {
    const std::string whole = whole_of(name);
    // Behind the header, the one instruction before the function may be missing or the last.
    for (std::size_t length = 4; length <= whole.size(); ++length)
      expect(whole.substr(0, length),
             length == 20 || length == 28 || length == whole.size() ? CL_SUCCESS : CL_INVALID_VALUE, "cut");
    expect(whole + whole, CL_INVALID_VALUE, "twice");
    expect(whole + std::string(4, '\0'), CL_INVALID_VALUE, "an instruction of no words");
    expect(whole + whole.substr(whole.size() - 4), CL_INVALID_VALUE, "a second end");
  }
  expect("another language", CL_SUCCESS, "not judged");
}

bool is_refused(const user& by, const std::string& binary) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(binary.data());
  const std::size_t length = binary.size();
  std::int32_t binary_status = 77;
  const cl_int status = by.status_of<op::create_program_with_binary>(
      {by.context, &by.device, &length, &bytes, &binary_status, nullptr, 77, 1});
  EXPECT_EQ(binary_status, status == CL_INVALID_BINARY ? status : 77);
  EXPECT_TRUE(status == CL_SUCCESS || status == (length == 0 ? CL_INVALID_VALUE : CL_INVALID_BINARY));
  return status != CL_SUCCESS;
}
constexpr const char* bitcode = "BC\xc0\xde, some bitcode";

TEST_F(refusal, of_binaries_that_are_cut_short_or_of_another_kind) {
  for (const char* extensions : {"cl_khr_spirit", "cl_khr_spirit cl_khr_spir"}) {
    device_options device = plain_device();
    device.info[CL_DEVICE_EXTENSIONS] = text_answer(extensions);
    use(device, {names[pocl]});
    library made;
    EXPECT_EQ(is_refused(user(made), bitcode), extensions[13] == 0) << "it does not say that it takes SPIR";
  }
  use_implementations(without_oclgrind);
  library made;
  const user unjudged(made, another);
  using row = std::tuple<implementation, const char*, std::size_t, std::uint32_t>; // where its version is
  for (const auto& [platform, name, place, version] :
       {row{pocl, "binary_pocl_8", 16, 8}, row{pocl, "binary_pocl_9", 16, 9},
        row{pocl, "binary_pocl_12", 16, 10}, row{pocl, "binary_pocl_12", 16, 11},
        row{pocl, "binary_pocl_12", 16, 12}, row{rusticl, "binary_rusticl", 0, 1},
        row{rusticl, "binary_rusticl_new", 8, 1}, row{clover, "binary_clover", 0, 1}}) {
    const user by(made, platform);
    const std::string binary = with_version(whole_of(name), place, version);
    EXPECT_FALSE(is_refused(by, binary)) << name << " " << version;
    EXPECT_TRUE(is_refused(by, binary + "x") && is_refused(by, ""));
    for (std::size_t length = 8; length < binary.size(); ++length) {
      EXPECT_TRUE(is_refused(by, binary.substr(0, length))) << name << " " << length;
      EXPECT_FALSE(is_refused(unjudged, binary.substr(0, length)));
    }
    for (const std::uint32_t unknown : {2, 7, 13})
      EXPECT_TRUE(is_refused(by, with_version(binary, place, unknown))) << name << " " << unknown;
    EXPECT_EQ(is_refused(by, whole_of("binary_pocl_9")), platform != pocl);
    EXPECT_TRUE(is_refused(by, bitcode));
  }
  EXPECT_TRUE(is_refused(user(made, pocl), with_version(whole_of("binary_pocl_9"), 118, 0))) << "no name";
}

TEST_F(refusal, of_answers_that_are_wrong) {
  const bool knows_better[] = {false, false, false, true, true};
  device_options each = plain_device();
  each.info[CL_KERNEL_ATTRIBUTES] = text_answer("garbage");
  each.info[CL_DEVICE_MAX_WORK_GROUP_SIZE] = value_answer(std::uint64_t{1024});
  each.work_group_size = 32;
  use_implementations(with_oclgrind, each);
  run_in_child([&] {
    library made;
    for (std::size_t i = 0; i < with_oclgrind; ++i) {
      const user it(made, i);
      void* const kernel = it.make_kernel();
      char text[8] = "";
      it.ask<op::get_kernel_info>({kernel, sizeof text, text, nullptr, 77, CL_KERNEL_ATTRIBUTES});
      EXPECT_STREQ(text, knows_better[i] ? "" : "garbage") << names[i];
      std::size_t size = 0;
      it.ask<op::get_kernel_info>({kernel, sizeof text, text, &size, 77, CL_KERNEL_FUNCTION_NAME});
      EXPECT_EQ(size, sizeof "plain");
      for (const cl_uint query : {CL_KERNEL_WORK_GROUP_SIZE, CL_KERNEL_PREFERRED_WORK_GROUP_SIZE_MULTIPLE}) {
        const qv::get_object_device_info_record group{it.device, kernel, sizeof size, &size,
                                                      nullptr,   77,     query};
        fail_call(op::get_kernel_work_group_info, 1, CL_OUT_OF_RESOURCES);
        EXPECT_EQ(it.ask<op::get_kernel_work_group_info>(group).status, CL_OUT_OF_RESOURCES) << names[i];
        it.ask<op::get_kernel_work_group_info>(group);
        EXPECT_EQ(size, i == rusticl && query == CL_KERNEL_WORK_GROUP_SIZE ? 1024u : 32u) << names[i];
      }
      it.release<op::release_kernel>(kernel);
    }
  });
}

} // namespace
} // namespace capability_test
