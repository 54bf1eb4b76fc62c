// The parameters of a device: number, form, and the versions that read them.
#pragma once

#include "access/opencl/version.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace oryn::skerv::opencl {

enum class info_form {
  uint32,
  uint64,
  boolean,
  text,
  word_list, // text, split at whitespace
  name_list, // text, split at semicolons
  sizes,     // three numbers
  handle,
};

// clang-format off
enum class device_parameter : std::uint32_t {
  vendor_id = 0x1001,
  max_compute_units = 0x1002,
  max_work_item_dimensions = 0x1003,
  preferred_vector_width_char = 0x1006,
  preferred_vector_width_short = 0x1007,
  preferred_vector_width_int = 0x1008,
  preferred_vector_width_long = 0x1009,
  preferred_vector_width_float = 0x100A,
  preferred_vector_width_double = 0x100B,
  max_clock_frequency = 0x100C,
  address_bits = 0x100D,
  max_read_image_args = 0x100E,
  max_write_image_args = 0x100F,
  max_samplers = 0x1018,
  mem_base_addr_align = 0x1019,
  global_mem_cacheline_size = 0x101D,
  max_constant_args = 0x1021,
  global_mem_cache_type = 0x101C,
  local_mem_type = 0x1022,
  preferred_vector_width_half = 0x1034,
  native_vector_width_char = 0x1036,
  native_vector_width_short = 0x1037,
  native_vector_width_int = 0x1038,
  native_vector_width_long = 0x1039,
  native_vector_width_float = 0x103A,
  native_vector_width_double = 0x103B,
  native_vector_width_half = 0x103C,
  min_data_type_align_size = 0x101A,
  max_read_write_image_args = 0x104C,
  image_pitch_alignment = 0x104A,
  image_base_address_alignment = 0x104B,
  max_pipe_args = 0x1055,
  pipe_max_active_reservations = 0x1056,
  pipe_max_packet_size = 0x1057,
  queue_on_device_preferred_size = 0x104F,
  queue_on_device_max_size = 0x1050,
  max_on_device_queues = 0x1051,
  max_on_device_events = 0x1052,
  preferred_platform_atomic_alignment = 0x1058,
  preferred_global_atomic_alignment = 0x1059,
  preferred_local_atomic_alignment = 0x105A,
  max_num_sub_groups = 0x105C,
  type = 0x1000,
  max_work_group_size = 0x1004,
  max_mem_alloc_size = 0x1010,
  image2d_max_width = 0x1011,
  image2d_max_height = 0x1012,
  image3d_max_width = 0x1013,
  image3d_max_height = 0x1014,
  image3d_max_depth = 0x1015,
  max_parameter_size = 0x1017,
  single_fp_config = 0x101B,
  double_fp_config = 0x1032,
  global_mem_cache_size = 0x101E,
  global_mem_size = 0x101F,
  max_constant_buffer_size = 0x1020,
  local_mem_size = 0x1023,
  profiling_timer_resolution = 0x1025,
  execution_capabilities = 0x1029,
  queue_on_host_properties = 0x102A,
  image_max_buffer_size = 0x1040,
  image_max_array_size = 0x1041,
  printf_buffer_size = 0x1049,
  max_global_variable_size = 0x104D,
  global_variable_preferred_total_size = 0x1054,
  queue_on_device_properties = 0x104E,
  svm_capabilities = 0x1053,
  image_support = 0x1016,
  error_correction_support = 0x1024,
  endian_little = 0x1026,
  available = 0x1027,
  compiler_available = 0x1028,
  host_unified_memory = 0x1035,
  linker_available = 0x103E,
  preferred_interop_user_sync = 0x1048,
  sub_group_independent_forward_progress = 0x105D,
  name = 0x102B,
  vendor = 0x102C,
  driver_version = 0x102D,
  profile = 0x102E,
  version = 0x102F,
  opencl_c_version = 0x103D,
  il_version = 0x105B,
  extensions = 0x1030,
  spir_versions = 0x40E0,
  built_in_kernels = 0x103F,
  max_work_item_sizes = 0x1005,
  platform = 0x1031,
};

