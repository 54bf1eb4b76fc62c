// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Programs of every kind of intermediate representation, their kernels, and what the devices say about both.
#include "tests/scripted/scripted_test.h"

namespace scripted {

using namespace caller;
using op = qv::operation;

class programs : public each_version {
protected:
  outcome try_kernel(const program& in, const char* name) {
    tarva_abi_kernel_s* found = nullptr;
    outcome ended = call<tarva_abi_get_kernel>(in.get(), name, &found);
    const caller::kernel owned(found);
    return ended;
  }
};
INSTANTIATE_TEST_SUITE_P(scripted, programs, ::testing::Range(1u, version_count + 1), version_name);

TEST_P(programs, text_needs_no_zero_at_its_end_and_options_pass) {
  const std::string text = "kernel void one() {}";
  build result;
  EXPECT_EQ(load(device(version()), TARVA_ABI_IR_SOURCE_1_0, text, "-DSIZE=4 -w", result), outcome());
  EXPECT_TRUE(result.success);
  EXPECT_EQ(result.log, "-DSIZE=4 -w");
  const auto calls = take_calls();
  EXPECT_EQ(only(calls, op::create_program_with_source).at(0).text, text);
  EXPECT_EQ(only(calls, op::build_program).at(0).text, "-DSIZE=4 -w");
  EXPECT_EQ(count(calls, op::retain_device), version() < 3 || is_opencl() ? 0u : 1u)
      << "one copy, for the list of devices";
  EXPECT_EQ(try_kernel(result.made, "one"), outcome());
  EXPECT_EQ(load(device(version()), TARVA_ABI_IR_SOURCE_1_0, text, "-bad", result),
            other_failure("Build options provided are not valid."));
  EXPECT_EQ(load(device(version()), TARVA_ABI_IR_DEVICE_BINARY, "garbage", "", result),
            other_failure("Invalid program binary encountered, or incorrect binary for device."));
}

TEST_P(programs, a_failed_build_is_an_empty_program_with_a_log) {
  build result;
  EXPECT_EQ(load(device(version()), TARVA_ABI_IR_SOURCE_1_0, "#error no\n", "", result), outcome());
  EXPECT_FALSE(result.success);
  EXPECT_EQ(result.log, "error: the text says #error");
  EXPECT_EQ(try_kernel(result.made, "one"),
            logic_failure("Cannot extract a kernel from an empty program.  Kernel name: one"));
  EXPECT_EQ(child(root<tarva_abi_get_program_root_property>(result.made), "KERNEL_NAMES")->element_count, 0u);
  // So is one whose build has not begun or not ended.
  constexpr std::uint32_t build_status = 0x1181;
  const std::size_t index = device_index(version(), role::first);
  for (const std::int32_t status : {-1, -3}) {
    set_info(index, build_status, value_answer(status));
    EXPECT_EQ(load(device(version()), TARVA_ABI_IR_SOURCE_1_0, source, "", result), outcome());
    EXPECT_FALSE(result.success) << status;
  }
  set_info(index, build_status, {});
}

TEST_P(programs, modules_go_by_extension_or_by_command) {
  if (version() < 3 || is_opencl())
    GTEST_SKIP() << "no modules before 1.2; libqv knows the extensions from its start";
  constexpr std::uint32_t extensions = 0x1030, spir_versions = 0x40E0;
  const std::size_t index = device_index(version(), role::first);
  set_info(index, extensions, text_answer("cl_khr_spir cl_khr_il_program"));
  set_info(index, spir_versions, text_answer("1.2 2.0"));
  build result;
  for (const tarva_abi_ir_type spir : {TARVA_ABI_IR_SPIR_1_2, TARVA_ABI_IR_SPIR_2_0}) {
    EXPECT_EQ(load(device(version()), spir, "BC" + source, "", result), outcome());
    EXPECT_EQ(count(take_calls(), op::create_program_with_binary), 1u) << spir;
  }
  set_info(index, spir_versions, {});
  EXPECT_EQ(load(device(version()), TARVA_ABI_IR_SPIR_V, "SPV:" + source, "", result), outcome());
  const auto calls = take_calls();
  EXPECT_EQ(count(calls, op::get_extension_function_address_for_platform), version() <= 4 ? 1u : 0u);
  EXPECT_EQ(count(calls, op::create_program_with_il), version() <= 4 ? 0u : 1u);
  EXPECT_EQ(try_kernel(result.made, "sum"), outcome());
  set_info(index, extensions, text_answer("cl_khr_one"));
}

TEST_P(programs, specialisation_constants_are_for_2_2) {
  const std::uint8_t small = 5;
  const std::uint32_t yes = 0x100;
  const std::int64_t large = -2;
  tarva_abi_specialization_constant_s constants[] = {{1, TARVA_ABI_TYPE_UINT8, &small},
                                                     {2, TARVA_ABI_TYPE_BOOLEAN, &yes},
                                                     {3, TARVA_ABI_TYPE_INT64, &large}};
  tarva_abi_ir_header_s header{TARVA_ABI_IR_HEADER_SPECIALIZATION_CONSTANTS, constants, 3};
  build result;
  const std::string module = "SPV:" + source;
  EXPECT_EQ(load(device(version()), TARVA_ABI_IR_SOURCE_1_0, source, "", result, &header),
            logic_failure("Expected the IR header to be empty."));
  if (version() < 6)
    return;
  EXPECT_EQ(load(device(version()), TARVA_ABI_IR_SPIR_V, module, "", result, &header), outcome());
  auto calls = take_calls();
  std::erase_if(calls, [](const call_record& one) {
    return one.operation != op::set_program_specialization_constant && one.operation != op::build_program;
  });
  ASSERT_EQ(calls.size(), 4u);
  EXPECT_EQ(calls[0].data, bytes{5});
  EXPECT_EQ(calls[1].data, bytes{1});
  EXPECT_EQ(calls[2].data, value_answer(large));
  EXPECT_EQ(calls[2].as<op::set_program_specialization_constant>().spec_id, 3u);
  EXPECT_EQ(calls[3].operation, op::build_program);

  constants[0].id = std::uint64_t{1} << 32;
  EXPECT_EQ(load(device(version()), TARVA_ABI_IR_SPIR_V, module, "", result, &header),
            logic_failure(
                "SPIR-V specialization constant id 4294967296 is not representable in 32-bits for OpenCL."));
}

} // namespace scripted
