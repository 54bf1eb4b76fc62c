// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The values of the properties of a device: one way of reading for each row of the catalogue. OpenCL is asked each time, as a
// device may become unavailable.
#include "access/common/info_query.h"
#include "opencl/opencl_device.h"

#include <string>
#include <vector>

namespace oryn::tarva::library {

bool opencl_device::read_value(const device_catalogue::row& wanted, property_value& value) {
  using read = device_reading;
  const device_source& source = wanted.source;
  if (source.needs_images && !info_.get_bool(image_support_parameter))
    return false;
  switch (source.reading) {
  case read::none:
    break;
  case read::object_id:
    value.set(get_unique_identifier());
    break;
  case read::uint32:
    value.set(info_.get_uint32(source.parameter));
    break;
  case read::uint64:
    value.set(info_.get_uint64(source.parameter));
    break;
  case read::boolean:
    value.set(info_.get_bool(source.parameter));
    break;
  case read::sizes:
    value.set(info_.get_sizes(source.parameter));
    break;
  case read::bit:
    value.set((info_.get_uint64(source.parameter) & source.operand) != 0);
    break;
  case read::equal_uint32:
    value.set(info_.get_uint32(source.parameter) == source.operand);
    break;
  case read::equal_uint64:
    value.set(info_.get_uint64(source.parameter) == source.operand);
    break;
  case read::embedded_profile:
    value.set(info_.is_embedded_profile());
    break;
  case read::full_profile:
    value.set(!info_.is_embedded_profile());
    break;
  default:
    read_text(source, value);
    break;
  }
  return true;
}

// Not inlined, so that the reading of numbers, which most values are, stays short.
[[gnu::noinline]] void opencl_device::read_text(const device_source& source, property_value& value) {
  using read = device_reading;
  const auto read_list = [&](auto split) {
    value.set_texts([&](std::string& text, std::vector<const char*>& pieces) {
      info_.read_string(source.parameter, text);
      split(text, pieces);
    });
  };
  if (source.reading == read::friendly_short_description)
    value.set(get_friendly_short_description());
  else if (source.reading == read::friendly_summary)
    value.set(get_friendly_summary());
  else if (source.reading == read::words)
    read_list(skerv::common::split_in_place_on_whitespace);
  else if (source.reading == read::semicolon_list)
    read_list(skerv::common::split_in_place_on_semicolon);
  else
    value.set_text([&](std::string& text) { info_.read_string(source.parameter, text); });
}

} // namespace oryn::tarva::library
