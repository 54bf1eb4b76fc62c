// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What a device takes as a program, what it makes of its built-in kernels, and how far a launch of its kernels may
// go.
#include "tests/scripted/scripted_test.h"

namespace scripted {

using namespace caller;
using op = qv::operation;

namespace {

constexpr std::uint32_t type_query = 0x1000, address_bits_query = 0x100D, extensions_query = 0x1030,
                        spir_versions_query = 0x40E0;

using sizes = std::vector<std::uint64_t>;

class program_support : public each_version {
protected:
  void TearDown() override {
    set(type_query, value_answer(std::uint64_t{4}));
    set(address_bits_query, value_answer(std::uint32_t{64}));
    set(extensions_query, text_answer("cl_khr_one"));
    set(spir_versions_query, text_answer("1.2"));
    each_version::TearDown();
  }
  void set(std::uint32_t parameter, const bytes& answer) {
    set_info(device_index(version(), role::first), parameter, answer);
  }
  outcome ask(int type, std::uint64_t& answer, tarva_abi_ir_header_s* header = nullptr) {
    return call<tarva_abi_check_device_ir_support>(device(version()).get(), header, std::uint64_t(type),
                                                   nullptr, std::uint64_t{0}, "", &answer);
  }
  // The types that are taken, one digit each.
  std::string supported() {
    std::string types;
    for (int type = 1; type <= 9; ++type) {
      std::uint64_t answer = 7;
      EXPECT_EQ(ask(type, answer), outcome());
      EXPECT_LE(answer, 1u);
      if (answer == 1)
        types += std::to_string(type);
    }
    return types;
  }
  program builtin(role of) {
    tarva_abi_program_s* handle = nullptr;
    must(call<tarva_abi_get_builtin_program>(device(version(), of).get(), &handle));
    return program(handle);
  }
  // The limit of its global size, and how the question ended.
  static std::pair<sizes, outcome> limit_of(const caller::kernel& of) {
    tarva_abi_property_s* found = nullptr;
    const auto properties = root<tarva_abi_get_kernel_root_property>(of);
    const outcome ended =
        call<tarva_abi_get_child_property_by_name>(properties.get(), "MAX_GLOBAL_WORK_SIZE", &found);
    const property owned(found);
    const auto* const data = found ? static_cast<const std::uint64_t*>(found->data) : nullptr;
    return {found ? sizes(data, data + found->element_count) : sizes(), ended};
  }
};
INSTANTIATE_TEST_SUITE_P(scripted, program_support, ::testing::Range(1u, version_count + 1), version_name);

} // namespace

TEST_P(program_support, depends_on_version_extensions_and_spir_versions) {
  struct row {
    const char *extensions, *spir_versions;
    std::array<const char*, 6> types; // of 1.0, 1.1, 1.2, 2.0, 2.1, and from 2.2 on
  };
  const row rows[] = {
      {"", "1.2 2.0", {"19", "129", "1239", "12349", "1234589", "1234589"}},
      {"cl_khr_spir", "1.2", {"19", "129", "12369", "123469", "12345689", "12345689"}},
      {"cl_khr_spir", "2.0", {"19", "129", "12379", "123479", "12345789", "12345789"}},
      {"cl_khr_one\tCL_KHR_SPIR ",
       " 2.0  1.2\n",
       {"19", "129", "123679", "1234679", "123456789", "123456789"}},
      {"cl_khr_spir", "1.20 2.00 1.2x", {"19", "129", "1239", "12349", "1234589", "1234589"}},
      {"cl_khr_il_program", "1.2", {"19", "129", "12389", "123489", "1234589", "1234589"}},
      {"cl_khr", "2.0", {"19", "129", "123789", "1234789", "12345789", "12345789"}},
      {"cl_khr_spir_more xcl_khr_spir cl_khr_il_programs",
       "1.2",
       {"19", "129", "1239", "12349", "1234589", "1234589"}},
  };
  for (const row& one : rows) {
    set(extensions_query, text_answer(one.extensions));
    set(spir_versions_query, text_answer(one.spir_versions));
    EXPECT_EQ(supported(), one.types[std::min(std::size_t{version()}, one.types.size()) - 1])
        << one.extensions << ": " << one.spir_versions;
  }
  build unused;
  EXPECT_EQ(load(device(version()), version() < 3 ? 3 : 7, "BC", "", unused),
            logic_failure("IR is not supported by the device."));
}

TEST_P(program_support, depends_on_the_header_before_all_else) {
  for (int type = 1; type <= 9; ++type) {
    tarva_abi_ir_header_s header{TARVA_ABI_IR_HEADER_SPECIALIZATION_CONSTANTS, nullptr, 0},
        empty{TARVA_ABI_IR_HEADER_EMPTY, nullptr, 99};
    std::uint64_t answer = 7;
    const bool takes = version() >= 6 && type == TARVA_ABI_IR_SPIR_V;
    EXPECT_EQ(ask(type, answer, &header),
              takes ? outcome() : logic_failure("Expected the IR header to be empty."));
    EXPECT_EQ(answer == 1, takes) << type;
    EXPECT_EQ(ask(type, answer, &empty), outcome());
  }
}

TEST_P(program_support, includes_built_in_kernels_from_1_2) {
  const program none = builtin(role::first), two = builtin(role::second);
  const auto names = [](const program& of) {
    return child(root<tarva_abi_get_program_root_property>(of), "KERNEL_NAMES");
  };
  EXPECT_EQ(names(none)->element_count, 0u);
  tarva_abi_kernel_s* unused = nullptr;
  EXPECT_EQ(call<tarva_abi_get_kernel>(none.get(), "sort_all", &unused),
            logic_failure("Cannot extract a kernel from an empty program.  Kernel name: sort_all"));
  if (version() < 3) {
    EXPECT_EQ(names(two)->element_count, 0u);
    return;
  }
  EXPECT_EQ(child(root<tarva_abi_get_program_root_property>(two), "USER_LABEL")->element_count, 1u);
  EXPECT_EQ(call<tarva_abi_get_kernel>(two.get(), "missing", &unused),
            other_failure("Kernel name not found in the program."));
  const auto sort = find_kernel(two, "sort_all");
  EXPECT_EQ(limit_of(sort), std::pair(sizes{1024, 512, 256}, outcome()));
  const memory numbers = make(counted(4));
  EXPECT_EQ(launch(sort, {argument(numbers)}, line(4)), outcome());
}

TEST_P(program_support, bounds_the_global_size_by_addresses_or_by_the_kernel) {
  const auto add = kernel(version(), "add");
  constexpr std::uint64_t cpu = 2, custom = 16;
  constexpr std::uint64_t small = 0xFFFFFFFF, large = ~std::uint64_t{0};
  struct row {
    std::uint64_t type;
    std::uint32_t bits;
    sizes expected;
  };
  const sizes of_custom = version() < 3 ? sizes{large, large, large} : sizes{1024, 512, 256};
  for (const row& one : {row{cpu, 64, {large, large, large}}, row{cpu, 32, {small, small, small}},
                         row{cpu | custom, 32, {small, small, small}}, row{custom, 64, of_custom}}) {
    set(type_query, value_answer(one.type));
    set(address_bits_query, value_answer(one.bits));
    EXPECT_EQ(limit_of(add), std::pair(one.expected, outcome())) << one.type << ", " << one.bits;
  }
  set(type_query, value_answer(cpu));
  set(address_bits_query, value_answer(std::uint32_t{16}));
  EXPECT_EQ(
      limit_of(add).second,
      runtime_failure("Expected the number of address bits for the device to be 32 or 64, but read 16"));
}

TEST_P(program_support, finds_limits_again_that_could_not_be_read) {
  constexpr std::uint64_t group = 256;
  const program made = compile(device(version()), source);
  const memory numbers = make(counted(8));
  const std::int32_t amount = 0;
  const auto launch_too_large = [&](const caller::kernel& on) {
    return launch(on, {argument(numbers), argument(amount)}, line(4 * group, 2 * group));
  };
  // The failure of the moment falls on the making of the kernel, which bears it; the next lasts until the launch.
  fail_call(op::get_kernel_work_group_info, 1, -5);
  const auto first = find_kernel(made, "add");
  EXPECT_EQ(launch_too_large(first).code, TARVA_ABI_LOGIC_FAILURE) << "the limit is known by then";
  fail_transport(op::get_kernel_work_group_info, 1, -1);
  const auto second = find_kernel(made, "add");
  fail_call(op::get_kernel_work_group_info, 1, -6);
  EXPECT_EQ(launch_too_large(second), other_failure("Failed to allocate memory on the host."));
  EXPECT_EQ(launch(second, {argument(numbers), argument(amount)}, line(8)), outcome());
  EXPECT_EQ(launch_too_large(second).code, TARVA_ABI_LOGIC_FAILURE);
}

} // namespace scripted
