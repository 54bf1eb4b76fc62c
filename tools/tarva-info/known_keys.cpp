// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "tools/tarva-info/known_keys.h"

#include <algorithm>

namespace tarva_info {
namespace {

constexpr std::string_view opencl = "OPENCL";

// clang-format off
constexpr known_key known_keys[] = {
    {"FRIENDLY_SHORT_DESCRIPTION", "ROOT"},
    {"FRIENDLY_SUMMARY", "ROOT"},
    {"NAME", "ROOT"},
    {"OBJECT_ID", "ROOT"},
    {"OPENCL", "ROOT"},
    {"CL_DEVICE_TYPE_DEFAULT", opencl, section::identity},
    {"CL_DEVICE_TYPE_CPU", opencl, section::identity},
    {"CL_DEVICE_TYPE_GPU", opencl, section::identity},
    {"CL_DEVICE_TYPE_ACCELERATOR", opencl, section::identity},
    {"CL_DEVICE_TYPE_CUSTOM", opencl, section::identity},
    {"CL_DEVICE_VENDOR_ID", opencl, section::identity},
    {"CL_DEVICE_MAX_COMPUTE_UNITS", opencl, section::compute},
    {"CL_DEVICE_MAX_WORK_ITEM_DIMENSIONS", opencl, section::compute},
    {"CL_DEVICE_MAX_WORK_GROUP_SIZE", opencl, section::compute},
    {"CL_DEVICE_MAX_WORK_ITEM_SIZES", opencl, section::compute, unit::list},
    {"CL_DEVICE_PREFERRED_VECTOR_WIDTH_CHAR", opencl, section::vectors},
    {"CL_DEVICE_PREFERRED_VECTOR_WIDTH_SHORT", opencl, section::vectors},
    {"CL_DEVICE_PREFERRED_VECTOR_WIDTH_INT", opencl, section::vectors},
    {"CL_DEVICE_PREFERRED_VECTOR_WIDTH_LONG", opencl, section::vectors},
    {"CL_DEVICE_PREFERRED_VECTOR_WIDTH_FLOAT", opencl, section::vectors},
    {"CL_DEVICE_PREFERRED_VECTOR_WIDTH_DOUBLE", opencl, section::vectors},
    {"CL_DEVICE_MAX_CLOCK_FREQUENCY", opencl, section::compute, unit::megahertz},
    {"CL_DEVICE_ADDRESS_BITS", opencl, section::memory, unit::bits},
    {"CL_DEVICE_MAX_MEM_ALLOC_SIZE", opencl, section::memory, unit::bytes},
    {"CL_DEVICE_IMAGE_SUPPORT", opencl, section::images},
    {"CL_DEVICE_MAX_PARAMETER_SIZE", opencl, section::programs, unit::bytes},
    {"CL_DEVICE_MAX_SAMPLERS", opencl, section::images},
    {"CL_DEVICE_MEM_BASE_ADDR_ALIGN", opencl, section::memory, unit::bits},
    {"CL_DEVICE_SINGLE_FP_CONFIG", opencl, section::floating_point},
    {"CL_DEVICE_GLOBAL_MEM_CACHE_TYPE", opencl, section::memory},
    {"CL_DEVICE_GLOBAL_MEM_CACHELINE_SIZE", opencl, section::memory, unit::bytes},
    {"CL_DEVICE_GLOBAL_MEM_CACHE_SIZE", opencl, section::memory, unit::bytes},
    {"CL_DEVICE_GLOBAL_MEM_SIZE", opencl, section::memory, unit::bytes},
    {"CL_DEVICE_MAX_CONSTANT_BUFFER_SIZE", opencl, section::memory, unit::bytes},
    {"CL_DEVICE_MAX_CONSTANT_ARGS", opencl, section::programs},
    {"CL_DEVICE_LOCAL_MEM_SIZE", opencl, section::memory, unit::bytes},
    {"CL_DEVICE_ERROR_CORRECTION_SUPPORT", opencl, section::memory},
    {"CL_DEVICE_PROFILING_TIMER_RESOLUTION", opencl, section::queues, unit::nanoseconds},
    {"CL_DEVICE_ENDIAN_LITTLE", opencl, section::memory},
    {"CL_DEVICE_AVAILABLE", opencl, section::identity},
    {"CL_DEVICE_COMPILER_AVAILABLE", opencl, section::programs},
    {"CL_DEVICE_EXECUTION_CAPABILITIES", opencl, section::queues},
    {"CL_DEVICE_QUEUE_ON_HOST_PROPERTIES", opencl, section::queues},
    {"CL_DEVICE_NAME", opencl, section::identity},
    {"CL_DEVICE_VENDOR", opencl, section::identity},
    {"CL_DRIVER_VERSION", opencl, section::identity},
    {"CL_DEVICE_PROFILE_FULL", opencl, section::identity},
    {"CL_DEVICE_PROFILE_EMBEDDED", opencl, section::identity},
    {"CL_DEVICE_VERSION", opencl, section::identity},
    {"CL_DEVICE_EXTENSIONS", opencl, section::identity, unit::list},
    {"CL_DEVICE_DOUBLE_FP_CONFIG", opencl, section::floating_point},
    {"CL_DEVICE_PREFERRED_VECTOR_WIDTH_HALF", opencl, section::vectors},
    {"CL_DEVICE_NATIVE_VECTOR_WIDTH_CHAR", opencl, section::vectors},
    {"CL_DEVICE_NATIVE_VECTOR_WIDTH_SHORT", opencl, section::vectors},
    {"CL_DEVICE_NATIVE_VECTOR_WIDTH_INT", opencl, section::vectors},
    {"CL_DEVICE_NATIVE_VECTOR_WIDTH_LONG", opencl, section::vectors},
    {"CL_DEVICE_NATIVE_VECTOR_WIDTH_FLOAT", opencl, section::vectors},
    {"CL_DEVICE_NATIVE_VECTOR_WIDTH_DOUBLE", opencl, section::vectors},
    {"CL_DEVICE_NATIVE_VECTOR_WIDTH_HALF", opencl, section::vectors},
    {"CL_DEVICE_OPENCL_C_VERSION", opencl, section::programs},
    {"CL_DEVICE_LINKER_AVAILABLE", opencl, section::programs},
    {"CL_DEVICE_BUILT_IN_KERNELS", opencl, section::programs, unit::list},
    {"CL_DEVICE_PREFERRED_INTEROP_USER_SYNC", opencl, section::queues},
    {"CL_DEVICE_PRINTF_BUFFER_SIZE", opencl, section::programs, unit::bytes},
    {"CL_DEVICE_MAX_GLOBAL_VARIABLE_SIZE", opencl, section::memory, unit::bytes},
    {"CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES", opencl, section::queues},
    {"CL_DEVICE_SVM_CAPABILITIES", opencl, section::shared},
    {"CL_DEVICE_GLOBAL_VARIABLE_PREFERRED_TOTAL_SIZE", opencl, section::memory, unit::bytes},
    {"CL_DEVICE_MAX_PIPE_ARGS", opencl, section::shared},
    {"CL_DEVICE_PIPE_MAX_ACTIVE_RESERVATIONS", opencl, section::shared},
    {"CL_DEVICE_PIPE_MAX_PACKET_SIZE", opencl, section::shared, unit::bytes},
    {"CL_DEVICE_PREFERRED_PLATFORM_ATOMIC_ALIGNMENT", opencl, section::shared, unit::bytes},
    {"CL_DEVICE_PREFERRED_GLOBAL_ATOMIC_ALIGNMENT", opencl, section::shared, unit::bytes},
    {"CL_DEVICE_PREFERRED_LOCAL_ATOMIC_ALIGNMENT", opencl, section::shared, unit::bytes},
    {"CL_DEVICE_IL_VERSION", opencl, section::programs},
    {"CL_DEVICE_MAX_NUM_SUB_GROUPS", opencl, section::compute},
    {"CL_DEVICE_SUB_GROUP_INDEPENDENT_FORWARD_PROGRESS", opencl, section::compute},
    {"CL_DEVICE_HOST_UNIFIED_MEMORY", opencl, section::memory},
    {"CL_DEVICE_MIN_DATA_TYPE_ALIGN_SIZE", opencl, section::memory, unit::bytes},
    {"CL_DEVICE_MAX_READ_IMAGE_ARGS", "CL_DEVICE_IMAGE_SUPPORT"},
    {"CL_DEVICE_IMAGE2D_MAX_WIDTH", "CL_DEVICE_IMAGE_SUPPORT", section::other, unit::pixels},
    {"CL_DEVICE_IMAGE2D_MAX_HEIGHT", "CL_DEVICE_IMAGE_SUPPORT", section::other, unit::pixels},
    {"CL_DEVICE_IMAGE3D_MAX_WIDTH", "CL_DEVICE_IMAGE_SUPPORT", section::other, unit::pixels},
    {"CL_DEVICE_IMAGE3D_MAX_HEIGHT", "CL_DEVICE_IMAGE_SUPPORT", section::other, unit::pixels},
    {"CL_DEVICE_IMAGE3D_MAX_DEPTH", "CL_DEVICE_IMAGE_SUPPORT", section::other, unit::pixels},
    {"CL_DEVICE_IMAGE_MAX_BUFFER_SIZE", "CL_DEVICE_IMAGE_SUPPORT", section::other, unit::pixels},
    {"CL_DEVICE_IMAGE_MAX_ARRAY_SIZE", "CL_DEVICE_IMAGE_SUPPORT"},
    {"CL_DEVICE_IMAGE_PITCH_ALIGNMENT", "CL_DEVICE_IMAGE_SUPPORT", section::other, unit::pixels},
    {"CL_DEVICE_IMAGE_BASE_ADDRESS_ALIGNMENT", "CL_DEVICE_IMAGE_SUPPORT", section::other, unit::pixels},
    {"CL_DEVICE_MAX_WRITE_IMAGE_ARGS", "CL_DEVICE_IMAGE_SUPPORT"},
    {"CL_DEVICE_MAX_READ_WRITE_IMAGE_ARGS", "CL_DEVICE_IMAGE_SUPPORT"},
    {"CL_DEVICE_SINGLE_FP_CONFIG_DENORM", "CL_DEVICE_SINGLE_FP_CONFIG"},
    {"CL_DEVICE_SINGLE_FP_CONFIG_INF_NAN", "CL_DEVICE_SINGLE_FP_CONFIG"},
    {"CL_DEVICE_SINGLE_FP_CONFIG_ROUND_TO_NEAREST", "CL_DEVICE_SINGLE_FP_CONFIG"},
    {"CL_DEVICE_SINGLE_FP_CONFIG_ROUND_TO_ZERO", "CL_DEVICE_SINGLE_FP_CONFIG"},
    {"CL_DEVICE_SINGLE_FP_CONFIG_ROUND_TO_INF", "CL_DEVICE_SINGLE_FP_CONFIG"},
    {"CL_DEVICE_SINGLE_FP_CONFIG_FMA", "CL_DEVICE_SINGLE_FP_CONFIG"},
    {"CL_DEVICE_SINGLE_FP_CONFIG_CORRECTLY_ROUNDED_DIVIDE_SQRT", "CL_DEVICE_SINGLE_FP_CONFIG"},
    {"CL_DEVICE_SINGLE_FP_CONFIG_SOFTWARE_EMULATED", "CL_DEVICE_SINGLE_FP_CONFIG"},
    {"CL_DEVICE_DOUBLE_FP_CONFIG_DENORM", "CL_DEVICE_DOUBLE_FP_CONFIG"},
    {"CL_DEVICE_DOUBLE_FP_CONFIG_INF_NAN", "CL_DEVICE_DOUBLE_FP_CONFIG"},
    {"CL_DEVICE_DOUBLE_FP_CONFIG_ROUND_TO_NEAREST", "CL_DEVICE_DOUBLE_FP_CONFIG"},
    {"CL_DEVICE_DOUBLE_FP_CONFIG_ROUND_TO_ZERO", "CL_DEVICE_DOUBLE_FP_CONFIG"},
    {"CL_DEVICE_DOUBLE_FP_CONFIG_ROUND_TO_INF", "CL_DEVICE_DOUBLE_FP_CONFIG"},
    {"CL_DEVICE_DOUBLE_FP_CONFIG_FMA", "CL_DEVICE_DOUBLE_FP_CONFIG"},
    {"CL_DEVICE_DOUBLE_FP_CONFIG_SOFTWARE_EMULATED", "CL_DEVICE_DOUBLE_FP_CONFIG"},
    {"CL_DEVICE_GLOBAL_MEM_CACHE_TYPE_NONE", "CL_DEVICE_GLOBAL_MEM_CACHE_TYPE"},
    {"CL_DEVICE_GLOBAL_MEM_CACHE_TYPE_READ_ONLY", "CL_DEVICE_GLOBAL_MEM_CACHE_TYPE"},
    {"CL_DEVICE_GLOBAL_MEM_CACHE_TYPE_READ_WRITE", "CL_DEVICE_GLOBAL_MEM_CACHE_TYPE"},
    {"CL_DEVICE_EXECUTION_CAPABILITIES_EXEC_KERNEL", "CL_DEVICE_EXECUTION_CAPABILITIES"},
    {"CL_DEVICE_EXECUTION_CAPABILITIES_EXEC_NATIVE_KERNEL", "CL_DEVICE_EXECUTION_CAPABILITIES"},
    {"CL_DEVICE_QUEUE_ON_HOST_PROPERTIES_OUT_OF_ORDER_EXEC", "CL_DEVICE_QUEUE_ON_HOST_PROPERTIES"},
    {"CL_DEVICE_QUEUE_ON_HOST_PROPERTIES_PROFILING", "CL_DEVICE_QUEUE_ON_HOST_PROPERTIES"},
    {"CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES_OUT_OF_ORDER_EXEC", "CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES"},
    {"CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES_PROFILING", "CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES"},
    {"CL_DEVICE_QUEUE_ON_DEVICE_PREFERRED_SIZE", "CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES", section::other, unit::bytes},
    {"CL_DEVICE_QUEUE_ON_DEVICE_MAX_SIZE", "CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES", section::other, unit::bytes},
    {"CL_DEVICE_MAX_ON_DEVICE_QUEUES", "CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES"},
    {"CL_DEVICE_MAX_ON_DEVICE_EVENTS", "CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES"},
    {"CL_DEVICE_SVM_CAPABILITIES_COARSE_GRAIN_BUFFER", "CL_DEVICE_SVM_CAPABILITIES"},
    {"CL_DEVICE_SVM_CAPABILITIES_FINE_GRAIN_BUFFER", "CL_DEVICE_SVM_CAPABILITIES"},
    {"CL_DEVICE_SVM_CAPABILITIES_FINE_GRAIN_SYSTEM", "CL_DEVICE_SVM_CAPABILITIES"},
    {"CL_DEVICE_SVM_CAPABILITIES_ATOMICS", "CL_DEVICE_SVM_CAPABILITIES"},
};
// clang-format on

} // namespace

std::span<const known_key> all_known_keys() {
  return known_keys;
}

known_key find_known_key(std::string_view key) {
  const auto found = std::find_if(std::begin(known_keys), std::end(known_keys),
                                  [key](const known_key& each) { return each.key == key; });
  return found == std::end(known_keys) ? known_key{key, {}} : *found;
}

std::string_view title_of(section group) {
  switch (group) {
  case section::identity:
    return "Identity";
  case section::programs:
    return "Programs";
  case section::compute:
    return "Computing";
  case section::vectors:
    return "Vector widths";
  case section::floating_point:
    return "Floating point";
  case section::memory:
    return "Memory";
  case section::images:
    return "Images";
  case section::queues:
    return "Queues";
  case section::shared:
    return "Shared virtual memory, atomics and pipes";
  case section::other:
    break;
  }
  return "Other";
}

} // namespace tarva_info
