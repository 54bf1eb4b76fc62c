// How a device reads the values of its catalogue, compiled once for each version.
#pragma once

#include "access/common/text.h"
#include "opencl/opencl_device.h"

#include <string>
#include <vector>

namespace oryn::tarva::library {

template <version V>
bool opencl_version_device<V>::read_value(const device_catalogue::row& wanted, property_value& value) {
  using read = device_reading;
  if (wanted.parent == image_support_key && !device_->get_bool(image_support_parameter))
    return false;
  const device_source& source = wanted.source;
  const auto read_list = [&](auto split) {
    value.set_texts([&](std::string& text, std::vector<const char*>& pieces) {
      device_->read_string(source.parameter, text);
      split(text, pieces);
    });
  };
  switch (source.reading) {
  case read::none:
    break;
  case read::friendly_short_description:
    value.set(get_friendly_short_description());
    break;
  case read::friendly_summary:
    value.set(get_friendly_summary());
    break;
  case read::object_id:
    value.set(this->get_unique_identifier());
    break;
  case read::uint32:
    value.set(device_->get_uint32(source.parameter));
    break;
  case read::uint64:
    value.set(device_->get_uint64(source.parameter));
    break;
  case read::boolean:
    value.set(device_->get_bool(source.parameter));
    break;
  case read::string:
    value.set_text([&](std::string& text) { device_->read_string(source.parameter, text); });
    break;
  case read::words:
    read_list(skerv::common::split_in_place_on_whitespace);
    break;
  case read::semicolon_list:
    read_list(skerv::common::split_in_place_on_semicolon);
    break;
  case read::sizes:
    value.set(device_->get_sizes(source.parameter));
    break;
  case read::bit:
    value.set((device_->get_uint64(source.parameter) & source.operand) != 0);
    break;
  case read::equal_uint32:
    value.set(device_->get_uint32(source.parameter) == source.operand);
    break;
  case read::equal_uint64:
    value.set(device_->get_uint64(source.parameter) == source.operand);
    break;
  case read::embedded_profile:
    value.set(device_->is_embedded_profile());
    break;
  case read::full_profile:
    value.set(device_->is_full_profile());
    break;
  }
  return true;
}

} // namespace oryn::tarva::library
