// The wire format as any capability library has to know it, in literal numbers: those of the commands under each
// capability, and where a record ends and has its outputs.
#include "capability/commands.h"

#include <gtest/gtest.h>

namespace {

using op = qv::operation;

template <op Op>
void expect_command(const std::array<int, 6>& numbers, std::size_t size, std::size_t status = 0,
                    std::size_t output = 0) {
  using record = qv::record<Op>;
  SCOPED_TRACE(static_cast<int>(Op));
  for (std::uint32_t capability = 1; capability <= 6; ++capability)
    EXPECT_EQ(qv::command_number(Op, capability), static_cast<std::uint64_t>(numbers[capability - 1]));
  EXPECT_EQ(sizeof(record), size);
  if constexpr (requires(record fields) { fields.status; }) {
    EXPECT_EQ(offsetof(record, status), status);
  }
  if constexpr (requires(record fields) { fields.result; }) {
    EXPECT_EQ(offsetof(record, result), output);
  }
  if constexpr (requires(record fields) { fields.event; }) {
    EXPECT_EQ(offsetof(record, event), output);
  }
}

TEST(wire, commands_have_their_numbers_and_records_their_places) {
  expect_command<op::build_program>({1, 1, 1, 1, 1, 1}, 48, 40);
  expect_command<op::create_buffer>({2, 2, 3, 3, 3, 3}, 48, 40, 32);
  expect_command<op::create_command_queue>({3, 3, 4, 0, 0, 0}, 40, 24, 32);
  expect_command<op::create_command_queue_with_properties>({0, 0, 0, 4, 4, 4}, 40, 32, 24);
  expect_command<op::create_context>({4, 4, 5, 5, 5, 5}, 56, 48, 40);
  expect_command<op::create_kernels_in_program>({8, 8, 0, 0, 0, 0}, 32, 24);
  expect_command<op::create_kernel>({9, 9, 9, 9, 9, 9}, 32, 24, 16);
  expect_command<op::create_program_with_binary>({10, 10, 10, 11, 11, 11}, 56, 48, 40);
  expect_command<op::create_program_with_builtin_kernels>({0, 0, 11, 12, 12, 12}, 40, 32, 24);
  expect_command<op::create_program_with_source>({11, 11, 12, 13, 13, 13}, 40, 32, 24);
  expect_command<op::create_program_with_il>({0, 0, 0, 0, 95, 95}, 40, 32, 24);
  expect_command<op::enqueue_copy_buffer>({14, 16, 18, 19, 19, 19}, 72, 64, 56);
  expect_command<op::enqueue_fill_buffer>({0, 0, 23, 24, 24, 24}, 72, 64, 56);
  expect_command<op::enqueue_nd_range_kernel>({22, 25, 30, 31, 31, 31}, 72, 56, 48);
  expect_command<op::enqueue_read_buffer>({23, 26, 31, 32, 32, 32}, 72, 56, 48);
  expect_command<op::enqueue_write_buffer>({28, 32, 36, 41, 41, 41}, 72, 56, 48);
  expect_command<op::finish>({30, 35, 39, 44, 44, 44}, 16, 8);
  expect_command<op::device_of_handle>({32, 37, 41, 46, 46, 46}, 8);
  expect_command<op::get_context_info>({34, 39, 43, 48, 48, 48}, 48, 40);
  expect_command<op::get_device_info>({36, 41, 45, 50, 50, 50}, 48, 40);
  expect_command<op::get_event_info>({37, 42, 46, 51, 51, 51}, 40, 32);
  expect_command<op::get_event_profiling_info>({38, 43, 47, 52, 52, 52}, 40, 32);
  expect_command<op::get_extension_function_address_for_platform>({0, 0, 48, 53, 0, 0}, 24, 0, 16);
  expect_command<op::get_kernel_info>({41, 46, 51, 56, 56, 56}, 40, 32);
  expect_command<op::get_kernel_work_group_info>({42, 47, 52, 57, 57, 57}, 48, 40);
  expect_command<op::get_program_build_info>({45, 50, 55, 61, 61, 61}, 48, 40);
  expect_command<op::get_program_info>({46, 51, 56, 62, 62, 62}, 40, 32);
  expect_command<op::release_command_queue>({49, 54, 60, 66, 66, 66}, 16, 8);
  expect_command<op::release_context>({50, 55, 61, 67, 67, 67}, 16, 8);
  expect_command<op::release_device>({0, 0, 62, 68, 68, 68}, 16, 8);
  expect_command<op::release_event>({51, 56, 63, 69, 69, 69}, 16, 8);
  expect_command<op::release_kernel>({52, 57, 64, 70, 70, 70}, 16, 8);
  expect_command<op::release_mem_object>({53, 58, 65, 71, 71, 71}, 16, 8);
  expect_command<op::release_program>({54, 59, 66, 72, 72, 72}, 16, 8);
  expect_command<op::retain_context>({57, 62, 69, 75, 75, 75}, 16, 8);
  expect_command<op::retain_device>({0, 0, 70, 76, 76, 76}, 16, 8);
  expect_command<op::retain_event>({58, 63, 71, 77, 77, 77}, 16, 8);
  expect_command<op::retain_program>({61, 66, 74, 80, 80, 80}, 16, 8);
  expect_command<op::set_kernel_arg>({63, 69, 77, 83, 83, 83}, 32, 24);
  expect_command<op::set_program_specialization_constant>({0, 0, 0, 0, 0, 99}, 40, 32);
}

} // namespace
