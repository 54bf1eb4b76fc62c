// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What beginners do wrong and only a real device can tell, on every one that the environment offers, each mistake in a process
// of its own: the library says what is wrong, in words, and a right launch works afterwards in the same process.
#include "tests/device/every_device.h"

#include <functional>
#include <numeric>
#include <regex>
#include <unistd.h>

namespace {

using namespace caller;

constexpr std::size_t element_count = 16;
constexpr unsigned seconds_for_a_case = 100;

// What a child ends with.
constexpr int well = 0, not_said = 2, launch_failed = 3;

const std::string source = R"(
  kernel void blend(global int* out, global const int* in, local int* scratch, float f, int i, long l) {
    size_t me = get_global_id(0);
    if (me >= 16) return;
    scratch[get_local_id(0)] = in[me];
    out[me] += scratch[get_local_id(0)] + (int)f + i + (int)l;
  }
)";
const std::string with_images = R"(
  kernel void look(global int* out, read_only image2d_t picture) { out[0] = get_image_width(picture); }
  kernel void how(global int* out, sampler_t sampler) { out[0] = 1; }
)";

// A device with a program, and memory objects to launch its kernel on.
class workbench {
public:
  explicit workbench(const device& used) : on(used) {}

  arguments right() const {
    return {argument(out), argument(in), local_argument(TARVA_ABI_TYPE_INT32, 8),
            argument(f),   argument(i),  argument(l)};
  }
  outcome run(const tarva_abi_launch_range_s& range) const { return launch(blend, right(), range); }
  outcome run_with(std::size_t index, const tarva_abi_kernel_argument_s& wrong) const {
    arguments list = right();
    list.at(index) = wrong;
    return launch(blend, list, line(element_count, 8));
  }
  outcome run_other(const std::string& text, const char* name,
                    const tarva_abi_kernel_argument_s& second) const {
    const memory other = make(std::vector<std::int32_t>(element_count));
    return launch(find_kernel(compile(on, text), name), {argument(other), second}, line(1));
  }
  outcome build_of(tarva_abi_ir_type type, const std::string& data, const char* options = "") const {
    build result;
    const outcome ended = load(on, type, data, options, result);
    return ended.code != TARVA_ABI_OK || result.success ? ended : logic_failure("not built: " + result.log);
  }
  property opencl() const { return on.properties()["OPENCL"]; }
  std::string binary() const {
    const property all = made.properties()["OPENCL"]["CL_PROGRAM_BINARY"];
    return {static_cast<const char*>(all->data), all.size()};
  }
  // Nothing is lost, and nothing has been changed behind the caller's back.
  bool works() const {
    const outcome ended = run(line(element_count, 8));
    std::vector<std::int32_t> expected(element_count);
    for (std::size_t k = 0; k < element_count; ++k)
      expected[k] = 100 + static_cast<std::int32_t>(k) + 2 + 30 + 400;
    const auto content = read<std::int32_t>(out, element_count);
    std::fprintf(stderr, "the right launch: %s, first element %d\n", ended.message.c_str(), content[0]);
    return ended == outcome() && content == expected;
  }

  const device& on;
  const program made = compile(on, source);
  const kernel blend = find_kernel(made, "blend");
  const memory out = make(std::vector<std::int32_t>(element_count, 100)), in = make(counted());
  const float f = 2;
  const std::int32_t i = 30;
  const std::int64_t l = 400;

private:
  static std::vector<std::int32_t> counted() {
    std::vector<std::int32_t> result(element_count);
    std::iota(result.begin(), result.end(), 0);
    return result;
  }
};

// For a device on which the mistake cannot be made.
constexpr const char* left_out_words = "left out: ";
outcome left_out(const std::string& why) {
  std::printf("%s%s\n", left_out_words, why.c_str());
  return logic_failure(left_out_words + why);
}

struct mistake {
  const char* name;
  const char* says; // by a regular expression
  std::function<outcome(const workbench&)> make;
  bool may_log = false; // instead of saying it by the call

  friend void PrintTo(const mistake& one, std::ostream* to) { *to << one.name; }
};

// Everything is cut off at a hundred places, and the whole still works.
outcome cut_binaries(const workbench& on) {
  constexpr std::size_t places = 100;
  const std::string whole = on.binary();
  for (std::size_t k = 0; k < places; ++k) {
    const std::size_t length = whole.size() * k / places;
    std::fprintf(stderr, "cut at %zu of %zu\n", length, whole.size());
    if (on.build_of(TARVA_ABI_IR_DEVICE_BINARY, whole.substr(0, length)) == outcome())
      return runtime_failure("taken when cut at " + std::to_string(length));
  }
  return on.build_of(TARVA_ABI_IR_DEVICE_BINARY, whole) == outcome()
             ? logic_failure("all cuts refused")
             : runtime_failure("the whole is refused");
}

