#pragma once

#include "access/opencl/version.h"
#include "properties/kernel_catalogue.h"
#include "properties/make_property.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

template <skerv::opencl::version V>
std::vector<std::string> kernel_child_names(const property_path& path) {
  return get_kernel_catalogue().get_child_names(static_cast<version_number>(V), path);
}

// The property of a kernel at `path`, read now. `owner` is the library's kernel, `kernel` and `device` those
// of the access layer.
template <skerv::opencl::version V, typename owner_type, typename access_kernel, typename access_device>
std::shared_ptr<property_base> kernel_property(owner_type& owner, const property_path& path,
                                               const access_kernel& kernel, const access_device& device) {
  using from = kernel_source;
  using traits = skerv::opencl::version_traits<V>;
  constexpr std::uint32_t max_work_item_dimensions = 0x1003;
  const kernel_catalogue& catalogue = get_kernel_catalogue();
  const kernel_catalogue::row* row = catalogue.find(static_cast<version_number>(V), path);
  if (row == nullptr) {
    return std::make_shared<property_base>();
  }
  const auto make = [&](auto... value) {
    return make_property(catalogue.get_dictionary(), &owner, path, std::move(value)...);
  };
  switch (row->source) {
  case from::none:
    return make();
  case from::max_work_item_dimensions:
    return make(device.get_uint32(max_work_item_dimensions));
  case from::max_work_group_size:
    return make(kernel.get_work_group_size(device));
  case from::name:
    return make(kernel.get_function_name());
  case from::object_id:
    return make(owner.get_unique_identifier());
  case from::required_work_group_size:
    return make(owner.get_compile_work_group_size());
  case from::max_global_work_size:
    return make(owner.get_max_global_size());
  case from::num_args:
    return make(kernel.get_num_args());
  case from::compile_work_group_size:
    return make(kernel.get_compile_work_group_size(device));
  case from::attributes:
    if constexpr (traits::has_kernel_attributes) {
      return make(kernel.get_attributes());
    }
    break;
  case from::preferred_work_group_size_multiple:
    if constexpr (traits::has_work_group_size_multiple) {
      return make(kernel.get_preferred_work_group_size_multiple(device));
    }
    break;
  }
  return std::make_shared<property_base>();
}

} // namespace oryn::tarva::library
