// What the simulated devices answer to clGetDeviceInfo: each parameter exists under the capabilities that
// read it.
#include "tests/scripted/scripted_machine.h"

namespace scripted {

namespace {

struct number_row {
  std::uint32_t parameter;
  unsigned size;
  std::uint64_t value;
  std::uint32_t first = 1, last = 6;
};

constexpr number_row NUMBERS[] = {
    {0x1000, 8, 4},                      // TYPE: GPU
    {0x1001, 4, 0x1234},                 // VENDOR_ID
    {0x1002, 4, 4},                      // MAX_COMPUTE_UNITS
    {0x1003, 4, 3},                      // MAX_WORK_ITEM_DIMENSIONS
    {0x1006, 4, 16},                     // PREFERRED_VECTOR_WIDTH_CHAR
    {0x1007, 4, 8},                      // ..._SHORT
    {0x1008, 4, 4},                      // ..._INT
    {0x1009, 4, 2},                      // ..._LONG
    {0x100A, 4, 4},                      // ..._FLOAT
    {0x100B, 4, 2},                      // ..._DOUBLE
    {0x100C, 4, 1000},                   // MAX_CLOCK_FREQUENCY
    {0x100D, 4, 64},                     // ADDRESS_BITS
    {0x100E, 4, 128},                    // MAX_READ_IMAGE_ARGS
    {0x100F, 4, 8, 1, 3},                // MAX_WRITE_IMAGE_ARGS
    {0x1010, 8, std::uint64_t{1} << 29}, // MAX_MEM_ALLOC_SIZE
    {0x1011, 8, 8192},                   // IMAGE2D_MAX_WIDTH
    {0x1012, 8, 8192},                   // IMAGE2D_MAX_HEIGHT
    {0x1013, 8, 2048},                   // IMAGE3D_MAX_WIDTH
    {0x1014, 8, 2048},                   // IMAGE3D_MAX_HEIGHT
    {0x1015, 8, 2048},                   // IMAGE3D_MAX_DEPTH
    {0x1016, 4, 1},                      // IMAGE_SUPPORT
    {0x1017, 8, 1024},                   // MAX_PARAMETER_SIZE
    {0x1018, 4, 16},                     // MAX_SAMPLERS
    {0x1019, 4, 1024},                   // MEM_BASE_ADDR_ALIGN
    {0x101A, 4, 128, 2, 2},              // MIN_DATA_TYPE_ALIGN_SIZE
    {0x101B, 8, 0x3F},                   // SINGLE_FP_CONFIG
    {0x101C, 4, 2},                      // GLOBAL_MEM_CACHE_TYPE
    {0x101D, 4, 64},                     // GLOBAL_MEM_CACHELINE_SIZE
    {0x101E, 8, 1 << 20},                // GLOBAL_MEM_CACHE_SIZE
    {0x101F, 8, std::uint64_t{1} << 30}, // GLOBAL_MEM_SIZE
    {0x1020, 8, 65536},                  // MAX_CONSTANT_BUFFER_SIZE
    {0x1021, 4, 8},                      // MAX_CONSTANT_ARGS
    {0x1022, 4, 1},                      // LOCAL_MEM_TYPE: local
    {0x1023, 8, 32768},                  // LOCAL_MEM_SIZE
    {0x1024, 4, 0},                      // ERROR_CORRECTION_SUPPORT
    {0x1025, 8, 1},                      // PROFILING_TIMER_RESOLUTION
    {0x1027, 4, 1},                      // AVAILABLE
    {0x1028, 4, 1},                      // COMPILER_AVAILABLE
    {0x1029, 8, 1},                      // EXECUTION_CAPABILITIES
    {0x102A, 8, 2},                      // QUEUE_(ON_HOST_)PROPERTIES: profiling
    {0x1031, 8, 0x9000},                 // PLATFORM
    {0x1032, 8, 0x3F},                   // DOUBLE_FP_CONFIG
    {0x1034, 4, 8, 2},                   // PREFERRED_VECTOR_WIDTH_HALF
    {0x1035, 4, 0, 2, 3},                // HOST_UNIFIED_MEMORY
    {0x1036, 4, 16, 2},                  // NATIVE_VECTOR_WIDTH_CHAR
    {0x1037, 4, 8, 2},                   // ..._SHORT
    {0x1038, 4, 4, 2},                   // ..._INT
    {0x1039, 4, 2, 2},                   // ..._LONG
    {0x103A, 4, 4, 2},                   // ..._FLOAT
    {0x103B, 4, 2, 2},                   // ..._DOUBLE
    {0x103C, 4, 8, 2},                   // ..._HALF
    {0x103E, 4, 1, 3},                   // LINKER_AVAILABLE
    {0x1040, 8, 65536, 3},               // IMAGE_MAX_BUFFER_SIZE
    {0x1041, 8, 2048, 3},                // IMAGE_MAX_ARRAY_SIZE
    {0x1048, 4, 1, 3},                   // PREFERRED_INTEROP_USER_SYNC
    {0x1049, 8, 1 << 20, 3},             // PRINTF_BUFFER_SIZE
    {0x104A, 4, 64, 4},                  // IMAGE_PITCH_ALIGNMENT
    {0x104B, 4, 64, 4},                  // IMAGE_BASE_ADDRESS_ALIGNMENT
    {0x104C, 4, 64, 4},                  // MAX_READ_WRITE_IMAGE_ARGS
    {0x104D, 8, 65536, 4},               // MAX_GLOBAL_VARIABLE_SIZE
    {0x104E, 8, 3, 4},                   // QUEUE_ON_DEVICE_PROPERTIES
    {0x104F, 4, 16384, 4},               // QUEUE_ON_DEVICE_PREFERRED_SIZE
    {0x1050, 4, 262144, 4},              // QUEUE_ON_DEVICE_MAX_SIZE
    {0x1051, 4, 1, 4},                   // MAX_ON_DEVICE_QUEUES
    {0x1052, 4, 1024, 4},                // MAX_ON_DEVICE_EVENTS
    {0x1053, 8, 1, 4},                   // SVM_CAPABILITIES
    {0x1054, 8, 65536, 4},               // GLOBAL_VARIABLE_PREFERRED_TOTAL_SIZE
    {0x1055, 4, 16, 4},                  // MAX_PIPE_ARGS
    {0x1056, 4, 1, 4},                   // PIPE_MAX_ACTIVE_RESERVATIONS
    {0x1057, 4, 1024, 4},                // PIPE_MAX_PACKET_SIZE
    {0x1058, 4, 0, 4},                   // PREFERRED_PLATFORM_ATOMIC_ALIGNMENT
    {0x1059, 4, 0, 4},                   // PREFERRED_GLOBAL_ATOMIC_ALIGNMENT
    {0x105A, 4, 0, 4},                   // PREFERRED_LOCAL_ATOMIC_ALIGNMENT
    {0x105C, 4, 32, 5},                  // MAX_NUM_SUB_GROUPS
    {0x105D, 4, 1, 5},                   // SUB_GROUP_INDEPENDENT_FORWARD_PROGRESS
};

struct text_row {
  std::uint32_t parameter;
  const char* value;
  std::uint32_t first = 1;
};

constexpr text_row TEXTS[] = {
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

std::optional<info_answer> device_info(const device& device, std::uint32_t capability,
                                       std::uint32_t parameter) {
  if (const auto own = device.options.info.find(parameter); own != device.options.info.end())
    return own->second;
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
  for (const number_row& row : NUMBERS)
    if (row.parameter == parameter && row.first <= capability && capability <= row.last)
      return row.size == 4 ? value_answer(static_cast<std::uint32_t>(row.value)) : value_answer(row.value);
  for (const text_row& row : TEXTS)
    if (row.parameter == parameter && row.first <= capability)
      return text_answer(row.value);
  return std::nullopt;
}

std::int32_t answer_query(const info_answer& answer, std::size_t size, void* value, std::size_t* size_out) {
  if (answer.status != 0)
    return answer.status;
  if (value == nullptr) {
    if (size_out != nullptr)
      *size_out = answer.announced.value_or(answer.data.size());
    return 0;
  }
  if (size < answer.data.size())
    return INVALID_VALUE;
  if (!answer.data.empty())
    std::memcpy(value, answer.data.data(), answer.data.size());
  if (size_out != nullptr)
    *size_out = answer.reported.value_or(answer.data.size());
  return 0;
}

} // namespace scripted
