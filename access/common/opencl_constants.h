// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The values of the OpenCL standard that the access layer and the floors above it send or compare. OpenCL's own
// headers are not used here: only the capability library speaks OpenCL itself. The parameters of devices have a table
// of their own (properties/device_parameters.h), and so have the statuses with their texts
// (access/common/status_table.h).
#pragma once

#include <cstdint>

namespace oryn::skerv::common::cl {

// Statuses that mean something particular to the caller.
inline constexpr std::int32_t success = 0;
inline constexpr std::int32_t build_program_failure = -11;
inline constexpr std::int32_t invalid_mem_object = -38;
inline constexpr std::int32_t invalid_sampler = -41;
inline constexpr std::int32_t invalid_arg_value = -50;
inline constexpr std::int32_t invalid_arg_size = -51;
inline constexpr std::int32_t invalid_device_queue = -70;

// What a context is asked for, and how its buffers are made.
inline constexpr std::uint32_t context_devices = 0x1081;
inline constexpr std::uint64_t mem_read_write = 1 << 0;

// What a command queue is made with: the words of its property list, and the bits of `queue_properties`.
inline constexpr std::uint64_t queue_properties = 0x1093;
inline constexpr std::uint64_t queue_size = 0x1094;
inline constexpr std::uint64_t queue_out_of_order = 1 << 0;
inline constexpr std::uint64_t queue_profiling = 1 << 1;
inline constexpr std::uint64_t queue_on_device = 1 << 2;
inline constexpr std::uint64_t queue_on_device_default = 1 << 3;

// What a program is asked for. The last two ask about its build for one device.
inline constexpr std::uint32_t program_devices = 0x1163;
inline constexpr std::uint32_t program_source = 0x1164;
inline constexpr std::uint32_t program_binary_sizes = 0x1165;
inline constexpr std::uint32_t program_binaries = 0x1166;
inline constexpr std::uint32_t program_kernel_names = 0x1168;
inline constexpr std::uint32_t program_il = 0x1169;
inline constexpr std::uint32_t program_build_status = 0x1181;
inline constexpr std::uint32_t program_build_log = 0x1183;

// What a kernel is asked for. Those from the work-group size on ask about one device.
inline constexpr std::uint32_t kernel_function_name = 0x1190;
inline constexpr std::uint32_t kernel_num_args = 0x1191;
inline constexpr std::uint32_t kernel_program = 0x1194;
inline constexpr std::uint32_t kernel_attributes = 0x1195;
inline constexpr std::uint32_t kernel_work_group_size = 0x11B0;
inline constexpr std::uint32_t kernel_compile_work_group_size = 0x11B1;
inline constexpr std::uint32_t kernel_local_mem_size = 0x11B2;
inline constexpr std::uint32_t kernel_preferred_work_group_size_multiple = 0x11B3;
inline constexpr std::uint32_t kernel_global_work_size = 0x11B5;

// What an event is asked for: whether its command has failed, and when it ran.
inline constexpr std::uint32_t event_command_execution_status = 0x11D3;
inline constexpr std::uint32_t profiling_command_start = 0x1282;
inline constexpr std::uint32_t profiling_command_end = 0x1283;

} // namespace oryn::skerv::common::cl
