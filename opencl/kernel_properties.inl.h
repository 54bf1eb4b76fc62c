// How a kernel reads the values of its catalogue, compiled once for each version.
#pragma once

#include "opencl/opencl_kernel.h"

namespace oryn::tarva::library {

template <version V>
bool opencl_version_kernel<V>::read_value(const kernel_catalogue::row& wanted, property_value& value) {
  using from = kernel_source;
  switch (wanted.source) {
  case from::none:
    break;
  case from::max_work_item_dimensions:
    value.set(device_.template get<skerv::opencl::device_parameter::max_work_item_dimensions>());
    break;
  case from::max_work_group_size:
    value.set(kernel_.get_work_group_size(device_));
    break;
  case from::name:
    value.set(kernel_.get_function_name());
    break;
  case from::object_id:
    value.set(this->get_unique_identifier());
    break;
  case from::required_work_group_size:
    value.set(get_compile_work_group_size());
    break;
  case from::max_global_work_size:
    value.set(get_max_global_size());
    break;
  case from::num_args:
    value.set(kernel_.get_num_args());
    break;
  case from::compile_work_group_size:
    value.set(kernel_.get_compile_work_group_size(device_));
    break;
  case from::attributes:
    if constexpr (version_traits<V>::has_kernel_attributes)
      value.set(kernel_.get_attributes());
    break;
  case from::preferred_work_group_size_multiple:
    if constexpr (version_traits<V>::has_work_group_size_multiple)
      value.set(kernel_.get_preferred_work_group_size_multiple(device_));
    break;
  }
  return true;
}

} // namespace oryn::tarva::library
