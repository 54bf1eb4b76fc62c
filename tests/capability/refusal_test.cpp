// What would end the process in one implementation or another, and is refused before it gets there; and that
// what is valid passes everywhere.
#include "tests/capability/recording_opencl.h"

#include <cstring>
#include <tuple>

namespace capability_test {
namespace {

constexpr const char* pocl = "Portable Computing Language";
constexpr const char* oclgrind = "Oclgrind";
constexpr const char* rusticl = "rusticl";
constexpr const char* clover = "Clover";
constexpr const char* implementations[] = {pocl, oclgrind, rusticl, clover, "another"};

qv::root_device device_of(const char* implementation) {
  qv::root_device device;
  device.cl = recording_functions();
  device.quirks = qv::quirks_of_platform(implementation);
  return device;
}

cl_int build(const char* implementation, const char* options) {
  qv::program_object program(nullptr, false);
  qv::build_program_record record{};
  record.program = &program;
  record.options = options;
  return status_of<qv::operation::build_program>(device_of(implementation), record);
}

TEST(refusal, of_build_options_that_end_the_process) {
  for (const char* implementation : implementations)
    for (const char* valid :
         {"", "  ", "-w", "-DSIZE=4 -cl-mad-enable", "-D SIZE", "-D SIZE=4 -I /tmp", "-I \"/tmp/a b\" -w",
          "-D \"TEXT=a b\"", "-x spir -spir-std=1.2", "-I /tmp/\xC3\xA9\xE2\x82\xAC", "-cl-std=CL1.2 -Werror",
          "-D-", "-U SIZE", "-include file"})
      EXPECT_EQ(build(implementation, valid), CL_SUCCESS) << implementation << " " << valid;
  EXPECT_EQ(build(pocl, nullptr), CL_SUCCESS);

  struct row {
    const char* options;
    bool by_pocl, by_oclgrind_and_clover, by_rusticl;
  };
  for (const auto& [options, by_pocl, by_oclgrind_and_clover, by_rusticl] :
       {row{"-D", true, false, false},
        row{"-w -I", true, false, false},
        row{" -D  ", true, false, false},
        row{"-DD", false, false, false},
        row{"\"", false, true, true},
        row{"-DX=\"", false, true, true},
        row{"'", false, true, true},
        row{"file.cl", false, true, true},
        row{"-w word", false, true, true},
        row{"-", false, true, true},
        row{"@file", false, true, true},
        row{"\\", false, true, true},
        row{"-s word", false, true, true},
        row{"-D A word", false, true, true},
        row{"-DX='a b'", false, true, true},
        row{"-D A", false, false, true},
        row{"-DX=\"1\"", false, false, true},
        row{"-DX=\xFF", false, false, true},
        row{"-DX=\xC0\x80", false, false, true},
        row{"-DX=\xED\xA0\x80", false, false, true},
        row{"-DX=\xE2\x82", false, false, true}}) {
    const auto expected = [](bool refused) { return refused ? CL_INVALID_BUILD_OPTIONS : CL_SUCCESS; };
    EXPECT_EQ(build(pocl, options), expected(by_pocl)) << options;
    EXPECT_EQ(build(oclgrind, options), expected(by_oclgrind_and_clover)) << options;
    EXPECT_EQ(build(clover, options), expected(by_oclgrind_and_clover)) << options;
    EXPECT_EQ(build(rusticl, options), expected(by_rusticl)) << options;
    EXPECT_EQ(build("another", options), CL_SUCCESS) << options;
  }
}

TEST(refusal, of_names_that_are_no_utf8) {
  for (const char* implementation : implementations)
    EXPECT_EQ(status_of<qv::operation::create_kernel>(
                  device_of(implementation), {new qv::program_object(nullptr, false), "\xFF", nullptr, 7}),
              implementation == rusticl ? CL_INVALID_KERNEL_NAME : CL_SUCCESS);
}

TEST(refusal, of_more_groups_than_can_be_counted) {
  constexpr std::size_t giga = 1024 * 1024 * 1024;
  struct row {
    cl_uint dimensions;
    std::array<std::size_t, 3> global, local; // local 0: the device chooses, at most 64
    std::string_view refused_by;              // by letters
  };
  for (const row& launch :
       {row{1, {4 * giga - 1, 0, 0}, {1, 0, 0}, ""}, row{1, {4 * giga, 0, 0}, {1, 0, 0}, "Grb"},
        row{1, {8 * giga, 0, 0}, {2, 0, 0}, "Grb"}, row{1, {8 * giga - 1, 0, 0}, {2, 0, 0}, "Grb"},
        row{1, {8 * giga - 2, 0, 0}, {2, 0, 0}, "rb"}, row{2, {giga, 4, 0}, {1, 1, 0}, "Gb"},
        row{3, {giga, giga, giga}, {1, 1, 1}, "Gb"}, row{2, {4 * giga, 4 * giga, 9}, {1, 1, 0}, "Grb"},
        row{1, {4 * giga * 64, 0, 0}, {0, 0, 0}, "Grb"}, row{2, {0, ~std::size_t{0}, 0}, {1, 1, 0}, "rb"}}) {
    qv::enqueue_nd_range_kernel_record record{};
    record.work_dim = launch.dimensions;
    record.global_work_size = launch.global.data();
    record.local_work_size = launch.local.data();
    for (const auto& [implementation, device_name, letter] : {std::tuple{pocl, "", 'G'},
                                                              {oclgrind, "", 'G'},
                                                              {rusticl, "AMD", 'r'},
                                                              {clover, "AMD", ' '},
                                                              {rusticl, "llvmpipe (LLVM)", 'b'},
                                                              {clover, "llvmpipe (LLVM)", 'G'},
                                                              {"another", "", ' '}}) {
      qv::root_device device = device_of(implementation);
      qv::adapt_to_device(device.quirks, device_name, false);
      device.cl.get_kernel_work_group_info = [](cl_kernel, cl_device_id, cl_kernel_work_group_info,
                                                std::size_t, void* value, std::size_t*) -> cl_int {
        *static_cast<std::size_t*>(value) = 64;
        return CL_SUCCESS;
      };
      const own_objects own(device);
      record.command_queue = own.queue;
      record.kernel = own.kernel;
      const bool refused = launch.refused_by.find(letter) != std::string_view::npos;
      EXPECT_EQ(status_of<qv::operation::enqueue_nd_range_kernel>(device, record),
                refused ? CL_INVALID_GLOBAL_WORK_SIZE : CL_SUCCESS)
          << implementation << " " << device_name << " " << launch.global[0] << " in groups of "
          << launch.local[0];
    }
  }
}

TEST(refusal, of_what_is_not_there_or_has_no_end) {
  using op = qv::operation;
  const qv::root_device device = device_of("another");
  qv::create_program_with_source_record source{};
  source.count = 1;
  EXPECT_EQ(status_of<op::create_program_with_source>(device, source), CL_INVALID_VALUE);
  const char* const strings[] = {"", nullptr};
  source.strings = strings;
  EXPECT_EQ(status_of<op::create_program_with_source>(device, source), CL_SUCCESS);
  source.count = 2;
  EXPECT_EQ(status_of<op::create_program_with_source>(device, source), CL_INVALID_VALUE);
  const own_objects own(device);
  qv::enqueue_nd_range_kernel_record launch{};
  launch.command_queue = own.queue;
  launch.work_dim = 1;
  EXPECT_EQ(status_of<op::enqueue_nd_range_kernel>(device, launch), CL_INVALID_KERNEL);
  qv::enqueue_transfer_buffer_record transfer{};
  transfer.command_queue = own.queue;
  transfer.num_events_in_wait_list = 1;
  EXPECT_EQ(status_of<op::enqueue_write_buffer>(device, transfer), CL_INVALID_EVENT_WAIT_LIST);
  void* const events[] = {nullptr};
  transfer.event_wait_list = events;
  EXPECT_EQ(status_of<op::enqueue_write_buffer>(device, transfer), CL_INVALID_EVENT_WAIT_LIST);

  transfer = {};
  qv::enqueue_copy_buffer_record from{}, to{};
  qv::enqueue_fill_buffer_record fill{};
  transfer.command_queue = from.command_queue = to.command_queue = fill.command_queue = own.queue;
  transfer.offset = from.src_offset = to.dst_offset = fill.offset = ~std::size_t{3};
  for (const std::size_t size : {3, 4}) {
    const cl_int expected = size == 3 ? CL_SUCCESS : CL_INVALID_VALUE;
    transfer.size = from.size = to.size = fill.size = size;
    EXPECT_EQ(status_of<op::enqueue_read_buffer>(device, transfer), expected);
    EXPECT_EQ(status_of<op::enqueue_copy_buffer>(device, from), expected);
    EXPECT_EQ(status_of<op::enqueue_copy_buffer>(device, to), expected);
    EXPECT_EQ(status_of<op::enqueue_fill_buffer>(device, fill), expected);
  }
}

TEST(refusal, of_device_lists_with_a_device_that_is_not_there) {
  using op = qv::operation;
  const qv::root_device device = device_of("another");
  const own_objects own(device);
  void* const devices[] = {&calls, nullptr};
  const std::size_t lengths[] = {1, 1};
  constexpr unsigned char byte = 1;
  const unsigned char* const binaries[] = {&byte, &byte};
  std::int32_t binary_statuses[2];
  for (const std::uint32_t count : {1u, 2u}) {
    const cl_int expected = count == 1 ? CL_SUCCESS : CL_INVALID_DEVICE;
    EXPECT_EQ(status_of<op::create_context>(device, {nullptr, count, devices, nullptr, nullptr, nullptr, 7}),
              expected);
    EXPECT_EQ(status_of<op::build_program>(device, {own.program, devices, "", nullptr, nullptr, 7, count}),
              expected);
    EXPECT_EQ(status_of<op::create_program_with_builtin_kernels>(device,
                                                                 {nullptr, devices, "a", nullptr, 7, count}),
              expected);
    EXPECT_EQ(status_of<op::create_program_with_binary>(
                  device, {nullptr, devices, lengths, binaries, binary_statuses, nullptr, 7, count}),
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

TEST(refusal, of_modules_that_are_cut_short_or_too_new) {
  static const char* taken = nullptr; // what the device says that it takes
  qv::root_device device = device_of("another");
  device.cl.get_context_info = [](cl_context, cl_context_info, std::size_t, void* value,
                                  std::size_t* size) -> cl_int {
    *static_cast<cl_device_id*>(value) = nullptr;
    *size = sizeof(cl_device_id);
    return CL_SUCCESS;
  };
  device.cl.get_device_info = [](cl_device_id, cl_device_info, std::size_t, void* value,
                                 std::size_t* size) -> cl_int {
    *size = std::strlen(taken) + 1;
    if (value != nullptr)
      std::memcpy(value, taken, *size);
    return CL_SUCCESS;
  };
  const auto create = [&](const std::string& il) {
    return status_of<qv::operation::create_program_with_il>(device,
                                                            {nullptr, il.data(), il.size(), nullptr, 7});
  };
  // By the address that stands for the extension, too, with which this library is called last.
  qv::get_extension_function_address_for_platform_record asked{&calls, "clCreateProgramWithILKHR", nullptr};
  qv::call_command({&device, &qv::commands_of_capability(3)}, 48, &asked);
  using create_function = void* (*)(void* context, const void* il, std::size_t length, cl_int* status);
  const auto extension = reinterpret_cast<create_function>(asked.result);
  const auto create_by_extension = [&](const std::string& il) {
    cl_int status = 7;
    const bool made = extension(nullptr, il.data(), il.size(), &status) != nullptr;
    EXPECT_EQ(made, status == CL_SUCCESS);
    return status;
  };
  const auto expect_both = [&](const std::string& il, cl_int status, const char* what) {
    EXPECT_EQ(create(il), status) << il.size() << " bytes, " << what;
    EXPECT_EQ(create_by_extension(il), status) << il.size() << " bytes, " << what;
  };
  using row = std::tuple<const char*, std::uint32_t, cl_int>;
  for (const auto& [list, version, status] :
       {row{"SPIR-V_1.0", 0x00010100, -30}, row{"SPIR-V_1.2 SPIR-V_1.0 ", 0x00010200, 0},
        row{"SPIR-V_1.0 SPIR-V_1.2", 0x00010300, -30}, row{"SPIR-V_1.4", 0x00020000, -30},
        row{"SPIR-V_1.10", 0x00010900, 0}, row{"", 0x00010600, 0}, row{"SPIR-V_x.1", 0x00010600, 0}}) {
    taken = list;
    for (const bool big : {false, true})
      expect_both(module(big, version), status, list);
  }
  for (const bool big : {false, true}) {
    const std::string whole = module(big);
    // Behind the header, the one instruction before the function may be missing or the last.
    for (std::size_t length = 4; length <= whole.size(); ++length)
      expect_both(whole.substr(0, length),
                  length == 20 || length == 28 || length == whole.size() ? CL_SUCCESS : CL_INVALID_VALUE,
                  "cut");
    expect_both(whole + whole, CL_INVALID_VALUE, "twice");
    expect_both(whole + std::string(4, '\0'), CL_INVALID_VALUE, "an instruction of no words");
    expect_both(whole + whole.substr(whole.size() - 4), CL_INVALID_VALUE, "a second end");
  }
  EXPECT_EQ(create("another language"), CL_SUCCESS) << "not judged";

  asked.func_name = "clAnother";
  qv::call_command({&device, &qv::commands_of_capability(3)}, 48, &asked);
  EXPECT_EQ(as_number(asked.result), as_number(&made_object));
}

} // namespace
} // namespace capability_test
