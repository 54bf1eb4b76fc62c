#pragma once

#include "access/common/text.h"
#include "properties/device_catalogue.h"
#include "properties/make_property.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

inline std::vector<std::string> device_child_names(version_number version, const property_path& path) {
  return get_device_catalogue().get_child_names(version, path);
}

// True unless the property is one of images, and the device has none.
template <typename access_device>
bool device_has_property(const device_catalogue::row& row, const access_device& device) {
  return row.parent != image_support_key || device.get_bool(image_support_parameter);
}

// The property of a device at `path`, read now. `owner` is the library's device, `device` that of the access
// layer for the same OpenCL version.
template <typename owner_type, typename access_device>
std::shared_ptr<property_base> device_property(owner_type& owner, const property_path& path,
                                               const access_device& device, version_number version) {
  using read = device_reading;
  const device_catalogue& catalogue = get_device_catalogue();
  const device_catalogue::row* row = catalogue.find(version, path);
  if (row == nullptr || !device_has_property(*row, device)) {
    return std::make_shared<property_base>();
  }
  const auto make = [&](auto... value) {
    return make_property(catalogue.get_dictionary(), &owner, path, std::move(value)...);
  };
  const auto [reading, parameter, operand] = row->source;
  switch (reading) {
  case read::none:
    return make();
  case read::friendly_short_description:
    return make(owner.get_friendly_short_description());
  case read::friendly_summary:
    return make(owner.get_friendly_summary());
  case read::object_id:
    return make(owner.get_unique_identifier());
  case read::uint32:
    return make(device.get_uint32(parameter));
  case read::uint64:
    return make(device.get_uint64(parameter));
  case read::boolean:
    return make(device.get_bool(parameter));
  case read::string:
    return make(device.get_string(parameter));
  case read::words:
    return make(skerv::common::split_on_whitespace(device.get_string(parameter)));
  case read::semicolon_list:
    return make(skerv::common::split_on_semicolon(device.get_string(parameter)));
  case read::sizes:
    return make(device.get_sizes(parameter));
  case read::bit:
    return make((device.get_uint64(parameter) & operand) != 0);
  case read::equal_uint32:
    return make(device.get_uint32(parameter) == operand);
  case read::equal_uint64:
    return make(device.get_uint64(parameter) == operand);
  case read::embedded_profile:
    return make(device.get_string(parameter) == "EMBEDDED_PROFILE");
  case read::full_profile:
    return make(device.get_string(parameter) != "EMBEDDED_PROFILE");
  }
  return std::make_shared<property_base>();
}

} // namespace oryn::tarva::library
