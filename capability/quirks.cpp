#include "capability/quirks.h"

namespace qv {

quirks quirks_of_platform(std::string_view platform_name) {
  quirks known;
  if (platform_name == "Oclgrind") {
    known.uses_ended_thread_locals = true;
    known.kernel_attributes_dangle = true;
    known.builds_are_not_thread_safe = true;
    known.takes_words_for_files = true;
  } else if (platform_name == "Portable Computing Language") {
    known.tells_parameters_on_demand = true;
    known.asserts_on_large_local_arguments = true;
    known.asserts_on_truncated_binaries = true;
    known.reads_past_last_option = true;
    known.groups = group_limit::under_2_32_in_all;
  } else if (platform_name == "rusticl") {
    known.aborts_on_foreign_binaries = true;
    known.takes_words_for_files = true;
    known.cuts_options_at_quotes = true;
    known.needs_utf8 = true;
    known.groups = group_limit::under_2_32_in_each_dimension;
  }
  return known;
}

} // namespace qv
