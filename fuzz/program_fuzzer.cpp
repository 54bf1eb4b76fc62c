// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Programs of bytes from outside, through both libraries: of every kind, with any options and specialization constants, on the
// platforms whose quirks are known.
#include "fuzz/target.h"

#include <tarva.hpp>

namespace {

using fuzz::demand;
using fuzz::input;

constexpr tarva::ir kinds[] = {tarva::ir::source_1_0, tarva::ir::spir_1_2, tarva::ir::spir_v,
                               tarva::ir::device_binary, static_cast<tarva::ir>(77)};
// What the scripted compiler and the checks before it know a program by.
const std::string beginnings[] = {"",
                                  "kernel void k(global int* data) {}",
                                  "SPV:kernel void k(int a) {}",
                                  "BIN:kernel void k() {}",
                                  "BCkernel void k() {}",
                                  "poclbin"};

std::string text(input from) {
  return {reinterpret_cast<const char*>(from.data()), from.size()};
}

std::vector<tarva::constant> choose_constants(input& from) {
  std::vector<tarva::constant> constants;
  for (std::size_t left = from.below(4); left > 0; --left) {
    const auto id = static_cast<std::uint32_t>(from.below(256));
    if (from.rarely(2))
      constants.emplace_back(id, static_cast<std::uint8_t>(from.below(256)));
    else
      constants.emplace_back(id, static_cast<double>(from.below(256)));
  }
  return constants;
}

// What a program tells of itself, and of its kernels.
void look_at(const tarva::program& made) {
  demand(!made.properties().to_xml().empty(), "a program has a tree");
  for (const std::string& name : made.kernel_names())
    demand(!made.kernel(name).properties().to_text().empty(), "a kernel has a tree");
}

void play(input from, const std::vector<tarva::device>& devices) {
  const tarva::device& device = devices[from.below(devices.size())];
  const tarva::ir kind = from.one_of(kinds);
  const auto constants = choose_constants(from);
  const std::string options = text(from.split(from.below(64)));
  const std::string data = from.one_of(beginnings) + text(from);
  try {
    const bool takes = device.supports(kind, constants);
    const auto result = device.try_load(kind, tarva::as_bytes(data), options, "fuzz", constants);
    demand(takes, "a device takes what it says that it takes, and nothing else");
    if (result.success)
      look_at(result.made);
  } catch (const tarva::error& refusal) {
    demand(refusal.code() == TARVA_ABI_LOGIC_FAILURE || refusal.code() == TARVA_ABI_RUNTIME_FAILURE,
           "every failure is known");
  }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto& devices = *new auto([] {
    fuzz::set_up_platforms();
    return tarva::devices();
  }());
  static const auto& before = *new auto(scripted::live_objects());
  play(input(data, size), devices);
  fuzz::demand_balance(before);
  return 0;
}
