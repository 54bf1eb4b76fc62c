// How a program reads the values of its catalogue, compiled once for each version.
#pragma once

#include "opencl/opencl_program.h"

namespace oryn::tarva::library {

template <version V>
bool opencl_version_program<V>::read_value(const program_catalogue::row& wanted, property_value& value) {
  using from = program_source;
  switch (wanted.source) {
  case from::none:
    break;
  case from::user_label:
    value.set(this->get_name());
    break;
  case from::kernel_names:
    value.set(get_kernel_names());
    break;
  case from::object_id:
    value.set(this->get_unique_identifier());
    break;
  case from::source:
    value.set(program_->get_source());
    break;
  case from::binary:
    value.set(get_binary());
    break;
  case from::il:
    if constexpr (version_traits<V>::has_il)
      value.set(program_->get_il());
    break;
  }
  return true;
}

} // namespace oryn::tarva::library
