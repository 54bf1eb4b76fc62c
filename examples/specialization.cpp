// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// A SPIR-V module with a constant that is chosen when the program is built. It takes a device of OpenCL 2.2 whose
// compiler takes SPIR-V; without one the example ends with status 77.
#include <iostream>
#include <tarva.hpp>

namespace {

// kernel void multiply(global uint* data) { data[id] = id * factor; }, where factor is constant 7, and 2 if not chosen.
constexpr std::uint32_t code[] = {
    0x07230203, 0x10000, 0,  18,         0,                 // SPIR-V 1.0, ids below 18
    0x00020011, 4,                                          // OpCapability Addresses
    0x00020011, 6,                                          // OpCapability Kernel
    0x00020011, 11,                                         // OpCapability Int64
    0x0003000e, 2,       2,                                 // OpMemoryModel Physical64 OpenCL
    0x0007000f, 6,       1,  0x746c756d, 0x796c7069, 0,  2, // OpEntryPoint Kernel %multiply "multiply" %ids
    0x00040047, 2,       11, 28,                            // OpDecorate %ids BuiltIn GlobalInvocationId
    0x00040047, 3,       1,  7,                             // OpDecorate %factor SpecId 7
    0x00020013, 4,                                          // %void = OpTypeVoid
    0x00040015, 5,       32, 0,                             // %uint = OpTypeInt 32 0
    0x00040015, 6,       64, 0,                             // %ulong = OpTypeInt 64 0
    0x00040017, 7,       6,  3,                             // %vector = OpTypeVector %ulong 3
    0x00040020, 8,       1,  7,                             // %input = OpTypePointer Input %vector
    0x00040020, 9,       5,  5,                             // %global = OpTypePointer CrossWorkgroup %uint
    0x00040021, 10,      4,  9,                             // %function = OpTypeFunction %void %global
    0x00040032, 5,       3,  2,                             // %factor = OpSpecConstant %uint 2
    0x0004003b, 8,       2,  1,                             // %ids = OpVariable %input Input
    0x00050036, 4,       1,  0,          10,                // %multiply = OpFunction %void None %function
    0x00030037, 9,       11,                                // %data = OpFunctionParameter %global
    0x000200f8, 12,                                         // %start = OpLabel
    0x0006003d, 7,       13, 2,          2,          32,    // %all = OpLoad %vector %ids Aligned 32
    0x00050051, 6,       14, 13,         0,                 // %id = OpCompositeExtract %ulong %all 0
    0x00040071, 5,       15, 14,                            // %small = OpUConvert %uint %id
    0x00050084, 5,       16, 15,         3,                 // %product = OpIMul %uint %small %factor
    0x00050046, 9,       17, 11,         14, // %place = OpInBoundsPtrAccessChain %global %data %id
    0x0005003e, 17,      16, 2,          4,  // OpStore %place %product Aligned 4
    0x000100fd,                              // OpReturn
    0x00010038,                              // OpFunctionEnd
};

// A device that takes the module with the constant, the best one if it does. Below OpenCL 2.2 asking for constants is
// an error.
tarva::device find_device(const std::vector<tarva::constant>& with) {
  std::vector<tarva::device> devices = tarva::devices();
  devices.insert(devices.begin(), tarva::best_device());
  for (const tarva::device& device : devices)
    if (tarva::attempt([&] { return device.supports(tarva::ir::spir_v, with); }).value_or(false))
      return device;
  return {};
}

} // namespace

int main() try {
  const std::vector<tarva::constant> constants = {{7, 5U}};
  const tarva::device device = find_device(constants);
  if (!device) {
    std::cout << "No device of this machine takes SPIR-V with constants.\n";
    return 77;
  }
  const auto bytes = tarva::as_bytes(code);
  const tarva::build_result built = device.try_load(tarva::ir::spir_v, bytes, "", "multiply", constants);
  if (!built.success) {
    std::cerr << "The module does not build: " << built.log << '\n';
    return 1;
  }
  const tarva::memory<std::uint32_t> data(4);
  built.made.kernel<tarva::memory<std::uint32_t>>("multiply")(tarva::range::items(4), data);
  const std::vector<std::uint32_t> result = data.read();
  for (const std::uint32_t number : result)
    std::cout << number << ' ';
  std::cout << '\n';
  return result == std::vector<std::uint32_t>{0, 5, 10, 15} ? 0 : 1;
} catch (const tarva::runtime_failure& caught) {
  std::cerr << "The OpenCL implementation cannot build it: " << caught.what() << '\n';
  return 77;
} catch (const std::exception& caught) {
  std::cerr << caught.what() << '\n';
  return 1;
}
