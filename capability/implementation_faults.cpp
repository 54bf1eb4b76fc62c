#include "capability/implementation_faults.h"

namespace qv {

implementation_faults faults_of_platform(std::string_view platform_name) {
  implementation_faults faults;
  if (platform_name == "Oclgrind") {
    faults.uses_ended_thread_locals = true;
    faults.reads_null_value_arguments = true;
    faults.kernel_attributes_dangle = true;
    faults.builds_are_not_thread_safe = true;
    faults.takes_words_for_files = true;
  } else if (platform_name == "Portable Computing Language") {
    faults.asserts_on_large_local_arguments = true;
    faults.asserts_on_truncated_binaries = true;
    faults.reads_past_last_option = true;
    faults.groups = group_limit::under_2_32_in_all;
  } else if (platform_name == "rusticl") {
    faults.aborts_on_foreign_binaries = true;
    faults.takes_words_for_files = true;
    faults.cuts_options_at_quotes = true;
    faults.needs_utf8 = true;
    faults.groups = group_limit::under_2_32_in_each_dimension;
  }
  return faults;
}

} // namespace qv
