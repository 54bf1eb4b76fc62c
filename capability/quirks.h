// Known quirks of OpenCL implementations: what ends the process or spoils its memory, and so must be kept from
// happening, and what is answered wrongly.
#pragma once

#include <string_view>

namespace qv {

// How many work-groups, or work-items, a launch may have before an implementation's counting fails, or never ends.
enum class group_limit { none, items_under_2_32_in_each_dimension, groups_under_2_32_in_all };

// The binaries that an implementation reads blindly, so that only a whole one may be given to it.
enum class binary_format { checked_by_itself, pocl, rusticl, clover };

struct quirks {
  // It keeps thread-local state that is gone once the thread's own destructors have run, and is used
  // nevertheless.
  bool uses_ended_thread_locals = false;
  // What the parameters of a kernel are is told only of a program that was built with an option that asks for it.
  bool tells_parameters_on_demand = false;
  // The callback of a context is called without its user data.
  bool loses_user_data_of_contexts = false;
  // The text of CL_KERNEL_ATTRIBUTES is memory that was freed.
  bool kernel_attributes_dangle = false;
  // A local argument larger than the local memory ends the process at the launch.
  bool asserts_on_large_local_arguments = false;
  // Two threads that build at once spoil its memory.
  bool builds_are_not_thread_safe = false;
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
  // A program of built-in kernels ends the process.
  bool crashes_on_builtin_kernels = false;
  // CL_KERNEL_WORK_GROUP_SIZE is less than what runs: the limit of the device is the true one.
  bool understates_group_sizes = false;
  group_limit groups = group_limit::none;
  // Where it chooses the size of the groups, they have one work-item.
  bool chooses_groups_of_one = false;
};

// By the name of the platform; an unknown platform has no known quirks.
quirks quirks_of_platform(std::string_view platform_name);

} // namespace qv
