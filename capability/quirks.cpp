#include "capability/quirks.h"

#include <array>

namespace qv {
namespace {

struct quirks_row {
  std::string_view platform_name;
  quirks known;
};

constexpr std::array rows{
    quirks_row{"Oclgrind",
               {.uses_ended_thread_locals = true,
                .loses_user_data_of_contexts = true,
                .kernel_attributes_dangle = true,
                .builds_are_not_thread_safe = true,
                .takes_words_for_files = true,
                .groups = group_limit::groups_under_2_32_in_all,
                .chooses_groups_of_one = true}},
    quirks_row{"Portable Computing Language",
               {.tells_parameters_on_demand = true,
                .asserts_on_large_local_arguments = true,
                .binaries = binary_format::pocl,
                .crashes_on_bitcode = true,
                .reads_past_last_option = true,
                .groups = group_limit::groups_under_2_32_in_all}},
    quirks_row{"rusticl",
               {.binaries = binary_format::rusticl,
                .takes_words_for_files = true,
                .cuts_options_at_quotes = true,
                .needs_utf8 = true,
                .crashes_on_builtin_kernels = true,
                .understates_group_sizes = true,
                .groups = group_limit::items_under_2_32_in_each_dimension}},
    quirks_row{"Clover", {.binaries = binary_format::clover, .takes_words_for_files = true}},
};

} // namespace

quirks quirks_of_platform(std::string_view platform_name) {
  for (const quirks_row& row : rows)
    if (row.platform_name == platform_name)
      return row.known;
  return {};
}

} // namespace qv
