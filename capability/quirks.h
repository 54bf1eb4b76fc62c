// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Known quirks of OpenCL implementations: what ends the process or spoils its memory, and so must be kept from
// happening, and what is answered wrongly.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qv {

// The binaries that an implementation reads blindly, so that only a whole one may be given to it.
enum class binary_format { checked_by_itself, pocl, rusticl, clover };

struct quirks {
  // It keeps thread-local state that is gone once the thread's own destructors have run, and is used
  // nevertheless.
  bool uses_ended_thread_locals = false;
  // What it has to be told with each build from source, lest it hide the parameters of kernels or end the process.
  const char* build_option = nullptr;
  // The callback of a context is called without its user data.
  bool loses_user_data_of_contexts = false;
  // The text of CL_KERNEL_ATTRIBUTES is memory that was freed, or another kernel's.
  bool tells_wrong_kernel_attributes = false;
  // A local argument larger than the local memory ends the process at the launch.
  bool asserts_on_large_local_arguments = false;
  // Two threads that build at once spoil its memory.
  bool builds_are_not_thread_safe = false;
  // So do two that enqueue or finish at once, on whatever devices and queues, and two kernels compute wrong results.
  bool work_is_not_thread_safe = false;
  binary_format binaries = binary_format::checked_by_itself;
  // LLVM bitcode as a binary ends the process, unless the device says that it takes SPIR.
  bool crashes_on_bitcode = false;
  // A build option that lacks its value is looked for beyond the end of the options.
  bool reads_past_last_option = false;
  // Words among the build options that are no options are taken for files to compile, of which there may be
  // one.
  bool takes_words_for_files = false;
  // Build options are cut into words at quotes, too, and a word of one byte ends the process.
  bool cuts_options_at_quotes = false;
  // Text that is not UTF-8 ends the process.
  bool needs_utf8 = false;
  // Kernels become files of their name: a longer one ends the process at the launch.
  std::size_t longest_kernel_name = SIZE_MAX;
  // A program of built-in kernels ends the process.
  bool crashes_on_builtin_kernels = false;
  // CL_KERNEL_WORK_GROUP_SIZE is less than what runs: the limit of the device is the true one.
  bool understates_group_sizes = false;
  // Work-items of a dimension, or the work-groups of a launch, are counted in 32 bits: more end the process, are not done,
  // or take for ever.
  bool counts_items_in_32_bits = false;
  bool counts_groups_in_32_bits = false;
  // Where it chooses the size of the groups, they have one work-item.
  bool chooses_groups_of_one = false;
  // Work that was under way when the device was lost counts as done, though nothing has been read or written.
  bool completes_lost_work = false;
};

// By the name of the platform; an unknown platform has no known quirks.
quirks quirks_of_platform(std::string_view platform_name);

// Adjusts them to what a device tells.
void adapt_to_device(quirks& known, std::string_view device_name, bool takes_spir, bool is_remote);

} // namespace qv
