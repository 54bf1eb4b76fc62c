// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Every kind of program on every OpenCL device that the environment offers: what a device says that it takes
// it runs, and what it does not take, or what is broken, ends in words and leaves the device as it was.
#include "tests/device/every_device.h"

#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <iterator>

namespace {

using namespace caller;
using tarva::ir;

const std::string source =
    "kernel void add(global int* data, int amount) { data[get_global_id(0)] += amount; }";

// Empty if the machine lacks the compilers. A module says that it is SPIR-V 1.0, which is all that it uses: devices refuse
// what is newer than they know.
std::string module(const char* name) {
  std::ifstream file(std::string(TARVA_TEST_MODULES) + "/" + name, std::ios::binary);
  std::string content{std::istreambuf_iterator<char>(file), {}};
  constexpr std::size_t minor_version = 5;
  if (content.size() > minor_version && content[0] == '\x03')
    content[minor_version] = 0;
  return content;
}

class program_kinds : public every_device {
protected:
  template <class Body>
  static void on_each(Body body) {
    every_device::on_each([&](const caller::device& one) {
      body(one, version_of(one));
      expect_adds(one.build(source)); // whatever has been done to the device
    });
  }
  static void expect_adds(const program& made) {
    const tarva::memory numbers(std::vector<std::int32_t>(16, 1));
    made.kernel("add")(tarva::range::items(16).in_groups_of(4), numbers, 4);
    EXPECT_EQ(numbers.read(), std::vector<std::int32_t>(16, 5));
  }
  static property opencl_of(const caller::device& of) { return of.properties()["OPENCL"]; }
  static tarva::result<program> load(const caller::device& on, ir kind, const std::string& data,
                                     const char* options = "") {
    return tarva::attempt([&] { return on.load(kind, tarva::as_bytes(data), options); });
  }
  static void expect_loads(const caller::device& on, ir kind, const std::string& data,
                           const char* options = "") {
    const auto made = load(on, kind, data, options);
    ASSERT_TRUE(made) << made.error().what();
    expect_adds(*made);
  }
  static void expect_loads_or_words(const caller::device& on, ir kind, const std::string& data,
                                    const char* options = "") {
    const auto made = load(on, kind, data, options);
    if (made)
      expect_adds(*made);
    else
      EXPECT_NE(words_of(made.error()), "") << options;
  }
  static void expect_refused(const caller::device& on, ir kind, const std::string& data) {
    EXPECT_FALSE(load(on, kind, data)) << static_cast<int>(kind) << ", " << data.size() << " bytes";
  }
  // The library's, or the layer's for a program that does not build.
  static std::string words_of(const tarva::error& failed) {
    return failed.code() == TARVA_ABI_OK ? failed.what() : failed.chain().at(0).message;
  }
};

TEST_F(program_kinds, spir_runs_where_it_is_taken) {
  const std::string spir = module("add.bc");
  if (spir.empty())
    GTEST_SKIP() << "there is no clang to make a module";
  on_each([&](const caller::device& on, const std::string&) {
    if (on.supports(ir::spir_1_2)) {
      expect_loads(on, ir::spir_1_2, spir);
      expect_loads(on, ir::spir_1_2, spir, "-x spir -spir-std=1.2");
    } else {
      EXPECT_STREQ(load(on, ir::spir_1_2, spir).error().what(), "IR is not supported by the device.");
    }
    // Some take it for a binary of their own all the same.
    expect_loads_or_words(on, ir::device_binary, spir);
    for (std::size_t length = 0; length < spir.size(); length += spir.size() / 7)
      expect_refused(on, ir::device_binary, spir.substr(0, length));
  });
}

TEST_F(program_kinds, spir_v_runs_by_extension_and_by_command) {
  const std::string spirv = module("add.spv");
  if (spirv.empty())
    GTEST_SKIP() << "there is no clang, or no llvm-spirv, to make a module";
  on_each([&](const caller::device& on, const std::string& version) {
    const bool always = version >= "2.1";
    EXPECT_LE(always, on.supports(ir::spir_v));
    if (!on.supports(ir::spir_v)) {
      expect_refused(on, ir::spir_v, spirv);
      return;
    }
    // A device that is used as 2.1 need not be one.
    if (always && text(opencl_of(on)["CL_DEVICE_IL_VERSION"]).empty())
      expect_refused(on, ir::spir_v, spirv);
    else
      expect_loads(on, ir::spir_v, spirv);
  });
}

TEST_F(program_kinds, kernels_enqueue_kernels_on_the_default_queue) {
  on_each([](const caller::device& on, const std::string& version) {
    if (version < "2.0" ||
        opencl_of(on)["CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES"]["CL_DEVICE_MAX_ON_DEVICE_QUEUES"]
                .get<std::uint64_t>() == 0)
      return; // or a device that is used as 2.x without being one
    const auto made = load(on, ir::source_2_0,
                           "kernel void parent(global int* out) {"
                           "  enqueue_kernel(get_default_queue(), CLK_ENQUEUE_FLAGS_NO_WAIT, ndrange_1D(4),"
                           "                 ^{ out[get_global_id(0)] = 7; });"
                           "}",
                           "-cl-std=CL2.0");
    ASSERT_TRUE(made) << made.error().what();
    const tarva::memory out(std::vector<std::int32_t>(5, 1));
    made->kernel("parent")(tarva::range::items(1), out);
    EXPECT_EQ(out.read(), (std::vector<std::int32_t>{7, 7, 7, 7, 1}));
  });
}

TEST_F(program_kinds, odd_options_and_texts_end_in_words) {
  on_each([](const caller::device& on, const std::string&) {
    for (const char* valid : {" ", "-w", "-DX=1 -cl-mad-enable", "-D XY=1", "-I /tmp", "-cl-std=CL1.1"})
      expect_loads(on, ir::source_1_0, source, valid);
    // Some devices ignore a name that is missing.
    for (const char* odd :
         {"-", "-w word", "@file", "\\", "-D", "-nonsense-option=1", "-D ", "-I -D -D", "\"", "'",
          "-DX='a b'", "-DX=\"a b\"", "-D X", "-DX=\xFF", "\t", "''", "-DX=\"\\\"1\\\"\"", "-s word", "-I"})
      expect_loads_or_words(on, ir::source_1_0, source, odd);
    expect_loads(on, ir::source_1_0, "\xEF\xBB\xBF" + source);
    expect_loads(on, ir::source_1_0, source + std::string("\0garbage", 8));
    expect_loads(on, ir::source_1_0, "//" + std::string(1 << 18, 'x') + "\r\n" + source + "//");
    for (const char* broken : {"/*", "#error no", "#include <missing.h>", "kernel void add(", "\xFF\xFE"})
      expect_refused(on, ir::source_1_0, broken);
    for (const char* without_kernel : {"", "\n", "int f(int x) { return x; }"}) {
      const auto made = load(on, ir::source_1_0, without_kernel);
      EXPECT_TRUE(made || !words_of(made.error()).empty());
    }
  });
}

TEST_F(program_kinds, are_reached_without_the_loader_in_the_global_scope) {
  if (std::getenv("LD_PRELOAD") != nullptr)
    GTEST_SKIP() << "it has been brought there";
  EXPECT_EQ(dlsym(RTLD_DEFAULT, "clGetPlatformIDs"), nullptr);
}

} // namespace
