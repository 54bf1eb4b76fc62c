// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The six versions of OpenCL, and what each can do. Every difference between them is stated here, in the table of
// commands (capability/commands.h), or among the parameters of devices (properties/device_parameters.h).
//
// A version is a type: classes are templates over it, and a member that a version lacks does not exist there. To add
// a version: its enumerator, its row, its name in the last of the lists below, and what it can do in version_traits.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace oryn::skerv::opencl {

// The value is the number of the capability under which the capability library offers the version.
enum class version : std::uint32_t { v1_0 = 1, v1_1, v1_2, v2_0, v2_1, v2_2 };

struct version_row {
  version value;
  const char* text; // for people
  const char* name; // in names of namespaces
};

inline constexpr std::array version_table{
    version_row{version::v1_0, "1.0", "1_0"}, version_row{version::v1_1, "1.1", "1_1"},
    version_row{version::v1_2, "1.2", "1_2"}, version_row{version::v2_0, "2.0", "2_0"},
    version_row{version::v2_1, "2.1", "2_1"}, version_row{version::v2_2, "2.2", "2_2"},
};

// Instantiates the templates of a source file for each version: `use` is a macro that is given the version's
// enumerator. The shorter lists are for what only some versions have. They serve nothing else: code that does
// something for each version takes a version_list.
#define ORYN_FOR_EACH_VERSION(use) ORYN_FOR_EACH_VERSION_UNTIL_1_1(use) ORYN_FOR_EACH_VERSION_FROM_1_2(use)
#define ORYN_FOR_EACH_VERSION_UNTIL_1_1(use) use(v1_0) use(v1_1)
#define ORYN_FOR_EACH_VERSION_UNTIL_1_2(use) ORYN_FOR_EACH_VERSION_UNTIL_1_1(use) use(v1_2)
#define ORYN_FOR_EACH_VERSION_FROM_1_2(use) use(v1_2) ORYN_FOR_EACH_VERSION_FROM_2_0(use)
#define ORYN_FOR_EACH_VERSION_FROM_2_0(use) use(v2_0) ORYN_FOR_EACH_VERSION_FROM_2_1(use)
#define ORYN_FOR_EACH_VERSION_FROM_2_1(use) use(v2_1) ORYN_FOR_EACH_VERSION_FROM_2_2(use)
#define ORYN_FOR_EACH_VERSION_FROM_2_2(use) use(v2_2)

// For functions that unfold all versions as template arguments.
template <version... versions>
struct version_list {};

template <std::size_t... row>
version_list<version_table[row].value...> list_versions(std::index_sequence<row...>);
using all_versions = decltype(list_versions(std::make_index_sequence<version_table.size()>()));

constexpr std::uint32_t capability_of(version v) {
  return static_cast<std::uint32_t>(v);
}

// A member that some versions lack is a template over the version again, with the trait as its requirement:
// only so do all compilers leave it out where a whole class is instantiated.
template <version V>
struct version_traits {
  static constexpr std::uint32_t capability = capability_of(V);
  static constexpr const char* text = version_table[capability - 1].text;
  static constexpr const char* name = version_table[capability - 1].name;
  static_assert(version_table[capability - 1].value == V);

  // A launch may begin at another global id than 0.
  static constexpr bool has_global_offset = V >= version::v1_1;
  static constexpr bool has_work_group_size_multiple = V >= version::v1_1;

  // Kernels are found by creating all of them; later versions tell their names.
  static constexpr bool has_create_kernels = V <= version::v1_1;
  static constexpr bool has_kernel_names = V >= version::v1_2;

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
