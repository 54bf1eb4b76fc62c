// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The properties of a device as OpenCL has them: the query for each, and how to read its answer.
// A number has 4 bytes, a wide one 8.
#pragma once

#define CL_TARGET_OPENCL_VERSION 220
#include <CL/cl.h>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace catalogue_table {

enum class form { number, wide, flag, text, words, parts, sizes, bit, equals, embedded, full };

struct row {
  const char* key;
  cl_device_info query;
  form as;
  std::uint64_t operand = 0;
};

// A list of children of one node, and the versions that have them: 1 for 1.0, and so on.
struct block {
  std::string parent;
  int first, last;
  std::vector<row> rows;
};

#define ASK(query, as)                                                                                       \
  { #query, query, form::as }
#define TYPE(type)                                                                                           \
  { "CL_DEVICE_TYPE_" #type, CL_DEVICE_TYPE, form::equals, CL_DEVICE_TYPE_##type }
#define FLOAT(kind, suffix, mask)                                                                            \
  { "CL_DEVICE_" #kind "_FP_CONFIG_" suffix, CL_DEVICE_##kind##_FP_CONFIG, form::bit, mask }
#define FLOATS(kind)                                                                                         \
  FLOAT(kind, "DENORM", CL_FP_DENORM), FLOAT(kind, "INF_NAN", CL_FP_INF_NAN),                                \
      FLOAT(kind, "ROUND_TO_NEAREST", CL_FP_ROUND_TO_NEAREST),                                               \
      FLOAT(kind, "ROUND_TO_ZERO", CL_FP_ROUND_TO_ZERO), FLOAT(kind, "ROUND_TO_INF", CL_FP_ROUND_TO_INF),    \
      FLOAT(kind, "FMA", CL_FP_FMA)
#define BIT(node, suffix, mask)                                                                              \
  { #node "_" suffix, node, form::bit, mask }
#define CACHE(suffix, type)                                                                                  \
  { "CL_DEVICE_GLOBAL_MEM_CACHE_TYPE_" suffix, CL_DEVICE_GLOBAL_MEM_CACHE_TYPE, form::equals, type }
#define WIDTHS(kind)                                                                                         \
  ASK(CL_DEVICE_##kind##_VECTOR_WIDTH_CHAR, number), ASK(CL_DEVICE_##kind##_VECTOR_WIDTH_SHORT, number),     \
      ASK(CL_DEVICE_##kind##_VECTOR_WIDTH_INT, number), ASK(CL_DEVICE_##kind##_VECTOR_WIDTH_LONG, number),   \
      ASK(CL_DEVICE_##kind##_VECTOR_WIDTH_FLOAT, number),                                                    \
      ASK(CL_DEVICE_##kind##_VECTOR_WIDTH_DOUBLE, number)

constexpr const char* opencl_key = "OPENCL";
constexpr int latest = 99;
constexpr const char* images_key = "CL_DEVICE_IMAGE_SUPPORT";

// clang-format off
inline const std::vector<block> blocks = {
  {opencl_key, 1, latest, {
    TYPE(DEFAULT), TYPE(CPU), TYPE(GPU), TYPE(ACCELERATOR),
    ASK(CL_DEVICE_VENDOR_ID, number), ASK(CL_DEVICE_MAX_COMPUTE_UNITS, number),
    ASK(CL_DEVICE_MAX_WORK_ITEM_DIMENSIONS, number), ASK(CL_DEVICE_MAX_WORK_GROUP_SIZE, wide),
    ASK(CL_DEVICE_MAX_WORK_ITEM_SIZES, sizes), WIDTHS(PREFERRED), ASK(CL_DEVICE_MAX_CLOCK_FREQUENCY, number),
    ASK(CL_DEVICE_ADDRESS_BITS, number), ASK(CL_DEVICE_MAX_MEM_ALLOC_SIZE, wide),
    ASK(CL_DEVICE_IMAGE_SUPPORT, flag), ASK(CL_DEVICE_MAX_PARAMETER_SIZE, wide),
    ASK(CL_DEVICE_MAX_SAMPLERS, number), ASK(CL_DEVICE_MEM_BASE_ADDR_ALIGN, number),
    ASK(CL_DEVICE_GLOBAL_MEM_CACHELINE_SIZE, number), ASK(CL_DEVICE_GLOBAL_MEM_CACHE_SIZE, wide),
    ASK(CL_DEVICE_GLOBAL_MEM_SIZE, wide), ASK(CL_DEVICE_MAX_CONSTANT_BUFFER_SIZE, wide),
    ASK(CL_DEVICE_MAX_CONSTANT_ARGS, number), ASK(CL_DEVICE_LOCAL_MEM_SIZE, wide),
    ASK(CL_DEVICE_ERROR_CORRECTION_SUPPORT, flag), ASK(CL_DEVICE_PROFILING_TIMER_RESOLUTION, wide),
    ASK(CL_DEVICE_ENDIAN_LITTLE, flag), ASK(CL_DEVICE_AVAILABLE, flag), ASK(CL_DEVICE_COMPILER_AVAILABLE, flag),
    ASK(CL_DEVICE_NAME, text), ASK(CL_DEVICE_VENDOR, text), ASK(CL_DRIVER_VERSION, text),
    {"CL_DEVICE_PROFILE_FULL", CL_DEVICE_PROFILE, form::full},
    {"CL_DEVICE_PROFILE_EMBEDDED", CL_DEVICE_PROFILE, form::embedded},
    ASK(CL_DEVICE_VERSION, text), ASK(CL_DEVICE_EXTENSIONS, words)}},
  {opencl_key, 2, latest, {
    ASK(CL_DEVICE_PREFERRED_VECTOR_WIDTH_HALF, number), WIDTHS(NATIVE),
    ASK(CL_DEVICE_NATIVE_VECTOR_WIDTH_HALF, number), ASK(CL_DEVICE_OPENCL_C_VERSION, text)}},
  {opencl_key, 2, 3, {ASK(CL_DEVICE_HOST_UNIFIED_MEMORY, flag)}},
  {opencl_key, 2, 2, {ASK(CL_DEVICE_MIN_DATA_TYPE_ALIGN_SIZE, number)}},
  {opencl_key, 3, latest, {
    TYPE(CUSTOM), ASK(CL_DEVICE_LINKER_AVAILABLE, flag), ASK(CL_DEVICE_BUILT_IN_KERNELS, parts),
    ASK(CL_DEVICE_PREFERRED_INTEROP_USER_SYNC, flag), ASK(CL_DEVICE_PRINTF_BUFFER_SIZE, wide)}},
  {opencl_key, 4, latest, {
    ASK(CL_DEVICE_MAX_GLOBAL_VARIABLE_SIZE, wide), ASK(CL_DEVICE_GLOBAL_VARIABLE_PREFERRED_TOTAL_SIZE, wide),
    ASK(CL_DEVICE_MAX_PIPE_ARGS, number), ASK(CL_DEVICE_PIPE_MAX_ACTIVE_RESERVATIONS, number),
    ASK(CL_DEVICE_PIPE_MAX_PACKET_SIZE, number), ASK(CL_DEVICE_PREFERRED_PLATFORM_ATOMIC_ALIGNMENT, number),
    ASK(CL_DEVICE_PREFERRED_GLOBAL_ATOMIC_ALIGNMENT, number),
    ASK(CL_DEVICE_PREFERRED_LOCAL_ATOMIC_ALIGNMENT, number)}},
  {opencl_key, 5, latest, {
    ASK(CL_DEVICE_IL_VERSION, text), ASK(CL_DEVICE_MAX_NUM_SUB_GROUPS, number),
    ASK(CL_DEVICE_SUB_GROUP_INDEPENDENT_FORWARD_PROGRESS, flag)}},
  {images_key, 1, latest, {
    ASK(CL_DEVICE_MAX_READ_IMAGE_ARGS, number), ASK(CL_DEVICE_IMAGE2D_MAX_WIDTH, wide),
    ASK(CL_DEVICE_IMAGE2D_MAX_HEIGHT, wide), ASK(CL_DEVICE_IMAGE3D_MAX_WIDTH, wide),
    ASK(CL_DEVICE_IMAGE3D_MAX_HEIGHT, wide), ASK(CL_DEVICE_IMAGE3D_MAX_DEPTH, wide)}},
  {images_key, 1, 3, {ASK(CL_DEVICE_MAX_WRITE_IMAGE_ARGS, number)}},
  {images_key, 3, latest, {ASK(CL_DEVICE_IMAGE_MAX_BUFFER_SIZE, wide), ASK(CL_DEVICE_IMAGE_MAX_ARRAY_SIZE, wide)}},
  {images_key, 4, latest, {
    ASK(CL_DEVICE_IMAGE_PITCH_ALIGNMENT, number), ASK(CL_DEVICE_IMAGE_BASE_ADDRESS_ALIGNMENT, number),
    ASK(CL_DEVICE_MAX_READ_WRITE_IMAGE_ARGS, number)}},
  {"CL_DEVICE_SINGLE_FP_CONFIG", 1, latest, {FLOATS(SINGLE)}},
  {"CL_DEVICE_SINGLE_FP_CONFIG", 2, latest, {FLOAT(SINGLE, "SOFTWARE_EMULATED", CL_FP_SOFT_FLOAT)}},
  {"CL_DEVICE_SINGLE_FP_CONFIG", 3, latest, {
    FLOAT(SINGLE, "CORRECTLY_ROUNDED_DIVIDE_SQRT", CL_FP_CORRECTLY_ROUNDED_DIVIDE_SQRT)}},
  {"CL_DEVICE_DOUBLE_FP_CONFIG", 1, latest, {FLOATS(DOUBLE)}},
  {"CL_DEVICE_DOUBLE_FP_CONFIG", 2, latest, {FLOAT(DOUBLE, "SOFTWARE_EMULATED", CL_FP_SOFT_FLOAT)}},
  {"CL_DEVICE_GLOBAL_MEM_CACHE_TYPE", 1, latest, {
    CACHE("NONE", CL_NONE), CACHE("READ_ONLY", CL_READ_ONLY_CACHE), CACHE("READ_WRITE", CL_READ_WRITE_CACHE)}},
  {"CL_DEVICE_EXECUTION_CAPABILITIES", 1, latest, {
    BIT(CL_DEVICE_EXECUTION_CAPABILITIES, "EXEC_KERNEL", CL_EXEC_KERNEL),
    BIT(CL_DEVICE_EXECUTION_CAPABILITIES, "EXEC_NATIVE_KERNEL", CL_EXEC_NATIVE_KERNEL)}},
  {"CL_DEVICE_QUEUE_ON_HOST_PROPERTIES", 1, latest, {
    BIT(CL_DEVICE_QUEUE_ON_HOST_PROPERTIES, "OUT_OF_ORDER_EXEC", CL_QUEUE_OUT_OF_ORDER_EXEC_MODE_ENABLE),
    BIT(CL_DEVICE_QUEUE_ON_HOST_PROPERTIES, "PROFILING", CL_QUEUE_PROFILING_ENABLE)}},
  {"CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES", 4, latest, {
    BIT(CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES, "OUT_OF_ORDER_EXEC", CL_QUEUE_OUT_OF_ORDER_EXEC_MODE_ENABLE),
    BIT(CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES, "PROFILING", CL_QUEUE_PROFILING_ENABLE),
    ASK(CL_DEVICE_QUEUE_ON_DEVICE_PREFERRED_SIZE, number), ASK(CL_DEVICE_QUEUE_ON_DEVICE_MAX_SIZE, number),
    ASK(CL_DEVICE_MAX_ON_DEVICE_QUEUES, number), ASK(CL_DEVICE_MAX_ON_DEVICE_EVENTS, number)}},
  {"CL_DEVICE_SVM_CAPABILITIES", 4, latest, {
    BIT(CL_DEVICE_SVM_CAPABILITIES, "COARSE_GRAIN_BUFFER", CL_DEVICE_SVM_COARSE_GRAIN_BUFFER),
    BIT(CL_DEVICE_SVM_CAPABILITIES, "FINE_GRAIN_BUFFER", CL_DEVICE_SVM_FINE_GRAIN_BUFFER),
    BIT(CL_DEVICE_SVM_CAPABILITIES, "FINE_GRAIN_SYSTEM", CL_DEVICE_SVM_FINE_GRAIN_SYSTEM),
    BIT(CL_DEVICE_SVM_CAPABILITIES, "ATOMICS", CL_DEVICE_SVM_ATOMICS)}},
};
// clang-format on

#undef ASK
#undef TYPE
#undef FLOAT
#undef FLOATS
#undef BIT
#undef CACHE
#undef WIDTHS

inline constexpr std::uint64_t checksums_of_words[] = {12333749317352091179U, 570559939789278314U,
                                                       2418929429471218476U,  6527998091848219448U,
                                                       12090553846653252265U, 12090553846653252265U};
// The keys of the children that a device of the version lists below `parent`.
inline std::set<std::string> keys_below(const std::string& parent, int version) {
  std::set<std::string> keys;
  for (const block& each : blocks) {
    if (version < each.first || version > each.last)
      continue;
    if (parent == opencl_key && each.parent != opencl_key)
      keys.insert(each.parent);
    if (parent == each.parent)
      for (const row& child : each.rows)
        keys.insert(child.key);
  }
  return keys;
}

} // namespace catalogue_table
