// What the simulated devices answer to clGetDeviceInfo: each parameter exists under the capabilities that
// read it.
#include "tests/scripted/scripted_machine.h"

namespace scripted {

namespace {

// Parameters that are next to each other and of one size, and the capabilities that read them.
struct range_row {
  std::uint32_t from, to;
  unsigned size;
  std::uint32_t first = 1, last = 6;
};

constexpr range_row numbers[] = {
    {0x1000, 0x1000, 8},       {0x1001, 0x100E, 4},    {0x100F, 0x100F, 4, 1, 3}, {0x1010, 0x1015, 8},
    {0x1016, 0x1016, 4},       {0x1017, 0x1017, 8},    {0x1018, 0x1019, 4},       {0x101A, 0x101A, 4, 2, 2},
    {0x101B, 0x101B, 8},       {0x101C, 0x101D, 4},    {0x101E, 0x1020, 8},       {0x1021, 0x1022, 4},
    {0x1023, 0x1023, 8},       {0x1024, 0x1024, 4},    {0x1025, 0x1025, 8},       {0x1027, 0x1028, 4},
    {0x1029, 0x102A, 8},       {0x1031, 0x1032, 8},    {0x1034, 0x1034, 4, 2},    {0x1036, 0x103C, 4, 2},
    {0x1035, 0x1035, 4, 2, 3}, {0x103E, 0x103E, 4, 3}, {0x1040, 0x1041, 8, 3},    {0x1048, 0x1048, 4, 3},
    {0x1049, 0x1049, 8, 3},    {0x104A, 0x104C, 4, 4}, {0x104D, 0x104E, 8, 4},    {0x104F, 0x1052, 4, 4},
    {0x1053, 0x1054, 8, 4},    {0x1055, 0x105A, 4, 4}, {0x105C, 0x105D, 4, 5},
};

// Those that matter; all others are 1.
constexpr std::pair<std::uint32_t, std::uint64_t> values[] = {
    {0x1000, 4},                      // TYPE: GPU
    {0x1002, 4},                      // MAX_COMPUTE_UNITS
    {0x1003, 3},                      // MAX_WORK_ITEM_DIMENSIONS
    {0x100D, 64},                     // ADDRESS_BITS
    {0x1010, std::uint64_t{1} << 29}, // MAX_MEM_ALLOC_SIZE
    {0x1023, 32768},                  // LOCAL_MEM_SIZE
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
  std::uint64_t number = 1;
  for (const auto& [of, value] : values)
    number = of == parameter ? value : number;
  for (const range_row& row : numbers)
    if (row.from <= parameter && parameter <= row.to && row.first <= capability && capability <= row.last)
      return row.size == 4 ? value_answer(static_cast<std::uint32_t>(number)) : value_answer(number);
  for (const text_row& row : texts)
    if (row.parameter == parameter && row.first <= capability)
      return text_answer(row.value);
  return std::nullopt;
}

} // namespace scripted
