// Every command under every capability: from its literal number, and its arguments at literal offsets, to the
// OpenCL function with the arguments in the order of that function's prototype.
#include "capability/dispatch.h"
#include "capability/kernels.h"
#include "capability/queues.h"
#include "tests/capability/recording_opencl.h"

#include <array>
#include <cstring>
#include <gtest/gtest.h>

namespace capability_test {
namespace {

// What stands at an offset of a record: 8 bytes that go to OpenCL as they are, 4 such bytes, or an object of the library's
// own, for which OpenCL's goes there. No event is waited for, and where OpenCL writes to is in part a place of the library's.
enum class field_kind { wide, narrow, queue, program, kernel, event, no_event_count, no_events, own_place };
struct field {
  int offset;
  field_kind kind;
};
constexpr field operator""_(unsigned long long offset) {
  return {static_cast<int>(offset), field_kind::wide};
}
constexpr field operator""_n(unsigned long long offset) {
  return {static_cast<int>(offset), field_kind::narrow};
}
constexpr field queue_at(int offset) {
  return {offset, field_kind::queue};
}
constexpr field program_at(int offset) {
  return {offset, field_kind::program};
}
constexpr field kernel_at(int offset) {
  return {offset, field_kind::kernel};
}
constexpr field event_at(int offset) {
  return {offset, field_kind::event};
}
constexpr field no_events_at(int offset) {
  return {offset, field_kind::no_events};
}
constexpr field no_event_count_at(int offset) {
  return {offset, field_kind::no_event_count};
}
constexpr field own_place_at(int offset) {
  return {offset, field_kind::own_place};
}

struct wire_row {
  const void* function;                 // null: OpenCL is not called
  std::array<std::uint64_t, 6> numbers; // 0: not under that capability
  std::vector<field> arguments;         // a pointer for the status may follow them
  int status;
  int result = -1;
};

// clang-format off
const wire_row wire_rows[] = {
    {id<&cl::build_program>, {1, 1, 1, 1, 1, 1}, {program_at(0), 44_n, 8_, 16_, own_place_at(24), own_place_at(32)}, 40},
    {id<&cl::create_buffer>, {2, 2, 3, 3, 3, 3}, {8_, 0_, 16_, 24_}, 40, 32},
    {id<&cl::create_command_queue>, {3, 3, 4, 0, 0, 0}, {0_, 8_, 16_}, 24, 32},
    {id<&cl::create_command_queue_with_properties>, {0, 0, 0, 4, 4, 4}, {8_, 0_, 16_}, 32, 24},
    {id<&cl::create_context>, {4, 4, 5, 5, 5, 5}, {0_, 8_n, 16_, 24_, 32_}, 48, 40},
    {id<&cl::create_kernels_in_program>, {8, 8, 0, 0, 0, 0}, {program_at(0), 28_n, 8_, own_place_at(16)}, 24},
    {id<&cl::create_kernel>, {9, 9, 9, 9, 9, 9}, {program_at(0), 8_}, 24, 16},
    {id<&cl::create_program_with_binary>, {10, 10, 10, 11, 11, 11}, {0_, 52_n, 8_, 16_, 24_, 32_}, 48, 40},
    {id<&cl::create_program_with_builtin_kernels>, {0, 0, 11, 12, 12, 12}, {0_, 36_n, 8_, 16_}, 32, 24},
    {id<&cl::create_program_with_source>, {11, 11, 12, 13, 13, 13}, {0_, 36_n, 8_, 16_}, 32, 24},
    {id<&cl::create_program_with_il>, {0, 0, 0, 0, 95, 95}, {0_, 8_, 16_}, 32, 24},
    {id<&cl::enqueue_copy_buffer>, {14, 16, 18, 19, 19, 19}, {queue_at(0), 8_, 16_, 24_, 32_, 40_, no_event_count_at(68), no_events_at(48), own_place_at(56)}, 64},
    {id<&cl::enqueue_fill_buffer>, {0, 0, 23, 24, 24, 24}, {queue_at(0), 8_, 16_, 24_, 32_, 40_, no_event_count_at(68), no_events_at(48), own_place_at(56)}, 64},
    {id<&cl::enqueue_nd_range_kernel>, {22, 25, 30, 31, 31, 31}, {queue_at(0), kernel_at(8), 60_n, 16_, 24_, 32_, no_event_count_at(64), no_events_at(40), own_place_at(48)}, 56},
    {id<&cl::enqueue_read_buffer>, {23, 26, 31, 32, 32, 32}, {queue_at(0), 8_, 60_n, 16_, 24_, 32_, no_event_count_at(64), no_events_at(40), own_place_at(48)}, 56},
    {id<&cl::enqueue_write_buffer>, {28, 32, 36, 41, 41, 41}, {queue_at(0), 8_, 60_n, 16_, 24_, 32_, no_event_count_at(64), no_events_at(40), own_place_at(48)}, 56},
    {id<&cl::finish>, {30, 35, 39, 44, 44, 44}, {queue_at(0)}, 8},
    {id<&cl::get_context_info>, {34, 39, 43, 48, 48, 48}, {0_, 8_n, 16_, 24_, 32_}, 40},
    {id<&cl::get_device_info>, {36, 41, 45, 50, 50, 50}, {0_, 24_n, 32_, 8_, 16_}, 40},
    {id<&cl::get_event_info>, {37, 42, 46, 51, 51, 51}, {event_at(0), 36_n, 8_, 16_, 24_}, 32},
    {id<&cl::get_event_profiling_info>, {38, 43, 47, 52, 52, 52}, {event_at(0), 36_n, 8_, 16_, 24_}, 32},
    {id<&cl::get_extension_function_address>, {0, 0, 48, 53, 0, 0}, {0_, 8_}, -1, 16},
    {id<&cl::get_kernel_info>, {41, 46, 51, 56, 56, 56}, {kernel_at(0), 36_n, 8_, 16_, 24_}, 32},
    {id<&cl::get_kernel_work_group_info>, {42, 47, 52, 57, 57, 57}, {kernel_at(8), 0_, 44_n, 16_, 24_, 32_}, 40},
    {id<&cl::get_program_build_info>, {45, 50, 55, 61, 61, 61}, {program_at(8), 0_, 44_n, 16_, 24_, 32_}, 40},
    {id<&cl::get_program_info>, {46, 51, 56, 62, 62, 62}, {program_at(0), 36_n, 8_, 16_, 24_}, 32},
    {id<&cl::release_command_queue>, {49, 54, 60, 66, 66, 66}, {queue_at(0)}, 8},
    {id<&cl::release_context>, {50, 55, 61, 67, 67, 67}, {0_}, 8},
    {nullptr, {0, 0, 62, 68, 68, 68}, {0_}, 8},
    {id<&cl::release_event>, {51, 56, 63, 69, 69, 69}, {event_at(0)}, 8},
    {id<&cl::release_kernel>, {52, 57, 64, 70, 70, 70}, {kernel_at(0)}, 8},
    {id<&cl::release_mem_object>, {53, 58, 65, 71, 71, 71}, {0_}, 8},
    {id<&cl::release_program>, {54, 59, 66, 72, 72, 72}, {program_at(0)}, 8},
    {nullptr, {0, 0, 70, 76, 76, 76}, {0_}, 8},
    {nullptr, {57, 62, 69, 75, 75, 75}, {program_at(0)}, 8}, // retaining, of a context too,
    {nullptr, {58, 63, 71, 77, 77, 77}, {event_at(0)}, 8},   // is
    {nullptr, {61, 66, 74, 80, 80, 80}, {program_at(0)}, 8}, // the library's own
    {id<&cl::set_kernel_arg>, {63, 69, 77, 83, 83, 83}, {kernel_at(0), 28_n, 8_, 16_}, 24},
    {id<&cl::set_program_specialization_constant>, {0, 0, 0, 0, 0, 99}, {program_at(0), 8_n, 16_, 24_}, 32},
};
// clang-format on

using record_bytes = std::array<unsigned char, 80>;

template <typename T>
T at(const record_bytes& record, int offset) {
  T value;
  std::memcpy(&value, record.data() + offset, sizeof(T));
  return value;
}

// What a pointer of a record may lead to: numbers none of which is zero, but the last, which end a property
// list.
constexpr std::array<std::uint64_t, 18> any_numbers{1,  2,  3,  4,  5,  6,  7,  8, 9,
                                                    10, 11, 12, 13, 14, 15, 16, 0, 0};

// What OpenCL has made, if the command gives out an object of the library's around it.
std::uint64_t made_by_opencl(const void* function, std::uint64_t result) {
  auto* const object = reinterpret_cast<void*>(result);
  if (function == id<&cl::create_command_queue> || function == id<&cl::create_command_queue_with_properties>)
    return as_number(static_cast<qv::queue_object*>(object)->queue());
  if (function == id<&cl::create_kernel>)
    return as_number(static_cast<qv::kernel_object*>(object)->kernel());
  for (const void* each : {id<&cl::create_program_with_binary>, id<&cl::create_program_with_builtin_kernels>,
                           id<&cl::create_program_with_il>, id<&cl::create_program_with_source>})
    if (function == each)
      return as_number(static_cast<qv::program_object*>(object)->program());
  return result;
}

TEST(wire, brings_every_command_with_its_arguments_to_opencl) {
  qv::root_device device;
  device.cl = recording_functions();
  for (std::uint32_t capability = 1; capability <= 6; ++capability)
    for (const wire_row& row : wire_rows) {
      if (row.numbers[capability - 1] == 0)
        continue;
      SCOPED_TRACE(::testing::Message() << row.numbers[capability - 1] << " under " << capability);
      const own_objects own(device);
      record_bytes record;
      record.fill(0xEE); // whoever calls clears nothing
      std::vector<std::uint64_t> expected;
      std::vector<std::size_t> places;
      auto pointed_to = any_numbers;
      std::uint32_t small = 0;
      for (const field& one : row.arguments) {
        std::uint64_t sent = as_number(&pointed_to[expected.size()]);
        std::uint64_t arrives = as_number(&made_object);
        switch (one.kind) {
        case field_kind::narrow:
          sent = arrives = ++small;
          break;
        case field_kind::no_event_count:
        case field_kind::no_events:
          sent = arrives = 0;
          break;
        case field_kind::queue:
          sent = as_number(own.queue);
          break;
        case field_kind::program:
          sent = as_number(own.program);
          break;
        case field_kind::kernel:
          sent = as_number(own.kernel);
          break;
        case field_kind::event:
          sent = as_number(own.event);
          break;
        case field_kind::own_place:
          places.push_back(expected.size());
          break;
        case field_kind::wide:
          arrives = sent;
        }
        const bool is_narrow = one.kind == field_kind::narrow || one.kind == field_kind::no_event_count;
        std::memcpy(record.data() + one.offset, &sent, is_narrow ? 4 : 8);
        expected.push_back(arrives);
      }
      calls.clear();
      ASSERT_EQ(qv::call_command({&device, &qv::commands_of_capability(capability)},
                                 row.numbers[capability - 1], record.data()),
                QV_OK);
      ASSERT_EQ(calls.empty(), row.function == nullptr);
      if (row.status >= 0) {
        EXPECT_EQ(at<std::int32_t>(record, row.status), CL_SUCCESS);
      }
      if (calls.empty())
        continue;
      EXPECT_EQ(calls[0].function, row.function);
      calls[0].arguments.resize(expected.size());
      for (const std::size_t place : places) {
        EXPECT_NE(calls[0].arguments[place], 0u);
        calls[0].arguments[place] = expected[place];
      }
      EXPECT_EQ(calls[0].arguments, expected);
      if (row.result >= 0) {
        EXPECT_EQ(made_by_opencl(row.function, at<std::uint64_t>(record, row.result)),
                  as_number(&made_object));
      }
    }
}

TEST(wire, has_no_other_command_but_that_for_the_device) {
  const std::array<std::uint64_t, 6> device_of_handle{32, 37, 41, 46, 46, 46};
  qv::root_device device;
  device.cl = recording_functions();
  device.id = reinterpret_cast<cl_device_id>(0x1D);
  for (std::uint32_t capability = 1; capability <= 6; ++capability)
    for (std::uint64_t number = 0; number < 200; ++number) {
      bool known = false;
      for (const wire_row& row : wire_rows)
        known = known || (number != 0 && row.numbers[capability - 1] == number);
      if (known)
        continue;
      record_bytes record;
      record.fill(0);
      const bool is_device = number == device_of_handle[capability - 1];
      EXPECT_EQ(qv::call_command({&device, &qv::commands_of_capability(capability)}, number, record.data()),
                is_device ? QV_OK : QV_INVALID_COMMAND_ID)
          << number << " under " << capability;
      EXPECT_EQ(at<std::uint64_t>(record, 0), is_device ? 0x1Du : 0u);
    }
}

} // namespace
} // namespace capability_test
