// What a device tells in the bits, or as one of the values, of a parameter.
#pragma once

#include "access/opencl/device_parameters.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace oryn::skerv::opencl {

enum class flag_test { equals, has_bit };

enum class device_flag {
  type_default,
  type_cpu,
  type_gpu,
  type_accelerator,
  type_custom,
  single_fp_denorm,
  single_fp_inf_nan,
  single_fp_round_to_nearest,
  single_fp_round_to_zero,
  single_fp_round_to_inf,
  single_fp_fma,
  single_fp_software_emulated,
  single_fp_correctly_rounded_divide_sqrt,
  double_fp_denorm,
  double_fp_inf_nan,
  double_fp_round_to_nearest,
  double_fp_round_to_zero,
  double_fp_round_to_inf,
  double_fp_fma,
  double_fp_software_emulated,
  global_mem_cache_none,
  global_mem_cache_read_only,
  global_mem_cache_read_write,
  exec_kernel,
  exec_native_kernel,
  queue_on_host_out_of_order,
  queue_on_host_profiling,
  queue_on_device_out_of_order,
  queue_on_device_profiling,
  svm_coarse_grain_buffer,
  svm_fine_grain_buffer,
  svm_fine_grain_system,
  svm_atomics,
  dedicated_local_memory,
};

struct device_flag_row {
  device_flag flag;
  device_parameter parameter;
  flag_test test;
  std::uint64_t operand;
  version first;
};

// clang-format off
inline constexpr std::array<device_flag_row, 34> device_flag_table{{
    {device_flag::type_default, device_parameter::type, flag_test::equals, 0x1, version::v1_0},
    {device_flag::type_cpu, device_parameter::type, flag_test::equals, 0x2, version::v1_0},
    {device_flag::type_gpu, device_parameter::type, flag_test::equals, 0x4, version::v1_0},
    {device_flag::type_accelerator, device_parameter::type, flag_test::equals, 0x8, version::v1_0},
    {device_flag::type_custom, device_parameter::type, flag_test::equals, 0x10, version::v1_2},
    {device_flag::single_fp_denorm, device_parameter::single_fp_config, flag_test::has_bit, 0x1, version::v1_0},
    {device_flag::single_fp_inf_nan, device_parameter::single_fp_config, flag_test::has_bit, 0x2, version::v1_0},
    {device_flag::single_fp_round_to_nearest, device_parameter::single_fp_config, flag_test::has_bit, 0x4, version::v1_0},
    {device_flag::single_fp_round_to_zero, device_parameter::single_fp_config, flag_test::has_bit, 0x8, version::v1_0},
    {device_flag::single_fp_round_to_inf, device_parameter::single_fp_config, flag_test::has_bit, 0x10, version::v1_0},
    {device_flag::single_fp_fma, device_parameter::single_fp_config, flag_test::has_bit, 0x20, version::v1_0},
    {device_flag::single_fp_software_emulated, device_parameter::single_fp_config, flag_test::has_bit, 0x40, version::v1_1},
    {device_flag::single_fp_correctly_rounded_divide_sqrt, device_parameter::single_fp_config, flag_test::has_bit, 0x80, version::v1_2},
    {device_flag::double_fp_denorm, device_parameter::double_fp_config, flag_test::has_bit, 0x1, version::v1_0},
    {device_flag::double_fp_inf_nan, device_parameter::double_fp_config, flag_test::has_bit, 0x2, version::v1_0},
    {device_flag::double_fp_round_to_nearest, device_parameter::double_fp_config, flag_test::has_bit, 0x4, version::v1_0},
    {device_flag::double_fp_round_to_zero, device_parameter::double_fp_config, flag_test::has_bit, 0x8, version::v1_0},
    {device_flag::double_fp_round_to_inf, device_parameter::double_fp_config, flag_test::has_bit, 0x10, version::v1_0},
    {device_flag::double_fp_fma, device_parameter::double_fp_config, flag_test::has_bit, 0x20, version::v1_0},
    {device_flag::double_fp_software_emulated, device_parameter::double_fp_config, flag_test::has_bit, 0x40, version::v1_1},
    {device_flag::global_mem_cache_none, device_parameter::global_mem_cache_type, flag_test::equals, 0x0, version::v1_0},
    {device_flag::global_mem_cache_read_only, device_parameter::global_mem_cache_type, flag_test::equals, 0x1, version::v1_0},
    {device_flag::global_mem_cache_read_write, device_parameter::global_mem_cache_type, flag_test::equals, 0x2, version::v1_0},
    {device_flag::exec_kernel, device_parameter::execution_capabilities, flag_test::has_bit, 0x1, version::v1_0},
    {device_flag::exec_native_kernel, device_parameter::execution_capabilities, flag_test::has_bit, 0x2, version::v1_0},
    {device_flag::queue_on_host_out_of_order, device_parameter::queue_on_host_properties, flag_test::has_bit, 0x1, version::v1_0},
    {device_flag::queue_on_host_profiling, device_parameter::queue_on_host_properties, flag_test::has_bit, 0x2, version::v1_0},
    {device_flag::queue_on_device_out_of_order, device_parameter::queue_on_device_properties, flag_test::has_bit, 0x1, version::v2_0},
    {device_flag::queue_on_device_profiling, device_parameter::queue_on_device_properties, flag_test::has_bit, 0x2, version::v2_0},
    {device_flag::svm_coarse_grain_buffer, device_parameter::svm_capabilities, flag_test::has_bit, 0x1, version::v2_0},
    {device_flag::svm_fine_grain_buffer, device_parameter::svm_capabilities, flag_test::has_bit, 0x2, version::v2_0},
    {device_flag::svm_fine_grain_system, device_parameter::svm_capabilities, flag_test::has_bit, 0x4, version::v2_0},
    {device_flag::svm_atomics, device_parameter::svm_capabilities, flag_test::has_bit, 0x8, version::v2_0},
    {device_flag::dedicated_local_memory, device_parameter::local_mem_type, flag_test::equals, 0x1, version::v1_0},
}};
// clang-format on

constexpr const device_flag_row& row_of(device_flag flag) {
  return device_flag_table[static_cast<std::size_t>(flag)];
}

constexpr bool device_flag_table_is_in_order() {
  for (std::size_t i = 0; i < device_flag_table.size(); ++i)
    if (static_cast<std::size_t>(device_flag_table[i].flag) != i)
      return false;
  return true;
}
static_assert(device_flag_table_is_in_order(), "row_of() indexes the table by flag");

template <version V, device_flag Flag>
concept device_has_flag = V >= row_of(Flag).first;

} // namespace oryn::skerv::opencl
