// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "capability/quirks.h"

#include <array>

namespace qv {
namespace {

struct quirks_row {
  std::string_view platform_name;
  quirks known;
};

// Each entry was seen to do harm, or to be answered wrongly, on the implementation of that name. None is meant for one version
// of it.
constexpr std::array rows{
    // A simulator, which keeps a stack of its own for each thread.
    quirks_row{"Oclgrind",
               {.uses_ended_thread_locals = true,
                .loses_user_data_of_contexts = true,
                .tells_wrong_kernel_attributes = true,
                .builds_are_not_thread_safe = true,
                .work_is_not_thread_safe = true,
                .takes_words_for_files = true,
                .counts_groups_in_32_bits = true,
                .chooses_groups_of_one = true}},
    // Without the option it does not say of a kernel's parameters what they are. Its assertions are compiled in.
    quirks_row{"Portable Computing Language",
               {.build_option = "-cl-kernel-arg-info",
                .asserts_on_large_local_arguments = true,
                .binaries = binary_format::pocl,
                .crashes_on_bitcode = true,
                .reads_past_last_option = true,
                .longest_kernel_name = 252,
                .counts_groups_in_32_bits = true,
                .completes_lost_work = true}},
    // Of Mesa. It aborts where it meets what it does not expect.
    quirks_row{"rusticl",
               {.binaries = binary_format::rusticl,
                .takes_words_for_files = true,
                .cuts_options_at_quotes = true,
                .needs_utf8 = true,
                .crashes_on_builtin_kernels = true,
                .understates_group_sizes = true,
                .counts_items_in_32_bits = true}},
    // Of Mesa, too, and older. Without the option, its compiler fails an assertion at each image and sampler.
    quirks_row{"Clover",
               {.build_option = "-no-opaque-pointers",
                .tells_wrong_kernel_attributes = true,
                .binaries = binary_format::clover,
                .takes_words_for_files = true}},
};

} // namespace

quirks quirks_of_platform(std::string_view platform_name) {
  for (const quirks_row& row : rows)
    if (row.platform_name == platform_name)
      return row.known;
  return {};
}

void adapt_to_device(quirks& known, std::string_view device_name, bool takes_spir, bool is_remote) {
  // It can read bitcode where it was built to, which it says by the extension.
  known.crashes_on_bitcode = known.crashes_on_bitcode && !takes_spir;
  known.completes_lost_work = known.completes_lost_work && is_remote;
  // Mesa's device on the processor, which several platforms have.
  constexpr std::string_view mesa_on_processor = "llvmpipe";
  if (device_name.substr(0, mesa_on_processor.size()) == mesa_on_processor)
    known.counts_groups_in_32_bits = true;
}

} // namespace qv