template <class... Bytes>
outcome binary_of(const workbench& on, std::size_t zeros, Bytes... bytes) {
  return on.build_of(TARVA_ABI_IR_DEVICE_BINARY,
                     std::string{static_cast<char>(bytes)...} + std::string(zeros, '\0'));
}

using bench = const workbench&;
constexpr auto groups_of_1 = [](bench on, std::uint64_t width, std::uint64_t height) {
  const std::string vendor = text(on.opencl()["CL_DEVICE_VENDOR"]);
  return vendor.rfind("Intel", 0) == 0
             ? left_out("this one counts them all")
             : on.run({TARVA_ABI_LAUNCH_EXPLICIT, {2, 0, 0, 0, width, height, 1, 1, 1, 1}});
};
constexpr auto picture = [](bench on, const char* kernel, const tarva_abi_kernel_argument_s& given) {
  return on.opencl()["CL_DEVICE_IMAGE_SUPPORT"].get<bool>() ? on.run_other(with_images, kernel, given)
                                                            : left_out("no images");
};
constexpr auto no_binary = "binary|not valid|not built: .";
constexpr auto no_module = "IR is not supported|not valid|not built: .";

// clang-format off
const mistake mistakes[] = {
  {"double_for_float", "rgument 3 .* 4 bytes", [](bench on) { return on.run_with(3, argument(2.0, TARVA_ABI_TYPE_DOUBLE)); }},
  {"number_for_buffer", "rgument 1 .* memory object", [](bench on) { return on.run_with(1, argument(on.i)); }},
  {"global_for_local", "rgument 2 .* local memory", [](bench on) { return on.run_with(2, argument(on.in)); }},
  {"buffer_for_image", "rgument 1 .* image", [](bench on) { return picture(on, "look", argument(on.in)); }},
  {"long_for_sampler", "rgument 1 .* sampler", [](bench on) { return picture(on, "how", argument(on.l)); }},

  {"groups_2_35", "groups|Global work size", [](bench on) { return groups_of_1(on, 1L << 35, 1); }, true},
  {"groups_2_16_squared", "groups|Global work size", [](bench on) { return groups_of_1(on, 65536, 65536); }, true},

  {"binary_of_text", no_binary, [](bench on) { return on.build_of(TARVA_ABI_IR_DEVICE_BINARY, source); }},
  {"binary_like_bitcode", "binary|not valid|not built: .|on the device", [](bench on) { return binary_of(on, 1000, 'B', 'C', 0xC0, 0xDE); }},
  {"binary_like_pocl", no_binary, [](bench on) { return binary_of(on, 1000, 'p', 'o', 'c', 'l', 'b', 'i', 'n'); }},
  {"binary_like_spir_v", no_binary, [](bench on) { return binary_of(on, 1000, 3, 2, 0x23, 7); }},
  {"binary_like_mesa", no_binary, [](bench on) { return binary_of(on, 1000, 1, 0, 0, 0, 4, 0, 0, 0); }},
  {"binary_cut_at_100_places", "all cuts refused", cut_binaries},
  {"spir_v_of_text", no_module, [](bench on) { return on.build_of(TARVA_ABI_IR_SPIR_V, source); }},
  {"spir_v_of_zeros", no_module, [](bench on) { return on.build_of(TARVA_ABI_IR_SPIR_V, "\x03\x02\x23\x07" + std::string(400, '\0')); }},
};
// clang-format on

class mistakes_test : public every_device, public ::testing::WithParamInterface<mistake> {
protected:
  // The child: it makes the mistake, tells what it was told, and goes on.
  [[noreturn]] static void commit(const device& on) {
    alarm(seconds_for_a_case);
    const bool as_it_should = [&] {
      const workbench bench(on);
      const outcome ended = GetParam().make(bench);
      const std::string words = ended.code == TARVA_ABI_OK ? "nothing" : ended.message;
      std::fprintf(stderr, "said: %s\n", words.c_str());
      if (!bench.works())
        std::exit(launch_failed);
      return GetParam().may_log || std::regex_search(words, std::regex(GetParam().says)) ||
             words.rfind(left_out_words, 0) == 0;
    }();
    std::exit(as_it_should ? well : not_said);
  }
};

TEST_P(mistakes_test, is_told_and_survived) {
  GTEST_FLAG_SET(death_test_style, "threadsafe"); // a process that begins anew
  setenv("TARVA_LOG_TARGET", "console", 1);
  setenv("TARVA_LOG_LEVEL", "error", 1);
  const std::string told = GetParam().may_log ? std::string(GetParam().says) + "|" + left_out_words : "";
  on_each([&](const device& one) { EXPECT_EXIT(commit(one), ::testing::ExitedWithCode(well), told); });
}

INSTANTIATE_TEST_SUITE_P(beginners, mistakes_test, ::testing::ValuesIn(mistakes),
                         [](const auto& of) { return std::string(of.param.name); });

} // namespace
