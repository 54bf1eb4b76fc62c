#pragma once

#include "access/opencl/version.h"
#include "properties/make_property.h"
#include "properties/program_catalogue.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

template <skerv::opencl::version V>
std::vector<std::string> program_child_names(const property_path& path) {
  return get_program_catalogue().get_child_names(static_cast<version_number>(V), path);
}

// The property of a program at `path`, read now. `owner` is the library's program, `program` that of the
// access layer.
template <skerv::opencl::version V, typename owner_type, typename access_program>
std::shared_ptr<property_base> program_property(owner_type& owner, const property_path& path,
                                                const access_program& program) {
  using from = program_source;
  const program_catalogue& catalogue = get_program_catalogue();
  const program_catalogue::row* row = catalogue.find(static_cast<version_number>(V), path);
  if (row == nullptr) {
    return std::make_shared<property_base>();
  }
  const auto make = [&](auto... value) {
    return make_property(catalogue.get_dictionary(), &owner, path, std::move(value)...);
  };
  switch (row->source) {
  case from::none:
    return make();
  case from::user_label:
    return make(owner.get_name());
  case from::kernel_names:
    return make(owner.get_kernel_names());
  case from::object_id:
    return make(owner.get_unique_identifier());
  case from::source:
    return make(program.get_source());
  case from::binary:
    return make(owner.get_binary());
  case from::il:
    if constexpr (skerv::opencl::version_traits<V>::has_il) {
      return make(program.get_il());
    }
    break;
  }
  return std::make_shared<property_base>();
}

} // namespace oryn::tarva::library
