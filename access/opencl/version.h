// The six versions of OpenCL, and what each can do. Every difference between them is stated here.
#pragma once

#include <cstdint>

namespace oryn::skerv::opencl {

// The value is the number of the capability under which the capability library offers the version.
enum class version : std::uint32_t { v1_0 = 1, v1_1, v1_2, v2_0, v2_1, v2_2 };

// Instantiates the templates of a source file for each version: `instantiate` is a macro that is given its enumerator.
#define ORYN_FOR_EACH_VERSION(instantiate)                                                                   \
  instantiate(v1_0) instantiate(v1_1) instantiate(v1_2) instantiate(v2_0) instantiate(v2_1) instantiate(v2_2)

template <version... versions>
struct version_list {};
using all_versions =
    version_list<version::v1_0, version::v1_1, version::v1_2, version::v2_0, version::v2_1, version::v2_2>;

constexpr std::uint32_t capability_of(version v) {
  return static_cast<std::uint32_t>(v);
}

template <version V>
struct version_text;

template <>
struct version_text<version::v1_0> {
  static constexpr const char* text = "1.0";
  static constexpr const char* name = "1_0";
};
template <>
struct version_text<version::v1_1> {
  static constexpr const char* text = "1.1";
  static constexpr const char* name = "1_1";
};
template <>
struct version_text<version::v1_2> {
  static constexpr const char* text = "1.2";
  static constexpr const char* name = "1_2";
};
template <>
struct version_text<version::v2_0> {
  static constexpr const char* text = "2.0";
  static constexpr const char* name = "2_0";
};
template <>
struct version_text<version::v2_1> {
  static constexpr const char* text = "2.1";
  static constexpr const char* name = "2_1";
};
template <>
struct version_text<version::v2_2> {
  static constexpr const char* text = "2.2";
  static constexpr const char* name = "2_2";
};

// A member that some versions lack is a template over the version again, with the trait as its requirement:
// only so do all compilers leave it out where a whole class is instantiated.
template <version V>
struct version_traits : version_text<V> {
  static constexpr std::uint32_t capability = capability_of(V);

  // A launch may begin at another global id than 0.
  static constexpr bool has_global_offset = V >= version::v1_1;
  static constexpr bool has_work_group_size_multiple = V >= version::v1_1;

  // Kernels are found by creating all of them; later versions tell their names.
  static constexpr bool has_create_kernels = V <= version::v1_1;
  static constexpr bool has_kernel_names = V >= version::v1_2;

  static constexpr bool has_counted_devices = V >= version::v1_2;
  static constexpr bool has_fill_buffer = V >= version::v1_2;
  static constexpr bool has_builtin_kernels = V >= version::v1_2;
  static constexpr bool has_kernel_attributes = V >= version::v1_2;
  static constexpr bool has_kernel_global_work_size = V >= version::v1_2;
  static constexpr bool has_spir = V >= version::v1_2;

  // An intermediate language is an extension, found through the platform, before it becomes a command.
  static constexpr bool has_il_extension = V == version::v1_2 || V == version::v2_0;
  static constexpr bool has_il = V >= version::v2_1;
  static constexpr bool has_platform = has_il_extension;

  // Queues are told apart by whether the host or the device enqueues to them.
  static constexpr bool has_device_queue = V >= version::v2_0;

  static constexpr bool has_specialization_constants = V >= version::v2_2;
};

} // namespace oryn::skerv::opencl
