// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Devices, programs, kernels and launches.
#include "fuzz/conversation.h"

#include "tests/scripted/scripted_qv.h"

#include <string>

namespace fuzz {

namespace {

const std::string source = R"(
  kernel void add(global int* data, int amount) {}
  kernel void sum(global int* out, global const int* a, global const int* b) {}
  kernel void scratch(global short* data, local float* room, short4 values) {}
  kernel __attribute__((reqd_work_group_size(8, 4, 2))) void fixed(global int* data) {}
  kernel void empty() {}
)";
// The first four, each with the type that it is made for, so that half of the choices fit.
const std::string texts[] = {source, "BIN:" + source, "SPV:" + source, "BC" + source, "#error", "", "kernel"};
constexpr tarva_abi_ir_type types[] = {TARVA_ABI_IR_SOURCE_1_0, TARVA_ABI_IR_DEVICE_BINARY,
                                       TARVA_ABI_IR_SPIR_V, TARVA_ABI_IR_SPIR_1_2};
constexpr const char* build_options[] = {"", "-w", "-DX=1 -w", "-bad", nullptr};

struct kernel_choice {
  const char* name;
  std::vector<parameter> parameters;
};
const kernel_choice kernels[] = {
    {"sum", {parameter::memory, parameter::memory, parameter::memory}},
    {"add", {parameter::memory, parameter::value}},
    {"scratch", {parameter::memory, parameter::local, parameter::value}},
    {"fixed", {parameter::memory}},
    {"empty", {}},
    {"copy_all", {parameter::memory}},
    {"none", {}},
    {nullptr, {}},
};
constexpr std::uint64_t sizes[] = {1, 2, 0, 4, 8, 64, 3, 256, std::uint64_t{1} << 33, far};

// What makes a program, or does not.
struct ir_choice {
  explicit ir_choice(input& bytes) {
    for (auto& constant : constants)
      constant = {bytes.below(3), bytes.below(70), bytes.rarely(8) ? nullptr : host_block};
    has_header = bytes.rarely(3);
    header = {bytes.below(4), bytes.rarely(8) ? nullptr : constants, bytes.below(3)};
    const std::size_t text = bytes.below(std::size(texts));
    type = text < std::size(types) && !bytes.rarely(4) ? types[text] : bytes.below(11);
    const bool is_raw = bytes.rarely(8);
    size = is_raw ? bytes.size() : texts[text].size();
    data = is_raw ? static_cast<const void*>(bytes.data()) : bytes.rarely(16) ? nullptr : texts[text].data();
    options = bytes.one_of(build_options);
  }
  tarva_abi_ir_header_s* header_or_none() { return has_header ? &header : nullptr; }

  tarva_abi_specialization_constant_s constants[2];
  tarva_abi_ir_header_s header;
  bool has_header;
  tarva_abi_ir_type type;
  const void* data;
  std::uint64_t size;
  const char* options;
};

void get_builtin_program(conversation& with) {
  auto* const of = with.pick<tarva_abi_device_s>();
  with.keep<tarva_abi_get_builtin_program>(with.live_only(of), of);
}

void check_support(conversation& with) {
  auto* const on = with.pick<tarva_abi_device_s>();
  ir_choice ir(with.bytes);
  auto supported = with.make_out<std::uint64_t>();
  const expected how = supported.wanted && ir.options ? with.live_only(on) : expected::failure;
  const bool done = with.call<tarva_abi_check_device_ir_support>(
      how, on, ir.header_or_none(), ir.type, ir.data, ir.size, ir.options, supported.where());
  demand(done ? supported.value <= 1 : supported.is_untouched(), "support is 1, 0 or not written");
}

// Of a kind that the parameter takes: a value or a size in the place of a buffer is found by the device only,
// where it ends the process.
tarva_abi_kernel_argument_s choose_argument(conversation& with, parameter takes) {
  input& bytes = with.bytes;
  if (bytes.rarely(32))
    return {4 + bytes.below(2), 0, 0};
  switch (takes) {
  case parameter::value:
    return {TARVA_ABI_ARGUMENT_VALUE, 7 + bytes.below(64),
            reinterpret_cast<std::uint64_t>(with.rarely_null(host_block, 16))};
  case parameter::local:
    return {TARVA_ABI_ARGUMENT_LOCAL_MEMORY, 1 + bytes.below(69), bytes.one_of(sizes)};
  default:
    if (bytes.rarely(16))
      return {TARVA_ABI_ARGUMENT_NULL, ~std::uint64_t{0}, ~std::uint64_t{0}};
    return {TARVA_ABI_ARGUMENT_MEMORY, reinterpret_cast<std::uint64_t>(with.pick<tarva_abi_memory_s>()),
            ~std::uint64_t{0}};
  }
}

// Behind the end of the input, a launch that works.
void launch(conversation& with) {
  constexpr tarva_abi_launch_type launch_types[] = {3, 1, 2, 4, 5, 6, 0, 7};
  input& bytes = with.bytes;
  auto* const called = with.pick<tarva_abi_kernel_s>();
  const auto& parameters = with.parameters[called];
  std::vector<tarva_abi_kernel_argument_s> arguments;
  const std::size_t count = bytes.rarely(16) ? bytes.below(5) : parameters.size();
  for (std::size_t i = 0; i < count; ++i)
    arguments.push_back(choose_argument(with, i < parameters.size() ? parameters[i] : parameter::memory));
  tarva_abi_launch_range_s choice{bytes.one_of(launch_types), {}};
  for (std::uint64_t& word : choice.words)
    word = bytes.rarely(4) ? bytes.one_of(sizes) : 1;
  const auto* const range = with.rarely_null(&choice, 32);
  with.call<tarva_abi_kernel_call>(range ? with.live_only(called) : expected::failure, called,
                                   with.rarely_null(arguments.data(), 32), count, range);
}

} // namespace

void get_devices(conversation& with) {
  auto* const array = with.make<tarva_abi_get_devices>(expected::success);
  if (!array)
    return;
  for (std::uint64_t i = 0; i < array->count; ++i)
    with.handles.add(array->devices[i]);
  tarva_abi_free_device_array(nullptr, array);
}

void load_program(conversation& with) {
  auto* const on = with.pick<tarva_abi_device_s>();
  ir_choice ir(with.bytes);
  auto* const result = with.make<tarva_abi_load_device_ir>(
      ir.options ? with.live_only(on) : expected::failure, on, ir.header_or_none(), ir.type, ir.data, ir.size,
      ir.options, with.bytes.one_of(labels));
  if (!result)
    return;
  with.handles.add(result->program);
  demand(result->success <= 1, "success is 1 or 0");
  demand(!result->build_log || *result->build_log, "an empty log is none");
  tarva_abi_free_build_result(nullptr, result);
}

// The limits of launches are read here. One that cannot be read is not checked, and a launch beyond it then ends the
// process, so no failure may be pending.
void get_kernel(conversation& with) {
  scripted::no_failure_left();
  auto* const in = with.pick<tarva_abi_program_s>();
  const kernel_choice& chosen = with.bytes.one_of(kernels);
  if (const auto* const made = with.keep<tarva_abi_get_kernel>(
          chosen.name ? with.live_only(in) : expected::failure, in, chosen.name))
    with.parameters[made] = chosen.parameters;
}

const std::vector<step> program_steps = {
    {get_devices}, {load_program}, {get_kernel}, {launch, 4}, {get_builtin_program}, {check_support},
};

} // namespace fuzz
