// Every kind of program on every OpenCL device that the environment offers: what a device says that it takes
// it runs, and what it does not take, or what is broken, ends in words and leaves the device as it was.
#include "tests/device/every_device.h"

#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <iterator>

namespace {

using namespace caller;

const std::string source =
    "kernel void add(global int* data, int amount) { data[get_global_id(0)] += amount; }";

// Empty if the machine lacks the compilers.
std::string module(const char* name) {
  std::ifstream file(std::string(TARVA_TEST_MODULES) + "/" + name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class program_kinds : public every_device {
protected:
  template <class Body>
  static void on_each(Body body) {
    every_device::on_each([&](const caller::device& one) {
      body(one, version_of(one));
      expect_works(one);
    });
  }
  static bool takes(const caller::device& on, std::uint64_t type) {
    std::uint64_t answer = 7;
    must(call<tarva_abi_check_device_ir_support>(on.get(), static_cast<tarva_abi_ir_header_s*>(nullptr), type,
                                                 nullptr, std::uint64_t{0}, "", &answer));
    return answer == 1;
  }
  static void expect_adds(const program& made) {
    const memory numbers = make(std::vector<std::int32_t>(16, 1));
    const std::int32_t amount = 4;
    EXPECT_EQ(launch(find_kernel(made, "add"), {argument(numbers), argument(amount)}, line(16, 4)),
              outcome());
    EXPECT_EQ(read<std::int32_t>(numbers, 16), std::vector<std::int32_t>(16, 5));
  }
  static property opencl_of(const caller::device& of) {
    return child(root<tarva_abi_get_device_root_property>(of), "OPENCL");
  }
  static void expect_works(const caller::device& on) { expect_adds(compile(on, source)); }
  static void expect_loads(const caller::device& on, std::uint64_t type, const std::string& data,
                           const char* options = "") {
    build result;
    ASSERT_EQ(load(on, type, data, options, result), outcome());
    ASSERT_TRUE(result.success) << result.log;
    expect_adds(result.made);
  }
  static void expect_loads_or_words(const caller::device& on, std::uint64_t type, const std::string& data,
                                    const char* options = "") {
    build result;
    const outcome ended = load(on, type, data, options, result);
    EXPECT_TRUE(ended.code == TARVA_ABI_OK || !ended.message.empty()) << options;
    if (ended.code == TARVA_ABI_OK && result.success)
      expect_adds(result.made);
  }
  // In one way or the other: an error object, or a program that was not built.
  static void expect_refused(const caller::device& on, std::uint64_t type, const std::string& data,
                             const char* options = "") {
    build result;
    const outcome ended = load(on, type, data, options, result);
    EXPECT_TRUE(ended.code == TARVA_ABI_OK ? !result.success : !ended.message.empty())
        << "type " << type << ", " << data.size() << " bytes, " << options;
  }
};

TEST_F(program_kinds, spir_runs_where_it_is_taken) {
  const std::string spir = module("add.bc");
  if (spir.empty())
    GTEST_SKIP() << "there is no clang to make a module";
  on_each([&](const caller::device& on, const std::string&) {
    if (takes(on, TARVA_ABI_IR_SPIR_1_2)) {
      expect_loads(on, TARVA_ABI_IR_SPIR_1_2, spir);
      expect_loads(on, TARVA_ABI_IR_SPIR_1_2, spir, "-x spir -spir-std=1.2");
    } else {
      build unused;
      EXPECT_EQ(load(on, TARVA_ABI_IR_SPIR_1_2, spir, "", unused),
                logic_failure("IR is not supported by the device."));
    }
    // Some take it for a binary of their own all the same.
    expect_loads_or_words(on, TARVA_ABI_IR_DEVICE_BINARY, spir);
    for (std::size_t length = 0; length < spir.size(); length += spir.size() / 7)
      expect_refused(on, TARVA_ABI_IR_DEVICE_BINARY, spir.substr(0, length));
  });
}

TEST_F(program_kinds, binaries_make_the_same_program_again) {
  on_each([](const caller::device& on, const std::string&) {
    const auto of_program = root<tarva_abi_get_program_root_property>(compile(on, source));
    const auto binary = child(child(of_program, "OPENCL"), "CL_PROGRAM_BINARY");
    const std::string data(static_cast<const char*>(binary->data), binary->element_count);
    expect_loads(on, TARVA_ABI_IR_DEVICE_BINARY, data);
  });
}

TEST_F(program_kinds, spir_v_runs_by_extension_and_by_command) {
  const std::string spirv = module("add.spv");
  if (spirv.empty())
    GTEST_SKIP() << "there is no clang, or no llvm-spirv, to make a module";
  on_each([&](const caller::device& on, const std::string& version) {
    const bool always = version >= "2.1";
    EXPECT_LE(always, takes(on, TARVA_ABI_IR_SPIR_V));
    if (!takes(on, TARVA_ABI_IR_SPIR_V)) {
      expect_refused(on, TARVA_ABI_IR_SPIR_V, spirv);
      return;
    }
    // A device that is used as 2.1 need not be one.
    if (always && text(child(opencl_of(on), "CL_DEVICE_IL_VERSION")).empty())
      expect_refused(on, TARVA_ABI_IR_SPIR_V, spirv);
    else
      expect_loads(on, TARVA_ABI_IR_SPIR_V, spirv);
    // Cut within an instruction, or a function.
    for (const std::size_t length : {std::size_t{0}, std::size_t{3}, std::size_t{30}, spirv.size() / 2 | 2,
                                     spirv.size() - 4, spirv.size() - 1})
      expect_refused(on, TARVA_ABI_IR_SPIR_V, spirv.substr(0, length));
  });
}

TEST_F(program_kinds, specialisation_constants_reach_the_module) {
  const std::string spirv = module("constants.spv");
  if (spirv.empty())
    GTEST_SKIP() << "there is no clang, or no llvm-spirv, to make a module";
  const std::int32_t number = -1;
  const std::uint8_t small = 200;
  const std::int64_t large = std::int64_t{1} << 40;
  const float real = 7.0F;
  const std::uint32_t yes = 0x100;
  tarva_abi_specialization_constant_s constants[] = {{1, TARVA_ABI_TYPE_INT32, &number},
                                                     {2, TARVA_ABI_TYPE_UINT8, &small},
                                                     {3, TARVA_ABI_TYPE_INT64, &large},
                                                     {4, TARVA_ABI_TYPE_FLOAT, &real},
                                                     {5, TARVA_ABI_TYPE_BOOLEAN, &yes}};
  on_each([&](const caller::device& on, const std::string& version) {
    if (version != "2.2")
      return;
    const bool real_device = !text(child(opencl_of(on), "CL_DEVICE_IL_VERSION")).empty();
    for (const std::uint64_t count : {0, 2, 5}) {
      tarva_abi_ir_header_s header{TARVA_ABI_IR_HEADER_SPECIALIZATION_CONSTANTS, constants, count};
      build result;
      const outcome ended = load(on, TARVA_ABI_IR_SPIR_V, spirv, "", result, &header);
      if (!real_device) {
        EXPECT_EQ(ended.type, 7u);
        EXPECT_FALSE(ended.message.empty());
        continue;
      }
      ASSERT_EQ(ended, outcome());
      const memory out = allocate(TARVA_ABI_TYPE_INT64, 5);
      EXPECT_EQ(launch(find_kernel(result.made, "constants"), {argument(out)}, line(1)), outcome());
      std::vector<std::int64_t> expected{10, 20, 30, 40, 0}, set{number, small, large, 7, 1};
      std::copy_n(set.begin(), count, expected.begin());
      EXPECT_EQ(read<std::int64_t>(out, 5), expected);
    }
    tarva_abi_specialization_constant_s unknown{77, TARVA_ABI_TYPE_INT32, &number};
    tarva_abi_ir_header_s header{TARVA_ABI_IR_HEADER_SPECIALIZATION_CONSTANTS, &unknown, 1};
    build unused;
    EXPECT_EQ(load(on, TARVA_ABI_IR_SPIR_V, spirv, "", unused, &header).type, 7u) << "no constant 77";
  });
}

TEST_F(program_kinds, built_in_kernels_work_or_are_refused_in_words) {
  on_each([](const caller::device& on, const std::string& version) {
    tarva_abi_program_s* handle = nullptr;
    ASSERT_EQ(call<tarva_abi_get_builtin_program>(on.get(), &handle), outcome());
    const program builtin(handle);
    std::vector<std::string> kernels{"none"};
    if (version >= "1.2") {
      const auto listed = child(opencl_of(on), "CL_DEVICE_BUILT_IN_KERNELS");
      for (std::uint64_t i = 0; i < listed->element_count; ++i)
        kernels.push_back(text(listed, i));
    }
    for (const std::string& name : kernels) {
      tarva_abi_kernel_s* found = nullptr;
      const outcome ended = call<tarva_abi_get_kernel>(builtin.get(), name.c_str(), &found);
      const kernel owned(found);
      EXPECT_EQ(found == nullptr, ended.code != TARVA_ABI_OK) << name;
      EXPECT_NE(found == nullptr, ended.message.empty()) << name;
    }
  });
}

TEST_F(program_kinds, kernels_enqueue_kernels_on_the_default_queue) {
  on_each([](const caller::device& on, const std::string& version) {
    if (version < "2.0")
      return;
    const auto queues =
        child(child(opencl_of(on), "CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES"), "CL_DEVICE_MAX_ON_DEVICE_QUEUES");
    if (*static_cast<const std::uint32_t*>(queues->data) == 0)
      return; // a device that is used as 2.x without being one
    build result;
    ASSERT_EQ(load(on, TARVA_ABI_IR_SOURCE_2_0,
                   "kernel void parent(global int* out) {"
                   "  enqueue_kernel(get_default_queue(), CLK_ENQUEUE_FLAGS_NO_WAIT, ndrange_1D(4),"
                   "                 ^{ out[get_global_id(0)] = 7; });"
                   "}",
                   "-cl-std=CL2.0", result),
              outcome());
    ASSERT_TRUE(result.success) << result.log;
    const memory out = make(std::vector<std::int32_t>(5, 1));
    EXPECT_EQ(launch(find_kernel(result.made, "parent"), {argument(out)}, line(1)), outcome());
    EXPECT_EQ(read<std::int32_t>(out, 5), (std::vector<std::int32_t>{7, 7, 7, 7, 1}));
  });
}

TEST_F(program_kinds, odd_build_options_never_end_the_process) {
  on_each([](const caller::device& on, const std::string&) {
    for (const char* valid : {" ", "-w", "-DX=1 -cl-mad-enable", "-D XY=1", "-I /tmp", "-cl-std=CL1.1"})
      expect_loads(on, TARVA_ABI_IR_SOURCE_1_0, source, valid);
    // Some devices ignore a name that is missing.
    for (const char* odd : {"-D ", "-I -D -D", "\"", "'", "-DX='a b'", "-DX=\"a b\"", "-D X", "-DX=\xFF",
                            "\t", "''", "-DX=\"\\\"1\\\"\"", "-s word", "-I"})
      expect_loads_or_words(on, TARVA_ABI_IR_SOURCE_1_0, source, odd);
  });
}

TEST_F(program_kinds, odd_texts_and_names_end_in_words) {
  on_each([](const caller::device& on, const std::string&) {
    expect_loads(on, TARVA_ABI_IR_SOURCE_1_0, "\xEF\xBB\xBF" + source);
    expect_loads(on, TARVA_ABI_IR_SOURCE_1_0, source + std::string("\0garbage", 8));
    expect_loads(on, TARVA_ABI_IR_SOURCE_1_0, "//" + std::string(1 << 18, 'x') + "\r\n" + source + "//");
    for (const char* broken : {"/*", "#error no", "#include <missing.h>", "kernel void add(", "\xFF\xFE"})
      expect_refused(on, TARVA_ABI_IR_SOURCE_1_0, broken);
    for (const char* without_kernel : {"", "\n", "int f(int x) { return x; }"}) {
      build result;
      const outcome ended = load(on, TARVA_ABI_IR_SOURCE_1_0, without_kernel, "", result);
      EXPECT_TRUE(ended.code == TARVA_ABI_OK || !ended.message.empty());
    }
    const program made = compile(on, source);
    for (const std::string& name : {std::string(), std::string("ad"), std::string("add "),
                                    std::string("%s%n"), std::string("\xFF"), std::string(100000, 'a')}) {
      tarva_abi_kernel_s* found = nullptr;
      EXPECT_EQ(call<tarva_abi_get_kernel>(made.get(), name.c_str(), &found),
                other_failure("Kernel name not found in the program."));
      const kernel owned(found);
    }
  });
}

TEST_F(program_kinds, are_reached_without_the_loader_in_the_global_scope) {
  if (std::getenv("LD_PRELOAD") != nullptr)
    GTEST_SKIP() << "it has been brought there";
  EXPECT_EQ(dlsym(RTLD_DEFAULT, "clGetPlatformIDs"), nullptr);
}

} // namespace
