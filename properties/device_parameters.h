// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The parameters of a device, as OpenCL's clGetDeviceInfo gives them: number, form, and the versions that have them.
// This is the one place that states them. The access layer reads parameters by these rows, and the catalogue of
// devices makes properties of them (properties/device_catalogue.cpp).
#pragma once

#include "properties/version_ranges.h"

#include <cstdint>

namespace oryn::tarva::library {

// What the value of a parameter is.
enum class info_form : std::uint8_t {
  uint32,
  uint64,
  boolean,
  text,
  word_list, // text, split at whitespace
  name_list, // text, split at semicolons
  sizes,     // three numbers
  handle,
};

// A parameter can be a template argument, so that a reading has the C++ type of its form.
struct device_parameter_row {
  std::uint32_t number;
  info_form form;
  version_range versions;
};

// By number.
// clang-format off
namespace device_parameter {

using namespace version_ranges;
using enum info_form;

inline constexpr device_parameter_row type{0x1000, uint64, all};
inline constexpr device_parameter_row vendor_id{0x1001, uint32, all};
inline constexpr device_parameter_row max_compute_units{0x1002, uint32, all};
inline constexpr device_parameter_row max_work_item_dimensions{0x1003, uint32, all};
inline constexpr device_parameter_row max_work_group_size{0x1004, uint64, all};
inline constexpr device_parameter_row max_work_item_sizes{0x1005, sizes, all};
inline constexpr device_parameter_row preferred_vector_width_char{0x1006, uint32, all};
inline constexpr device_parameter_row preferred_vector_width_short{0x1007, uint32, all};
inline constexpr device_parameter_row preferred_vector_width_int{0x1008, uint32, all};
inline constexpr device_parameter_row preferred_vector_width_long{0x1009, uint32, all};
inline constexpr device_parameter_row preferred_vector_width_float{0x100A, uint32, all};
inline constexpr device_parameter_row preferred_vector_width_double{0x100B, uint32, all};
inline constexpr device_parameter_row max_clock_frequency{0x100C, uint32, all};
inline constexpr device_parameter_row address_bits{0x100D, uint32, all};
inline constexpr device_parameter_row max_read_image_args{0x100E, uint32, all};
inline constexpr device_parameter_row max_write_image_args{0x100F, uint32, until_1_2};
inline constexpr device_parameter_row max_mem_alloc_size{0x1010, uint64, all};
inline constexpr device_parameter_row image2d_max_width{0x1011, uint64, all};
inline constexpr device_parameter_row image2d_max_height{0x1012, uint64, all};
inline constexpr device_parameter_row image3d_max_width{0x1013, uint64, all};
inline constexpr device_parameter_row image3d_max_height{0x1014, uint64, all};
inline constexpr device_parameter_row image3d_max_depth{0x1015, uint64, all};
inline constexpr device_parameter_row image_support{0x1016, boolean, all};
inline constexpr device_parameter_row max_parameter_size{0x1017, uint64, all};
inline constexpr device_parameter_row max_samplers{0x1018, uint32, all};
inline constexpr device_parameter_row mem_base_addr_align{0x1019, uint32, all};
inline constexpr device_parameter_row min_data_type_align_size{0x101A, uint32, only_1_1};
inline constexpr device_parameter_row single_fp_config{0x101B, uint64, all};
inline constexpr device_parameter_row global_mem_cache_type{0x101C, uint32, all};
inline constexpr device_parameter_row global_mem_cacheline_size{0x101D, uint32, all};
inline constexpr device_parameter_row global_mem_cache_size{0x101E, uint64, all};
inline constexpr device_parameter_row global_mem_size{0x101F, uint64, all};
inline constexpr device_parameter_row max_constant_buffer_size{0x1020, uint64, all};
inline constexpr device_parameter_row max_constant_args{0x1021, uint32, all};
inline constexpr device_parameter_row local_mem_type{0x1022, uint32, all};
inline constexpr device_parameter_row local_mem_size{0x1023, uint64, all};
inline constexpr device_parameter_row error_correction_support{0x1024, boolean, all};
inline constexpr device_parameter_row profiling_timer_resolution{0x1025, uint64, all};
inline constexpr device_parameter_row endian_little{0x1026, boolean, all};
inline constexpr device_parameter_row available{0x1027, boolean, all};
inline constexpr device_parameter_row compiler_available{0x1028, boolean, all};
inline constexpr device_parameter_row execution_capabilities{0x1029, uint64, all};
inline constexpr device_parameter_row queue_on_host_properties{0x102A, uint64, all};
inline constexpr device_parameter_row name{0x102B, text, all};
inline constexpr device_parameter_row vendor{0x102C, text, all};
inline constexpr device_parameter_row driver_version{0x102D, text, all};
inline constexpr device_parameter_row profile{0x102E, text, all};
inline constexpr device_parameter_row version{0x102F, text, all};
inline constexpr device_parameter_row extensions{0x1030, word_list, all};
inline constexpr device_parameter_row platform{0x1031, handle, from_1_2_to_2_0};
inline constexpr device_parameter_row double_fp_config{0x1032, uint64, all};
inline constexpr device_parameter_row preferred_vector_width_half{0x1034, uint32, from_1_1};
inline constexpr device_parameter_row host_unified_memory{0x1035, boolean, from_1_1_to_1_2};
inline constexpr device_parameter_row native_vector_width_char{0x1036, uint32, from_1_1};
inline constexpr device_parameter_row native_vector_width_short{0x1037, uint32, from_1_1};
inline constexpr device_parameter_row native_vector_width_int{0x1038, uint32, from_1_1};
inline constexpr device_parameter_row native_vector_width_long{0x1039, uint32, from_1_1};
inline constexpr device_parameter_row native_vector_width_float{0x103A, uint32, from_1_1};
inline constexpr device_parameter_row native_vector_width_double{0x103B, uint32, from_1_1};
inline constexpr device_parameter_row native_vector_width_half{0x103C, uint32, from_1_1};
inline constexpr device_parameter_row opencl_c_version{0x103D, text, from_1_1};
inline constexpr device_parameter_row linker_available{0x103E, boolean, from_1_2};
inline constexpr device_parameter_row built_in_kernels{0x103F, name_list, from_1_2};
inline constexpr device_parameter_row image_max_buffer_size{0x1040, uint64, from_1_2};
inline constexpr device_parameter_row image_max_array_size{0x1041, uint64, from_1_2};
inline constexpr device_parameter_row preferred_interop_user_sync{0x1048, boolean, from_1_2};
inline constexpr device_parameter_row printf_buffer_size{0x1049, uint64, from_1_2};
inline constexpr device_parameter_row image_pitch_alignment{0x104A, uint32, from_2_0};
inline constexpr device_parameter_row image_base_address_alignment{0x104B, uint32, from_2_0};
inline constexpr device_parameter_row max_read_write_image_args{0x104C, uint32, from_2_0};
inline constexpr device_parameter_row max_global_variable_size{0x104D, uint64, from_2_0};
inline constexpr device_parameter_row queue_on_device_properties{0x104E, uint64, from_2_0};
inline constexpr device_parameter_row queue_on_device_preferred_size{0x104F, uint32, from_2_0};
inline constexpr device_parameter_row queue_on_device_max_size{0x1050, uint32, from_2_0};
inline constexpr device_parameter_row max_on_device_queues{0x1051, uint32, from_2_0};
inline constexpr device_parameter_row max_on_device_events{0x1052, uint32, from_2_0};
inline constexpr device_parameter_row svm_capabilities{0x1053, uint64, from_2_0};
inline constexpr device_parameter_row global_variable_preferred_total_size{0x1054, uint64, from_2_0};
inline constexpr device_parameter_row max_pipe_args{0x1055, uint32, from_2_0};
inline constexpr device_parameter_row pipe_max_active_reservations{0x1056, uint32, from_2_0};
inline constexpr device_parameter_row pipe_max_packet_size{0x1057, uint32, from_2_0};
inline constexpr device_parameter_row preferred_platform_atomic_alignment{0x1058, uint32, from_2_0};
inline constexpr device_parameter_row preferred_global_atomic_alignment{0x1059, uint32, from_2_0};
inline constexpr device_parameter_row preferred_local_atomic_alignment{0x105A, uint32, from_2_0};
inline constexpr device_parameter_row il_version{0x105B, text, from_2_1};
inline constexpr device_parameter_row max_num_sub_groups{0x105C, uint32, from_2_1};
inline constexpr device_parameter_row sub_group_independent_forward_progress{0x105D, boolean, from_2_1};
// Of OpenCL 3.0, whose devices are used as ones of 2.x: asked of a device that says that it is later than 2.x.
inline constexpr device_parameter_row non_uniform_work_group_support{0x1065, boolean, from_2_0};
inline constexpr device_parameter_row spir_versions{0x40E0, word_list, from_1_2};

} // namespace device_parameter
// clang-format on

enum class flag_test : std::uint8_t {
  equals,  // the parameter's value is the operand
  has_bit, // the operand is one bit of the parameter's value
};

// One statement about a device that is packed into a parameter.
struct device_flag_row {
  device_parameter_row parameter;
  flag_test test;
  std::uint64_t operand;
  version_range versions;
};

// clang-format off
// By parameter. A type or a cache is one of several values; all others are bits.
namespace device_flag {

using namespace version_ranges;
using enum flag_test;

inline constexpr device_flag_row type_default{device_parameter::type, equals, 0x1, all};
inline constexpr device_flag_row type_cpu{device_parameter::type, equals, 0x2, all};
inline constexpr device_flag_row type_gpu{device_parameter::type, equals, 0x4, all};
inline constexpr device_flag_row type_accelerator{device_parameter::type, equals, 0x8, all};
inline constexpr device_flag_row type_custom{device_parameter::type, equals, 0x10, from_1_2};
inline constexpr device_flag_row single_fp_denorm{device_parameter::single_fp_config, has_bit, 0x1, all};
inline constexpr device_flag_row single_fp_inf_nan{device_parameter::single_fp_config, has_bit, 0x2, all};
inline constexpr device_flag_row single_fp_round_to_nearest{device_parameter::single_fp_config, has_bit, 0x4, all};
inline constexpr device_flag_row single_fp_round_to_zero{device_parameter::single_fp_config, has_bit, 0x8, all};
inline constexpr device_flag_row single_fp_round_to_inf{device_parameter::single_fp_config, has_bit, 0x10, all};
inline constexpr device_flag_row single_fp_fma{device_parameter::single_fp_config, has_bit, 0x20, all};
inline constexpr device_flag_row single_fp_software_emulated{device_parameter::single_fp_config, has_bit, 0x40, from_1_1};
inline constexpr device_flag_row single_fp_correctly_rounded_divide_sqrt{device_parameter::single_fp_config, has_bit, 0x80, from_1_2};
inline constexpr device_flag_row double_fp_denorm{device_parameter::double_fp_config, has_bit, 0x1, all};
inline constexpr device_flag_row double_fp_inf_nan{device_parameter::double_fp_config, has_bit, 0x2, all};
inline constexpr device_flag_row double_fp_round_to_nearest{device_parameter::double_fp_config, has_bit, 0x4, all};
inline constexpr device_flag_row double_fp_round_to_zero{device_parameter::double_fp_config, has_bit, 0x8, all};
inline constexpr device_flag_row double_fp_round_to_inf{device_parameter::double_fp_config, has_bit, 0x10, all};
inline constexpr device_flag_row double_fp_fma{device_parameter::double_fp_config, has_bit, 0x20, all};
inline constexpr device_flag_row double_fp_software_emulated{device_parameter::double_fp_config, has_bit, 0x40, from_1_1};
inline constexpr device_flag_row global_mem_cache_none{device_parameter::global_mem_cache_type, equals, 0x0, all};
inline constexpr device_flag_row global_mem_cache_read_only{device_parameter::global_mem_cache_type, equals, 0x1, all};
inline constexpr device_flag_row global_mem_cache_read_write{device_parameter::global_mem_cache_type, equals, 0x2, all};
inline constexpr device_flag_row exec_kernel{device_parameter::execution_capabilities, has_bit, 0x1, all};
inline constexpr device_flag_row exec_native_kernel{device_parameter::execution_capabilities, has_bit, 0x2, all};
inline constexpr device_flag_row queue_on_host_out_of_order{device_parameter::queue_on_host_properties, has_bit, 0x1, all};
inline constexpr device_flag_row queue_on_host_profiling{device_parameter::queue_on_host_properties, has_bit, 0x2, all};
inline constexpr device_flag_row queue_on_device_out_of_order{device_parameter::queue_on_device_properties, has_bit, 0x1, from_2_0};
inline constexpr device_flag_row queue_on_device_profiling{device_parameter::queue_on_device_properties, has_bit, 0x2, from_2_0};
inline constexpr device_flag_row svm_coarse_grain_buffer{device_parameter::svm_capabilities, has_bit, 0x1, from_2_0};
inline constexpr device_flag_row svm_fine_grain_buffer{device_parameter::svm_capabilities, has_bit, 0x2, from_2_0};
inline constexpr device_flag_row svm_fine_grain_system{device_parameter::svm_capabilities, has_bit, 0x4, from_2_0};
inline constexpr device_flag_row svm_atomics{device_parameter::svm_capabilities, has_bit, 0x8, from_2_0};
inline constexpr device_flag_row dedicated_local_memory{device_parameter::local_mem_type, equals, 0x1, all};

} // namespace device_flag
// clang-format on

} // namespace oryn::tarva::library
