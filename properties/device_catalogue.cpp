// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "properties/device_catalogue.h"

namespace oryn::tarva::library {
namespace {

namespace parameter = device_parameter;
namespace flag = device_flag;
using read = device_reading;
using row = device_catalogue::row;

// A handle means nothing to users, so there is no property of that form. The throw stops the compiler.
constexpr read reading_of(info_form form) {
  switch (form) {
  case info_form::uint32:
    return read::uint32;
  case info_form::uint64:
    return read::uint64;
  case info_form::boolean:
    return read::boolean;
  case info_form::text:
    return read::string;
  case info_form::word_list:
    return read::words;
  case info_form::name_list:
    return read::semicolon_list;
  case info_form::sizes:
    return read::sizes;
  default:
    throw "no property has a value of this form";
  }
}

constexpr read reading_of(const device_flag_row& flag) {
  if (flag.test == flag_test::has_bit)
    return read::bit;
  return flag.parameter.form == info_form::uint32 ? read::equal_uint32 : read::equal_uint64;
}

// The rows below say key, parent, source and texts. The source gives the rest: the value of a property is a
// parameter, a flag, or something that the library knows itself.
// A parameter, read in its own way.
constexpr row property(std::string_view key, std::string_view parent, const device_parameter_row& source,
                       read reading, const char* friendly_name, const char* description) {
  const bool needs_images = parent == image_support_key;
  return {key,           parent,     source.versions, {reading, source.number, 0, needs_images},
          friendly_name, description};
}

constexpr row property(std::string_view key, std::string_view parent, const device_parameter_row& source,
                       const char* friendly_name, const char* description) {
  return property(key, parent, source, reading_of(source.form), friendly_name, description);
}

constexpr row property(std::string_view key, std::string_view parent, const device_flag_row& source,
                       const char* friendly_name, const char* description) {
  return {key,
          parent,
          source.versions,
          {reading_of(source), source.parameter.number, source.operand},
          friendly_name,
          description};
}

constexpr row property(std::string_view key, std::string_view parent, read source, const char* friendly_name,
                       const char* description) {
  return {key, parent, version_ranges::all, {source}, friendly_name, description};
}

// A property without a value, above those that are packed into one parameter.
constexpr row group(std::string_view key, std::string_view parent, const device_parameter_row& source,
                    const char* friendly_name, const char* description) {
  return {key, parent, source.versions, {read::none}, friendly_name, description};
}

// Found by its path, but in no list of children.
constexpr row unlisted(row made) {
  made.is_listed = false;
  return made;
}

// clang-format off
constexpr row rows[] = {
    property("ROOT", "", read::none, "Root property.",
     "The root property of a device, simply provided as the main root element."),
    // Children of ROOT.
    property("FRIENDLY_SHORT_DESCRIPTION", "ROOT", read::friendly_short_description, "Friendly Description",
     "A friendly short description of the device."),
    property("FRIENDLY_SUMMARY", "ROOT", read::friendly_summary, "Friendly Summary",
     "A friendly short summary of the device."),
    property("NAME", "ROOT", parameter::name, "Device name",
     "A friendly name for the device."),
    property("OBJECT_ID", "ROOT", read::object_id, "Object Identifier",
     "A unique identifier for the TARVA object."),
    property("OPENCL", "ROOT", read::none, "OpenCL root property.",
     "The root property of all OpenCL properties."),
    // Children of OPENCL.
    property("CL_DEVICE_TYPE_DEFAULT", "OPENCL", flag::type_default, "Default Device",
     "The default OpenCL device in the system."),
    property("CL_DEVICE_TYPE_CPU", "OPENCL", flag::type_cpu, "Device Type CPU",
     "The OpenCL device is a CPU type."),
    property("CL_DEVICE_TYPE_GPU", "OPENCL", flag::type_gpu, "Device Type GPU",
     "The OpenCL device is a GPU type."),
    property("CL_DEVICE_TYPE_ACCELERATOR", "OPENCL", flag::type_accelerator, "Device Type Accelerator",
     "The OpenCL device is a Accelerator type."),
    property("CL_DEVICE_TYPE_CUSTOM", "OPENCL", flag::type_custom, "Device Type CUSTOM",
     "The OpenCL device is a custom type."),
    property("CL_DEVICE_VENDOR_ID", "OPENCL", parameter::vendor_id, "Vendor ID",
     "A unique device vendor identifier. An example of a unique device identifier could be the PCIe ID."),
    property("CL_DEVICE_MAX_COMPUTE_UNITS", "OPENCL", parameter::max_compute_units, "Maximum compute units",
     "The number of parallel compute units on the OpenCL device."),
    property("CL_DEVICE_MAX_WORK_ITEM_DIMENSIONS", "OPENCL", parameter::max_work_item_dimensions, "Maximum work item dimensions",
     "Maximum dimensions that specify the global and local work-item IDs used by the data parallel execution model."),
    property("CL_DEVICE_MAX_WORK_GROUP_SIZE", "OPENCL", parameter::max_work_group_size, "Maximum work group size",
     "Maximum number of work-items in a work-group that a device is capable of executing on a single compute unit, for any given kernel-instance running on the device."),
    property("CL_DEVICE_MAX_WORK_ITEM_SIZES", "OPENCL", parameter::max_work_item_sizes, "Maximum work item sizes",
     "Maximum number of work-items that can be specified in each dimension of the work-group when executing a kernel."),
    property("CL_DEVICE_PREFERRED_VECTOR_WIDTH_CHAR", "OPENCL", parameter::preferred_vector_width_char, "Preferred Vector Width of char/int8",
     "Preferred vector width."),
    property("CL_DEVICE_PREFERRED_VECTOR_WIDTH_SHORT", "OPENCL", parameter::preferred_vector_width_short, "Preferred Vector Width of short/int16",
     "Preferred vector width."),
    property("CL_DEVICE_PREFERRED_VECTOR_WIDTH_INT", "OPENCL", parameter::preferred_vector_width_int, "Preferred Vector Width of int/int32",
     "Preferred vector width."),
    property("CL_DEVICE_PREFERRED_VECTOR_WIDTH_LONG", "OPENCL", parameter::preferred_vector_width_long, "Preferred Vector Width of long/int64",
     "Preferred vector width."),
    property("CL_DEVICE_PREFERRED_VECTOR_WIDTH_FLOAT", "OPENCL", parameter::preferred_vector_width_float, "Preferred Vector Width of float",
     "Preferred vector width."),
    property("CL_DEVICE_PREFERRED_VECTOR_WIDTH_DOUBLE", "OPENCL", parameter::preferred_vector_width_double, "Preferred Vector Width of double",
     "Preferred vector width. 0 if double is not supported."),
    property("CL_DEVICE_MAX_CLOCK_FREQUENCY", "OPENCL", parameter::max_clock_frequency, "Maximum device clock frequency",
     "Clock frequency of the device in MHz. The meaning of this value is implementation-defined."),
    property("CL_DEVICE_ADDRESS_BITS", "OPENCL", parameter::address_bits, "Device address bits",
     "The address space size of the global address space specified as an unsigned integer value in bits. Currently supported values are 32 or 64 bits."),
    property("CL_DEVICE_MAX_MEM_ALLOC_SIZE", "OPENCL", parameter::max_mem_alloc_size, "Maximum memory allocation size",
     "Maximum size of OpenCL memory object allocation."),
    property("CL_DEVICE_IMAGE_SUPPORT", "OPENCL", parameter::image_support, "Image Support",
     "True if the devices supports images"),
    property("CL_DEVICE_MAX_PARAMETER_SIZE", "OPENCL", parameter::max_parameter_size, "Maximum kernel parameter size",
     "Maximum size in bytes of all arguments that can be passed to a kernel."),
    property("CL_DEVICE_MAX_SAMPLERS", "OPENCL", parameter::max_samplers, "Maximum samplers",
     "Maximum number of samplers that can be used in a kernel."),
    property("CL_DEVICE_MEM_BASE_ADDR_ALIGN", "OPENCL", parameter::mem_base_addr_align, "Memory base address alignment",
     "Alignment requirement (in bits) for sub-buffer offsets."),
    group("CL_DEVICE_SINGLE_FP_CONFIG", "OPENCL", parameter::single_fp_config, "Single precision fp config",
     "Describes single precision floating-point capability of the device."),
    group("CL_DEVICE_GLOBAL_MEM_CACHE_TYPE", "OPENCL", parameter::global_mem_cache_type, "The type of the global memory cache",
     "The type of the global memory cache"),
    property("CL_DEVICE_GLOBAL_MEM_CACHELINE_SIZE", "OPENCL", parameter::global_mem_cacheline_size, "Global memory cacheline size",
     "Size of a global memory cache line in bytes."),
    property("CL_DEVICE_GLOBAL_MEM_CACHE_SIZE", "OPENCL", parameter::global_mem_cache_size, "Global memory cache size",
     "Size of global memory cache in bytes."),
    property("CL_DEVICE_GLOBAL_MEM_SIZE", "OPENCL", parameter::global_mem_size, "Global memory size",
     "Size of global device memory in bytes."),
    property("CL_DEVICE_MAX_CONSTANT_BUFFER_SIZE", "OPENCL", parameter::max_constant_buffer_size, "Max constant buffer size",
     "The max size in bytes of a constant buffer allocation."),
    property("CL_DEVICE_MAX_CONSTANT_ARGS", "OPENCL", parameter::max_constant_args, "Max constant arguments",
     "The max number of arguments declared with the __constant qualifier in a kernel."),
    property("CL_DEVICE_LOCAL_MEM_SIZE", "OPENCL", parameter::local_mem_size, "Local memory size",
     "Size of local memory region."),
    property("CL_DEVICE_ERROR_CORRECTION_SUPPORT", "OPENCL", parameter::error_correction_support, "ECC Memory",
     "True if the device implements error correction for all accesses to compute device memory (global and constant)."),
    property("CL_DEVICE_PROFILING_TIMER_RESOLUTION", "OPENCL", parameter::profiling_timer_resolution, "Profiling timer resolution",
     "Describes the resolution of device timer. This is measured in nanoseconds."),
    property("CL_DEVICE_ENDIAN_LITTLE", "OPENCL", parameter::endian_little, "Little Endian",
     "True if the device is a little endian device."),
    property("CL_DEVICE_AVAILABLE", "OPENCL", parameter::available, "Device Available",
     "True if the device is available. A device is considered to be available if the device can be expected to successfully execute commands enqueued to the device."),
    property("CL_DEVICE_COMPILER_AVAILABLE", "OPENCL", parameter::compiler_available, "OpenCL Compiler available",
     "False if the OpenCL implementation does not have a compiler available to compile program source (OpenCL C)"),
    group("CL_DEVICE_EXECUTION_CAPABILITIES", "OPENCL", parameter::execution_capabilities, "The capability of the device to execute OpenCL kernels",
     "The capability of the device to execute OpenCL kernels"),
    group("CL_DEVICE_QUEUE_ON_HOST_PROPERTIES", "OPENCL", parameter::queue_on_host_properties, "Host command-queue properties",
     "Host command-queue properties"),
    property("CL_DEVICE_NAME", "OPENCL", parameter::name, "Device name",
     "Device name string."),
    property("CL_DEVICE_VENDOR", "OPENCL", parameter::vendor, "Device Vendor",
     "Vendor name string."),
    property("CL_DRIVER_VERSION", "OPENCL", parameter::driver_version, "Driver version",
     "OpenCL software driver version string. Follows a vendor-specific format."),
    property("CL_DEVICE_PROFILE_FULL", "OPENCL", parameter::profile, read::full_profile, "Full OpenCL profile",
     "True if the device supports the OpenCL 'Full' profile"),
    property("CL_DEVICE_PROFILE_EMBEDDED", "OPENCL", parameter::profile, read::embedded_profile, "Embedded OpenCL profile",
     "True if the device supports the OpenCL 'Embedded' profile"),
    property("CL_DEVICE_VERSION", "OPENCL", parameter::version, "Device OpenCL Version",
     "OpenCL version string.  Returns the OpenCL version supported by the device."),
    property("CL_DEVICE_EXTENSIONS", "OPENCL", parameter::extensions, "Device Extensions",
     "Extensions supported by the OpenCL device."),
    group("CL_DEVICE_DOUBLE_FP_CONFIG", "OPENCL", parameter::double_fp_config, "Double precision fp config",
     "Describes double precision floating-point capability of the device."),
    property("CL_DEVICE_PREFERRED_VECTOR_WIDTH_HALF", "OPENCL", parameter::preferred_vector_width_half, "Preferred Vector Width of half float",
     "Preferred vector width. 0 if half is not supported."),
    property("CL_DEVICE_NATIVE_VECTOR_WIDTH_CHAR", "OPENCL", parameter::native_vector_width_char, "Native Vector Width of char/int8",
     "The native ISA vector width."),
    property("CL_DEVICE_NATIVE_VECTOR_WIDTH_SHORT", "OPENCL", parameter::native_vector_width_short, "Native Vector Width of short/int16",
     "The native ISA vector width."),
    property("CL_DEVICE_NATIVE_VECTOR_WIDTH_INT", "OPENCL", parameter::native_vector_width_int, "Native Vector Width of int/int32",
     "The native ISA vector width."),
    property("CL_DEVICE_NATIVE_VECTOR_WIDTH_LONG", "OPENCL", parameter::native_vector_width_long, "Native Vector Width of long/int64",
     "The native ISA vector width."),
    property("CL_DEVICE_NATIVE_VECTOR_WIDTH_FLOAT", "OPENCL", parameter::native_vector_width_float, "Native Vector Width of float",
     "The native ISA vector width."),
    property("CL_DEVICE_NATIVE_VECTOR_WIDTH_DOUBLE", "OPENCL", parameter::native_vector_width_double, "Native Vector Width of double",
     "The native ISA vector width. 0 if double is not supported."),
    property("CL_DEVICE_NATIVE_VECTOR_WIDTH_HALF", "OPENCL", parameter::native_vector_width_half, "Native Vector Width of half",
     "The native ISA vector width. 0 if half float is not supported."),
    property("CL_DEVICE_OPENCL_C_VERSION", "OPENCL", parameter::opencl_c_version, "OpenCL C version",
     "The version of OpenCL C supported by the device."),
    property("CL_DEVICE_LINKER_AVAILABLE", "OPENCL", parameter::linker_available, "OpenCL Linker Available",
     "True if the OpenCL implementation has an OpenCL program linker available."),
    property("CL_DEVICE_BUILT_IN_KERNELS", "OPENCL", parameter::built_in_kernels, "Built-In Kernels",
     "Built-in kernels supported by the device."),
    property("CL_DEVICE_PREFERRED_INTEROP_USER_SYNC", "OPENCL", parameter::preferred_interop_user_sync, "Preferred interop user syncronization",
     "True if the device preference is for the user to be responsible for synchronization when sharing memory objects between OpenCL and other APIs, false if the device/implementation has a performant path for performing synchronization of memory object shared between OpenCL and other APIs."),
    property("CL_DEVICE_PRINTF_BUFFER_SIZE", "OPENCL", parameter::printf_buffer_size, "printf buffer size",
     "Maximum size in bytes of the internal buffer that holds the output of printf calls from a kernel."),
    property("CL_DEVICE_MAX_GLOBAL_VARIABLE_SIZE", "OPENCL", parameter::max_global_variable_size, "Maximum global variable size",
     "The maximum number of bytes of storage that may be allocated for any single variable in program scope or inside a function in OpenCL C declared in the global address space."),
    group("CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES", "OPENCL", parameter::queue_on_device_properties, "Device command-queue properties",
     "Device command-queue properties"),
    group("CL_DEVICE_SVM_CAPABILITIES", "OPENCL", parameter::svm_capabilities, "SVM capabilities",
     "Describes the various shared virtual memory (a.k.a. SVM) memory allocation types the device supports."),
    property("CL_DEVICE_GLOBAL_VARIABLE_PREFERRED_TOTAL_SIZE", "OPENCL", parameter::global_variable_preferred_total_size, "Preferred total global variable size",
     "Maximum preferred total size, in bytes, of all program variables in the global address space.  This is a performance hint."),
    property("CL_DEVICE_MAX_PIPE_ARGS", "OPENCL", parameter::max_pipe_args, "Maximum pipe arguments",
     "The maximum number of pipe objects that can be passed as arguments to a kernel."),
    property("CL_DEVICE_PIPE_MAX_ACTIVE_RESERVATIONS", "OPENCL", parameter::pipe_max_active_reservations, "Maximum active pipe reserevations",
     "The maximum number of reservations that can be active for a pipe per work-item in a kernel. A work-group reservation is counted as one reservation per work-item."),
    property("CL_DEVICE_PIPE_MAX_PACKET_SIZE", "OPENCL", parameter::pipe_max_packet_size, "Maximum pipe packet size",
     "The maximum size of a pipe packet in bytes."),
    property("CL_DEVICE_PREFERRED_PLATFORM_ATOMIC_ALIGNMENT", "OPENCL", parameter::preferred_platform_atomic_alignment, "Preferred SVM atomic alignment",
     "The preferred alignment in bytes for OpenCL 2.0 fine-grained SVM atomic types. This query can return 0 which indicates that the preferred alignment is aligned to the natural size of the type."),
    property("CL_DEVICE_PREFERRED_GLOBAL_ATOMIC_ALIGNMENT", "OPENCL", parameter::preferred_global_atomic_alignment, "Preferred global atomic alignment",
     "The preferred alignment in bytes for OpenCL 2.0 atomic types to global memory. This query can return 0 which indicates that the preferred alignment is aligned to the natural size of the type."),
    property("CL_DEVICE_PREFERRED_LOCAL_ATOMIC_ALIGNMENT", "OPENCL", parameter::preferred_local_atomic_alignment, "Preferred local atomic alignment",
     "The preferred alignment in bytes for OpenCL 2.0 atomic types to local memory. This query can return 0 which indicates that the preferred alignment is aligned to the natural size of the type."),
    property("CL_DEVICE_IL_VERSION", "OPENCL", parameter::il_version, "Intermediate language version",
     "The intermediate languages that can be supported by the device compiler."),
    property("CL_DEVICE_MAX_NUM_SUB_GROUPS", "OPENCL", parameter::max_num_sub_groups, "Maximum sub groups",
     "Maximum number of sub-groups in a work-group that a device is capable of executing on a single compute unit, for any given kernel-instance running on the device."),
    property("CL_DEVICE_SUB_GROUP_INDEPENDENT_FORWARD_PROGRESS", "OPENCL", parameter::sub_group_independent_forward_progress, "Sub-group independant forward progress",
     "True if this device supports independent forward progress of sub-groups"),
    property("CL_DEVICE_HOST_UNIFIED_MEMORY", "OPENCL", parameter::host_unified_memory, "Host Unified Memory",
     "True if the device and host have a unified memory subsystem, false otherwise."),
    property("CL_DEVICE_MIN_DATA_TYPE_ALIGN_SIZE", "OPENCL", parameter::min_data_type_align_size, "Size of largest OpenCL builtin type",
     "The size in bytes of the largest OpenCL builtin data type"),
    // Children of CL_DEVICE_IMAGE_SUPPORT.
    property("CL_DEVICE_MAX_READ_IMAGE_ARGS", "CL_DEVICE_IMAGE_SUPPORT", parameter::max_read_image_args, "Maximum read only image kernel arguments",
     "Max number of image objects arguments of a kernel declared with the read_only qualifier."),
    property("CL_DEVICE_IMAGE2D_MAX_WIDTH", "CL_DEVICE_IMAGE_SUPPORT", parameter::image2d_max_width, "Maximum 2D image width",
     "Maximum width of a 2D or 1D image not created from a buffer object in pixels."),
    property("CL_DEVICE_IMAGE2D_MAX_HEIGHT", "CL_DEVICE_IMAGE_SUPPORT", parameter::image2d_max_height, "Maximum 2D image height",
     "Maximum height of a 2D image in pixels."),
    property("CL_DEVICE_IMAGE3D_MAX_WIDTH", "CL_DEVICE_IMAGE_SUPPORT", parameter::image3d_max_width, "Maximum 3D image width",
     "Maximum width of a 3D image in pixels."),
    property("CL_DEVICE_IMAGE3D_MAX_HEIGHT", "CL_DEVICE_IMAGE_SUPPORT", parameter::image3d_max_height, "Maximum 3D image height",
     "Maximum height of a 3D image in pixels."),
    property("CL_DEVICE_IMAGE3D_MAX_DEPTH", "CL_DEVICE_IMAGE_SUPPORT", parameter::image3d_max_depth, "Maximum 3D image depth",
     "Maximum depth of a 3D image in pixels."),
    property("CL_DEVICE_IMAGE_MAX_BUFFER_SIZE", "CL_DEVICE_IMAGE_SUPPORT", parameter::image_max_buffer_size, "Maximum 1D image buffer size",
     "Maximum number of pixels for a 1D image created from a buffer object."),
    property("CL_DEVICE_IMAGE_MAX_ARRAY_SIZE", "CL_DEVICE_IMAGE_SUPPORT", parameter::image_max_array_size, "Maximum image array size",
     "Maximum number of images in a 1D or 2D image array"),
    property("CL_DEVICE_IMAGE_PITCH_ALIGNMENT", "CL_DEVICE_IMAGE_SUPPORT", parameter::image_pitch_alignment, "Image pitch alignment",
     "The row pitch alignment size in pixels for 2D images created from a buffer. The value returned must be a power of 2."),
    property("CL_DEVICE_IMAGE_BASE_ADDRESS_ALIGNMENT", "CL_DEVICE_IMAGE_SUPPORT", parameter::image_base_address_alignment, "Image base address alignment",
     "The minimum alignment required for an image that uses host memory."),
    property("CL_DEVICE_MAX_WRITE_IMAGE_ARGS", "CL_DEVICE_IMAGE_SUPPORT", parameter::max_write_image_args, "Maximum write only image kernel arguments",
     "Max number of image objects arguments of a kernel declared with the write_only qualifier."),
    property("CL_DEVICE_MAX_READ_WRITE_IMAGE_ARGS", "CL_DEVICE_IMAGE_SUPPORT", parameter::max_read_write_image_args, "Maximum read/write image kernel arguments",
     "Max number of image objects arguments of a kernel declared with the write_only or read_write qualifier."),
    // Children of CL_DEVICE_SINGLE_FP_CONFIG.
    property("CL_DEVICE_SINGLE_FP_CONFIG_DENORM", "CL_DEVICE_SINGLE_FP_CONFIG", flag::single_fp_denorm, "Denormals",
     "True if denormals are supported"),
    property("CL_DEVICE_SINGLE_FP_CONFIG_INF_NAN", "CL_DEVICE_SINGLE_FP_CONFIG", flag::single_fp_inf_nan, "Inf/NaN Support",
     "True if Inf and quiet NaN is supported"),
    property("CL_DEVICE_SINGLE_FP_CONFIG_ROUND_TO_NEAREST", "CL_DEVICE_SINGLE_FP_CONFIG", flag::single_fp_round_to_nearest, "Round to nearest",
     "True if round to nearest even rounding mode is supported in hardware"),
    property("CL_DEVICE_SINGLE_FP_CONFIG_ROUND_TO_ZERO", "CL_DEVICE_SINGLE_FP_CONFIG", flag::single_fp_round_to_zero, "Round to zero",
     "True if round to zero rounding mode is supported in hardware"),
    property("CL_DEVICE_SINGLE_FP_CONFIG_ROUND_TO_INF", "CL_DEVICE_SINGLE_FP_CONFIG", flag::single_fp_round_to_inf, "Round to infinity",
     "True if round to Inf rounding mode is supported in hardware"),
    property("CL_DEVICE_SINGLE_FP_CONFIG_FMA", "CL_DEVICE_SINGLE_FP_CONFIG", flag::single_fp_fma, "Fused multiply-add",
     "True if IEEE754-2008 fused multiply-add is supported."),
    property("CL_DEVICE_SINGLE_FP_CONFIG_CORRECTLY_ROUNDED_DIVIDE_SQRT", "CL_DEVICE_SINGLE_FP_CONFIG", flag::single_fp_correctly_rounded_divide_sqrt, "Correctly rounded division/square root",
     "True if divide and sqrt are correctly rounded as defined by the IEEE754 specification."),
    property("CL_DEVICE_SINGLE_FP_CONFIG_SOFTWARE_EMULATED", "CL_DEVICE_SINGLE_FP_CONFIG", flag::single_fp_software_emulated, "Software float",
     "True if basic floating-point operations (such as addition, subtraction, multiplication) are implemented in software."),
    // Children of CL_DEVICE_DOUBLE_FP_CONFIG.
    property("CL_DEVICE_DOUBLE_FP_CONFIG_DENORM", "CL_DEVICE_DOUBLE_FP_CONFIG", flag::double_fp_denorm, "Denormals",
     "True if denormals are supported"),
    property("CL_DEVICE_DOUBLE_FP_CONFIG_INF_NAN", "CL_DEVICE_DOUBLE_FP_CONFIG", flag::double_fp_inf_nan, "Inf/NaN Support",
     "True if Inf and quiet NaN is supported"),
    property("CL_DEVICE_DOUBLE_FP_CONFIG_ROUND_TO_NEAREST", "CL_DEVICE_DOUBLE_FP_CONFIG", flag::double_fp_round_to_nearest, "Round to nearest",
     "True if round to nearest even rounding mode is supported in hardware"),
    property("CL_DEVICE_DOUBLE_FP_CONFIG_ROUND_TO_ZERO", "CL_DEVICE_DOUBLE_FP_CONFIG", flag::double_fp_round_to_zero, "Round to zero",
     "True if round to zero rounding mode is supported in hardware"),
    property("CL_DEVICE_DOUBLE_FP_CONFIG_ROUND_TO_INF", "CL_DEVICE_DOUBLE_FP_CONFIG", flag::double_fp_round_to_inf, "Round to infinity",
     "True if round to Inf rounding mode is supported in hardware"),
    property("CL_DEVICE_DOUBLE_FP_CONFIG_FMA", "CL_DEVICE_DOUBLE_FP_CONFIG", flag::double_fp_fma, "Fused multiply-add",
     "True if IEEE754-2008 fused multiply-add is supported."),
    property("CL_DEVICE_DOUBLE_FP_CONFIG_SOFTWARE_EMULATED", "CL_DEVICE_DOUBLE_FP_CONFIG", flag::double_fp_software_emulated, "Software float",
     "True if basic floating-point operations (such as addition, subtraction, multiplication) are implemented in software."),
    // Children of CL_DEVICE_GLOBAL_MEM_CACHE_TYPE.
    property("CL_DEVICE_GLOBAL_MEM_CACHE_TYPE_NONE", "CL_DEVICE_GLOBAL_MEM_CACHE_TYPE", flag::global_mem_cache_none, "No global memory cache",
     "True if there is no global memory cache."),
    property("CL_DEVICE_GLOBAL_MEM_CACHE_TYPE_READ_ONLY", "CL_DEVICE_GLOBAL_MEM_CACHE_TYPE", flag::global_mem_cache_read_only, "Read only global cache",
     "True if the device global memory cache only supports read operations."),
    property("CL_DEVICE_GLOBAL_MEM_CACHE_TYPE_READ_WRITE", "CL_DEVICE_GLOBAL_MEM_CACHE_TYPE", flag::global_mem_cache_read_write, "Read write global cache",
     "True if the device global memory cache supports read and write operations."),
    // Children of CL_DEVICE_EXECUTION_CAPABILITIES.
    property("CL_DEVICE_EXECUTION_CAPABILITIES_EXEC_KERNEL", "CL_DEVICE_EXECUTION_CAPABILITIES", flag::exec_kernel, "Execute OpenCL Kernels",
     "True if the device can execute OpenCL kernels."),
    property("CL_DEVICE_EXECUTION_CAPABILITIES_EXEC_NATIVE_KERNEL", "CL_DEVICE_EXECUTION_CAPABILITIES", flag::exec_native_kernel, "Execute Native Kernels",
     "True if the device can execute native kernels."),
    // Children of CL_DEVICE_QUEUE_ON_HOST_PROPERTIES.
    property("CL_DEVICE_QUEUE_ON_HOST_PROPERTIES_OUT_OF_ORDER_EXEC", "CL_DEVICE_QUEUE_ON_HOST_PROPERTIES", flag::queue_on_host_out_of_order, "Host command-queue supports out-of-order execution",
     "True if the host command queues support out-of-order execution mode."),
    property("CL_DEVICE_QUEUE_ON_HOST_PROPERTIES_PROFILING", "CL_DEVICE_QUEUE_ON_HOST_PROPERTIES", flag::queue_on_host_profiling, "Host command-queue profiling",
     "True if host command-queues support profiling."),
    // Children of CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES.
    property("CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES_OUT_OF_ORDER_EXEC", "CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES", flag::queue_on_device_out_of_order, "Device command-queue supports out-of-order execution",
     "True if device command-queues support out of order execution mode."),
    property("CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES_PROFILING", "CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES", flag::queue_on_device_profiling, "Device command-queue profiling",
     "True if device command-queues support profiling."),
    property("CL_DEVICE_QUEUE_ON_DEVICE_PREFERRED_SIZE", "CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES", parameter::queue_on_device_preferred_size, "Preferred device command queue size",
     "The size of the device command-queue preferred by the OpenCL implementation. Applications should use this size for the device command-queue to ensure good performance."),
    property("CL_DEVICE_QUEUE_ON_DEVICE_MAX_SIZE", "CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES", parameter::queue_on_device_max_size, "Maxium devices command queue size",
     "The maximum size of the device command-queue in bytes."),
    property("CL_DEVICE_MAX_ON_DEVICE_QUEUES", "CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES", parameter::max_on_device_queues, "Maximum on device command queues",
     "The maximum number of device command-queues that can be created for this device in a single context."),
    property("CL_DEVICE_MAX_ON_DEVICE_EVENTS", "CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES", parameter::max_on_device_events, "Maximum on device events",
     "The maximum number of events in use by a device queue. These refer to events returned by the enqueue_ built-in functions to a device queue or user events returned by the create_user_event built-in function that have not been released."),
    // Children of CL_DEVICE_SVM_CAPABILITIES.
    property("CL_DEVICE_SVM_CAPABILITIES_COARSE_GRAIN_BUFFER", "CL_DEVICE_SVM_CAPABILITIES", flag::svm_coarse_grain_buffer, "Coarse grained buffer SVM",
     "True if the devices supports coarse-grain buffer sharing using clSVMAlloc. Memory consistency is guaranteed at synchronization points, host must map and unmap buffers."),
    property("CL_DEVICE_SVM_CAPABILITIES_FINE_GRAIN_BUFFER", "CL_DEVICE_SVM_CAPABILITIES", flag::svm_fine_grain_buffer, "Fine grained buffer SVM",
     "True if the devices supports fine-grained buffer sharing using clSVMAlloc. Memory consistency is guaranteed at synchronization points without need for mapping and unmapping buffers"),
    property("CL_DEVICE_SVM_CAPABILITIES_FINE_GRAIN_SYSTEM", "CL_DEVICE_SVM_CAPABILITIES", flag::svm_fine_grain_system, "Fine grained system SVM",
     "True if the device supports sharing the host’s entire virtual memory including memory allocated using malloc. Memory consistency is guaranteed at synchronization points."),
    property("CL_DEVICE_SVM_CAPABILITIES_ATOMICS", "CL_DEVICE_SVM_CAPABILITIES", flag::svm_atomics, "SVM Atomics",
     "True if the device supports the OpenCL 2.0 atomic operations that provide memory consistency across the host and all OpenCL devices supporting fine-grain SVM allocations."),
    unlisted(property("DEDICATED_LOCAL_MEMORY", "OPENCL", flag::dedicated_local_memory, "Dedicated local memory",
     "True if the device had dedicated local memory storage.")),
};
// clang-format on

} // namespace

const device_catalogue& get_device_catalogue() {
  static const device_catalogue catalogue(rows);
  return catalogue;
}

} // namespace oryn::tarva::library