struct device_parameter_row {
  device_parameter parameter;
  info_form form;
  version first;
  version last;
};

inline constexpr std::array<device_parameter_row, 88> device_parameter_table{{
    {device_parameter::vendor_id, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::max_compute_units, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::max_work_item_dimensions, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::preferred_vector_width_char, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::preferred_vector_width_short, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::preferred_vector_width_int, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::preferred_vector_width_long, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::preferred_vector_width_float, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::preferred_vector_width_double, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::max_clock_frequency, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::address_bits, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::max_read_image_args, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::max_write_image_args, info_form::uint32, version::v1_0, version::v1_2},
    {device_parameter::max_samplers, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::mem_base_addr_align, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::global_mem_cacheline_size, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::max_constant_args, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::global_mem_cache_type, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::local_mem_type, info_form::uint32, version::v1_0, version::v2_2},
    {device_parameter::preferred_vector_width_half, info_form::uint32, version::v1_1, version::v2_2},
    {device_parameter::native_vector_width_char, info_form::uint32, version::v1_1, version::v2_2},
    {device_parameter::native_vector_width_short, info_form::uint32, version::v1_1, version::v2_2},
    {device_parameter::native_vector_width_int, info_form::uint32, version::v1_1, version::v2_2},
    {device_parameter::native_vector_width_long, info_form::uint32, version::v1_1, version::v2_2},
    {device_parameter::native_vector_width_float, info_form::uint32, version::v1_1, version::v2_2},
    {device_parameter::native_vector_width_double, info_form::uint32, version::v1_1, version::v2_2},
    {device_parameter::native_vector_width_half, info_form::uint32, version::v1_1, version::v2_2},
    {device_parameter::min_data_type_align_size, info_form::uint32, version::v1_1, version::v1_1},
    {device_parameter::max_read_write_image_args, info_form::uint32, version::v2_0, version::v2_2},
    {device_parameter::image_pitch_alignment, info_form::uint32, version::v2_0, version::v2_2},
    {device_parameter::image_base_address_alignment, info_form::uint32, version::v2_0, version::v2_2},
    {device_parameter::max_pipe_args, info_form::uint32, version::v2_0, version::v2_2},
    {device_parameter::pipe_max_active_reservations, info_form::uint32, version::v2_0, version::v2_2},
    {device_parameter::pipe_max_packet_size, info_form::uint32, version::v2_0, version::v2_2},
    {device_parameter::queue_on_device_preferred_size, info_form::uint32, version::v2_0, version::v2_2},
    {device_parameter::queue_on_device_max_size, info_form::uint32, version::v2_0, version::v2_2},
    {device_parameter::max_on_device_queues, info_form::uint32, version::v2_0, version::v2_2},
    {device_parameter::max_on_device_events, info_form::uint32, version::v2_0, version::v2_2},
    {device_parameter::preferred_platform_atomic_alignment, info_form::uint32, version::v2_0, version::v2_2},
    {device_parameter::preferred_global_atomic_alignment, info_form::uint32, version::v2_0, version::v2_2},
    {device_parameter::preferred_local_atomic_alignment, info_form::uint32, version::v2_0, version::v2_2},
    {device_parameter::max_num_sub_groups, info_form::uint32, version::v2_1, version::v2_2},
    {device_parameter::type, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::max_work_group_size, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::max_mem_alloc_size, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::image2d_max_width, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::image2d_max_height, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::image3d_max_width, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::image3d_max_height, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::image3d_max_depth, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::max_parameter_size, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::single_fp_config, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::double_fp_config, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::global_mem_cache_size, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::global_mem_size, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::max_constant_buffer_size, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::local_mem_size, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::profiling_timer_resolution, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::execution_capabilities, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::queue_on_host_properties, info_form::uint64, version::v1_0, version::v2_2},
    {device_parameter::image_max_buffer_size, info_form::uint64, version::v1_2, version::v2_2},
    {device_parameter::image_max_array_size, info_form::uint64, version::v1_2, version::v2_2},
    {device_parameter::printf_buffer_size, info_form::uint64, version::v1_2, version::v2_2},
    {device_parameter::max_global_variable_size, info_form::uint64, version::v2_0, version::v2_2},
    {device_parameter::global_variable_preferred_total_size, info_form::uint64, version::v2_0, version::v2_2},
    {device_parameter::queue_on_device_properties, info_form::uint64, version::v2_0, version::v2_2},
    {device_parameter::svm_capabilities, info_form::uint64, version::v2_0, version::v2_2},
    {device_parameter::image_support, info_form::boolean, version::v1_0, version::v2_2},
    {device_parameter::error_correction_support, info_form::boolean, version::v1_0, version::v2_2},
    {device_parameter::endian_little, info_form::boolean, version::v1_0, version::v2_2},
    {device_parameter::available, info_form::boolean, version::v1_0, version::v2_2},
    {device_parameter::compiler_available, info_form::boolean, version::v1_0, version::v2_2},
    {device_parameter::host_unified_memory, info_form::boolean, version::v1_1, version::v1_2},
    {device_parameter::linker_available, info_form::boolean, version::v1_2, version::v2_2},
    {device_parameter::preferred_interop_user_sync, info_form::boolean, version::v1_2, version::v2_2},
    {device_parameter::sub_group_independent_forward_progress, info_form::boolean, version::v2_1, version::v2_2},
    {device_parameter::name, info_form::text, version::v1_0, version::v2_2},
    {device_parameter::vendor, info_form::text, version::v1_0, version::v2_2},
    {device_parameter::driver_version, info_form::text, version::v1_0, version::v2_2},
    {device_parameter::profile, info_form::text, version::v1_0, version::v2_2},
    {device_parameter::version, info_form::text, version::v1_0, version::v2_2},
    {device_parameter::opencl_c_version, info_form::text, version::v1_1, version::v2_2},
    {device_parameter::il_version, info_form::text, version::v2_1, version::v2_2},
    {device_parameter::extensions, info_form::word_list, version::v1_0, version::v2_2},
    {device_parameter::spir_versions, info_form::word_list, version::v1_2, version::v2_2},
    {device_parameter::built_in_kernels, info_form::name_list, version::v1_2, version::v2_2},
    {device_parameter::max_work_item_sizes, info_form::sizes, version::v1_0, version::v2_2},
    {device_parameter::platform, info_form::handle, version::v1_2, version::v2_0},
}};
// clang-format on

constexpr const device_parameter_row& row_of(device_parameter parameter) {
  std::size_t i = 0;
  while (device_parameter_table[i].parameter != parameter)
    ++i;
  return device_parameter_table[i];
}

template <version V, device_parameter Parameter>
concept device_has_parameter = V >= row_of(Parameter).first&& V <= row_of(Parameter).last;

template <info_form>
struct form_value;
template <>
struct form_value<info_form::uint32> {
  using type = std::uint32_t;
};
template <>
struct form_value<info_form::uint64> {
  using type = std::uint64_t;
};
template <>
struct form_value<info_form::boolean> {
  using type = bool;
};
template <>
struct form_value<info_form::text> {
  using type = std::string;
};
template <>
struct form_value<info_form::word_list> {
  using type = std::vector<std::string>;
};
template <>
struct form_value<info_form::name_list> {
  using type = std::vector<std::string>;
};
template <>
struct form_value<info_form::sizes> {
  using type = std::array<std::uint64_t, 3>;
};
template <>
struct form_value<info_form::handle> {
  using type = void*;
};

template <device_parameter Parameter>
using device_value = typename form_value<row_of(Parameter).form>::type;

} // namespace oryn::skerv::opencl
