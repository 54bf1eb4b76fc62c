// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Everything that the library tells of the best device, of a program, a kernel and a memory object.
#include <iostream>
#include <tarva.hpp>

namespace {

void print(const tarva::property& property, int depth) {
  std::cout << std::string(2 * static_cast<std::size_t>(depth), ' ') << property.name();
  if (property.has_value())
    std::cout << " = " << property.value_text().substr(0, 60);
  std::cout << '\n';
  for (const tarva::property& child : property)
    print(child, depth + 1);
}

} // namespace

int main() try {
  const tarva::device device = tarva::best_device();
  const tarva::program program = device.build("kernel void nothing(global int* data) {}", "-w", "an example");
  const tarva::memory<tarva::float4> memory(100, "some vectors");
  print(device.properties(), 0);
  print(program.properties(), 0);
  print(program.kernel("nothing").properties(), 0);
  print(memory.properties(), 0);

  // Single values, by name and with their type.
  const tarva::property opencl = device.properties()["OPENCL"];
  const auto units = opencl["CL_DEVICE_MAX_COMPUTE_UNITS"].get<unsigned>();
  const auto bytes = opencl["CL_DEVICE_GLOBAL_MEM_SIZE"].get<std::uint64_t>();
  std::cout << device.name() << " has " << units << " compute units and " << bytes / 1048576 << " MiB\n";
  if (!opencl.find("CL_DEVICE_NO_SUCH_THING"))
    std::cout << "A property that does not exist is nothing to worry about.\n";
  return memory.properties()["NUM_ELEMENTS"].get<std::uint64_t>() == 100 ? 0 : 1;
} catch (const std::exception& caught) {
  std::cerr << caught.what() << '\n';
  return 1;
}
