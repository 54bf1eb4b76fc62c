// The values of the OpenCL standard that the access layer sends or compares. The parameters of devices have
// their own table (access/opencl/device_parameters.h).
#pragma once

#include <cstdint>

namespace oryn::skerv::common::cl {

inline constexpr std::int32_t success = 0;
inline constexpr std::int32_t build_program_failure = -11;
inline constexpr std::int32_t invalid_mem_object = -38;
inline constexpr std::int32_t invalid_sampler = -41;
inline constexpr std::int32_t invalid_arg_value = -50;
inline constexpr std::int32_t invalid_arg_size = -51;
inline constexpr std::int32_t invalid_device_queue = -70;

inline constexpr std::uint32_t context_devices = 0x1081;

inline constexpr std::uint64_t queue_properties = 0x1093;
inline constexpr std::uint64_t queue_size = 0x1094;
inline constexpr std::uint64_t queue_out_of_order = 1 << 0;
inline constexpr std::uint64_t queue_profiling = 1 << 1;
inline constexpr std::uint64_t queue_on_device = 1 << 2;
inline constexpr std::uint64_t queue_on_device_default = 1 << 3;

inline constexpr std::uint32_t program_devices = 0x1163;
inline constexpr std::uint32_t program_source = 0x1164;
inline constexpr std::uint32_t program_binary_sizes = 0x1165;
inline constexpr std::uint32_t program_binaries = 0x1166;
inline constexpr std::uint32_t program_kernel_names = 0x1168;
inline constexpr std::uint32_t program_il = 0x1169;
inline constexpr std::uint32_t program_build_status = 0x1181;
inline constexpr std::uint32_t program_build_log = 0x1183;

inline constexpr std::uint32_t kernel_function_name = 0x1190;
inline constexpr std::uint32_t kernel_num_args = 0x1191;
inline constexpr std::uint32_t kernel_program = 0x1194;
inline constexpr std::uint32_t kernel_attributes = 0x1195;
inline constexpr std::uint32_t kernel_work_group_size = 0x11B0;
inline constexpr std::uint32_t kernel_compile_work_group_size = 0x11B1;
inline constexpr std::uint32_t kernel_local_mem_size = 0x11B2;
inline constexpr std::uint32_t kernel_preferred_work_group_size_multiple = 0x11B3;
inline constexpr std::uint32_t kernel_global_work_size = 0x11B5;

inline constexpr std::uint32_t event_command_execution_status = 0x11D3;
inline constexpr std::uint32_t profiling_command_start = 0x1282;
inline constexpr std::uint32_t profiling_command_end = 0x1283;

} // namespace oryn::skerv::common::cl
