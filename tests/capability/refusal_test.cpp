// What would end the process in one implementation or another, and is refused before it gets there; and that
// what is valid passes everywhere.
#include "tests/capability/library.h"

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
  use(plain_device());
  library made;
  const user it(made);
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
    if (status == 0) {
      EXPECT_EQ(calls[0].as<op::enqueue_nd_range_kernel>().local_work_size != nullptr, given);
    }
    it.release<op::release_event>(event);
  }
  it.release<op::release_kernel>(kernel);
}

TEST_F(refusal, of_what_is_not_there_or_has_no_end) {
  use(plain_device());
  library made;
  const user it(made);
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
  use(plain_device());
  library made;
  const user it(made);
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

// The words of a module with one function; `big` turns the bytes of each round.
std::string module(bool big, std::uint32_t version = 0x00010000) {
  std::string bytes;
  for (std::uint32_t word : {0x07230203u, version, 0u, 9u, 0u, 2u << 16 | 17u, 6u, 5u << 16 | 54u, 1u, 2u, 0u,
                             3u, 2u << 16 | 248u, 4u, 1u << 16 | 253u, 1u << 16 | 56u}) {
    word = big ? __builtin_bswap32(word) : word;
    bytes.append(reinterpret_cast<const char*>(&word), sizeof word);
  }
  return bytes;
}

TEST_F(refusal, of_modules_that_are_cut_short_or_too_new) {
  use(plain_device());
  library made;
  const user it(made), older(made, 0, 3);
  // By the address that stands for the extension, too.
  const auto asked = older.ask<op::get_extension_function_address_for_platform>(
      {it.device, "clCreateProgramWithILKHR", nullptr});
  const auto by_extension =
      reinterpret_cast<void* (*)(void* context, const void* il, std::size_t length, cl_int* status)>(
          asked.result);
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
    for (const bool big : {false, true})
      expect(module(big, version), status, list);
  }
  for (const bool big : {false, true}) {
    const std::string whole = module(big);
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

// A little-endian number, as binaries have it.
template <class Number>
std::string number(Number value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

// A kernel of PoCL's, with one file.
std::string pocl_kernel(const std::string& name) {
  const std::string file = number(2u) + "/k" + number(3u) + "abc";
  const std::string told = number(std::uint64_t{file.size()}) + number(7u) +
                           number(std::uint32_t(name.size())) + name + std::string(40, 'i');
  return number(std::uint64_t{8 + told.size() + file.size()}) + told + file;
}

std::string pocl_binary(std::uint32_t version, const std::string& second = "second") {
  const std::string file = number(2u) + "/p" + number(3u) + "abc";
  const std::string files = number(std::uint64_t{file.size()}) + file;
  const std::string front = std::string("poclbin\0", 8) + number(std::uint64_t{1}) + number(version) +
                            number(2u) + number(std::uint64_t{2});
  const std::string hash(41, 'h');
  const std::string kernels = pocl_kernel("first") + pocl_kernel(second);
  if (version < 9)
    return front + hash + file + kernels;
  return front + number(2u) + hash + (version < 10 ? "" : number(std::uint64_t{64})) + files + files +
         kernels;
}

TEST_F(refusal, of_binaries_that_are_cut_short_or_of_another_kind) {
  const std::string bitcode = "BC\xc0\xde, some bitcode";
  const std::string of_rusticl = number(1u) + number(8u) + number(4u) + number(0x07230203u) + number(0u);
  const std::string of_newer_rusticl = "rusticl" + std::string(1, 0) + number(1u) + number(3u) + number(8u) +
                                       number(4u) + "dev" + number(0x07230203u) + number(0u);
  const std::string of_clover = number(1u) + number(2u) + "k1" + number(1u) + "a" + number(1u) +
                                number(std::uint64_t{4}) + number(std::uint64_t{0}) + number(2u) +
                                std::string(48, 'a') + number(1u) + std::string(12, 's') + number(3u) +
                                "abc" + number(1u) + number(1u) + number(4u) + number(2u) + "%d" + number(0u);
  const auto is_refused = [](const user& by, const std::string& binary) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(binary.data());
    const std::size_t length = binary.size();
    std::int32_t binary_status = 77;
    const cl_int status = by.status_of<op::create_program_with_binary>(
        {by.context, &by.device, &length, &bytes, &binary_status, nullptr, 77, 1});
    EXPECT_EQ(binary_status, status == CL_INVALID_BINARY ? status : 77);
    EXPECT_TRUE(status == CL_SUCCESS || status == (length == 0 ? CL_INVALID_VALUE : CL_INVALID_BINARY));
    return status != CL_SUCCESS;
  };
  use_implementations(without_oclgrind);
  library made;
  const user unjudged(made, another);
  for (const auto& [platform, binary] : {std::pair{pocl, pocl_binary(8)},
                                         {pocl, pocl_binary(9)},
                                         {pocl, pocl_binary(10)},
                                         {pocl, pocl_binary(11)},
                                         {rusticl, of_rusticl},
                                         {rusticl, of_newer_rusticl},
                                         {clover, of_clover}}) {
    const user by(made, platform);
    EXPECT_FALSE(is_refused(by, binary));
    EXPECT_TRUE(is_refused(by, binary + "x") && is_refused(by, ""));
    for (std::size_t length = 8; length < binary.size(); ++length) {
      EXPECT_TRUE(is_refused(by, binary.substr(0, length))) << names[platform] << " " << length;
      EXPECT_FALSE(is_refused(unjudged, binary.substr(0, length)));
    }
    EXPECT_TRUE(is_refused(by, pocl_binary(7)) && is_refused(by, pocl_binary(13)));
    EXPECT_EQ(is_refused(by, pocl_binary(9)), platform != pocl);
    EXPECT_TRUE(is_refused(by, pocl_binary(9, ""))) << "a kernel without a name";
    EXPECT_TRUE(is_refused(by, bitcode)) << "it does not say that it takes SPIR";
  }
  EXPECT_TRUE(is_refused(user(made, rusticl), number(2u) + of_rusticl.substr(4))) << "of another version";
}

TEST_F(refusal, of_bitcode_is_for_devices_that_take_no_spir) {
  for (const char* extensions : {"cl_khr_spirit", "cl_khr_spirit cl_khr_spir"}) {
    device_options device = plain_device();
    device.info[CL_DEVICE_EXTENSIONS] = text_answer(extensions);
    use(device, {names[pocl]});
    library made;
    const user by(made);
    const unsigned char* const bytes = reinterpret_cast<const unsigned char*>("BC\xc0\xde, some bitcode");
    const std::size_t length = 18;
    EXPECT_EQ(by.status_of<op::create_program_with_binary>(
                  {by.context, &by.device, &length, &bytes, nullptr, nullptr, 77, 1}) == CL_SUCCESS,
              std::string(extensions) != "cl_khr_spirit");
  }
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
      for (const cl_uint query : {CL_KERNEL_WORK_GROUP_SIZE, CL_KERNEL_PREFERRED_WORK_GROUP_SIZE_MULTIPLE}) {
        std::size_t size = 0;
        it.ask<op::get_kernel_work_group_info>({it.device, kernel, sizeof size, &size, nullptr, 77, query});
        EXPECT_EQ(size, i == rusticl && query == CL_KERNEL_WORK_GROUP_SIZE ? 1024u : 32u) << names[i];
      }
      it.release<op::release_kernel>(kernel);
    }
  });
}

} // namespace
} // namespace capability_test
