// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What the simulated devices answer to clGetDeviceInfo: each parameter exists under the capabilities that
// read it, most of them by the table of properties.
#include "tests/scripted/catalogue_table.h"
#include "tests/scripted/scripted_machine.h"

namespace scripted {

namespace {

// Parameters that are no properties, or answer with another size than most of their form, and that size.
constexpr std::pair<std::uint32_t, unsigned> others[] = {
    {CL_DEVICE_TYPE, 8}, {CL_DEVICE_LOCAL_MEM_TYPE, 4}, {CL_DEVICE_PLATFORM, 8}};

// The bytes of a number; nothing if devices of the capability have no such parameter.
unsigned size_of_number(std::uint32_t capability, std::uint32_t parameter) {
  using catalogue_table::form;
  for (const auto& [of, size] : others)
    if (of == parameter)
      return size;
  const int version = static_cast<int>(capability);
  for (const catalogue_table::block& each : catalogue_table::blocks)
    for (const catalogue_table::row& one : each.rows)
      if (one.query == parameter && each.first <= version && version <= each.last)
        switch (one.as) {
        case form::number:
        case form::flag:
        case form::equals:
          return 4;
        case form::wide:
        case form::bit:
          return 8;
        default:
          return 0;
        }
  return 0;
}

// Those that matter, and some that shall not be as others are.
constexpr std::pair<std::uint32_t, std::uint64_t> values[] = {
    {0x1000, 4},                      // TYPE: GPU
    {0x1002, 4},                      // MAX_COMPUTE_UNITS
    {0x1003, 3},                      // MAX_WORK_ITEM_DIMENSIONS
    {0x100D, 64},                     // ADDRESS_BITS
    {0x1010, std::uint64_t{1} << 29}, // MAX_MEM_ALLOC_SIZE
    {0x101B, 0x5A},                   // SINGLE_FP_CONFIG
    {0x101C, 1},                      // GLOBAL_MEM_CACHE_TYPE
    {0x1022, 1},                      // LOCAL_MEM_TYPE
    {0x1023, 32768},                  // LOCAL_MEM_SIZE
    {0x1024, 0},                      // ERROR_CORRECTION_SUPPORT
    {0x1032, 0x25},                   // DOUBLE_FP_CONFIG
    {0x1048, 0},                      // PREFERRED_INTEROP_USER_SYNC
    {0x104F, 16384},                  // QUEUE_ON_DEVICE_PREFERRED_SIZE
};

struct text_row {
  std::uint32_t parameter;
  const char* value;
  std::uint32_t first = 1;
};

constexpr text_row texts[] = {
    {0x102C, "Scripted Vendor"},          // VENDOR
    {0x102D, "0.1"},                      // DRIVER_VERSION
    {0x102E, "FULL_PROFILE"},             // PROFILE
    {0x102F, "OpenCL scripted"},          // VERSION
    {0x1030, "cl_khr_one  cl_khr_two "},  // EXTENSIONS
    {0x103D, "OpenCL C scripted", 2},     // OPENCL_C_VERSION
    {0x103F, "", 3},                      // BUILT_IN_KERNELS
    {0x40E0, "1.2", 3},                   // SPIR_VERSIONS
    {0x105B, "SPIR-V_1.0 SPIR-V_1.1", 5}, // IL_VERSION
};

} // namespace

// Of the others each is its own number, so that none can be taken for another.
std::uint64_t number_of(std::uint32_t parameter) {
  for (const auto& [of, value] : values)
    if (of == parameter)
      return value;
  return parameter;
}

std::optional<bytes> own_answer(const device& device, std::uint32_t parameter) {
  const auto own = device.options.info.find(parameter);
  return own == device.options.info.end() ? std::nullopt : std::optional(own->second);
}

std::optional<bytes> device_info(const device& device, std::uint32_t capability, std::uint32_t parameter) {
  if (auto own = own_answer(device, parameter))
    return own;
  const std::uint64_t size = device.options.work_group_size;
  switch (parameter) {
  case 0x1004: // MAX_WORK_GROUP_SIZE
    return value_answer(size);
  case 0x1005: // MAX_WORK_ITEM_SIZES
    return value_answer(std::array<std::uint64_t, 3>{size, size, 64});
  case 0x1026: // ENDIAN_LITTLE
    return value_answer(std::uint32_t{device.options.little_endian});
  case 0x102B: // NAME
    return text_answer(device.options.name);
  default:
    break;
  }
  const std::uint64_t number = number_of(parameter);
  if (const unsigned size_of_answer = size_of_number(capability, parameter))
    return size_of_answer == 4 ? value_answer(static_cast<std::uint32_t>(number)) : value_answer(number);
  for (const text_row& row : texts)
    if (row.parameter == parameter && row.first <= capability)
      return text_answer(row.value);
  return std::nullopt;
}

} // namespace scripted
