// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The property tree of devices.
#pragma once

#include "properties/catalogue.h"
#include "properties/device_parameters.h"

#include <cstdint>
#include <string_view>

namespace oryn::tarva::library {

// How the value of a device's property is obtained: not at all, from what the library knows of the device, or, from
// `uint32` on, from the device query `parameter`. The device reads it (opencl/opencl_device.cpp), each time it is
// asked.
enum class device_reading : std::uint8_t {
  none,
  friendly_short_description,
  friendly_summary,
  object_id,
  uint32,
  uint64,
  boolean,
  string,
  words,          // a string, split at whitespace
  semicolon_list, // a string, split at semicolons
  sizes,          // three sizes
  bit,            // whether the operand, a bit, is set in a 64-bit value
  equal_uint32,   // whether a 32-bit value is the operand
  equal_uint64,   // whether a 64-bit value is the operand
  embedded_profile,
  full_profile,
};

struct device_source {
  device_reading reading;
  std::uint32_t parameter = 0;
  std::uint64_t operand = 0;
  bool needs_images = false; // the property is there only if the device has images
};

using device_catalogue = catalogue<device_source>;

// Made by the first call, which any thread may be, and never changed.
const device_catalogue& get_device_catalogue();

// On a device without images the children of this key do not exist (`needs_images`), though they are listed.
inline constexpr std::string_view image_support_key = "CL_DEVICE_IMAGE_SUPPORT";
inline constexpr std::uint32_t image_support_parameter = device_parameter::image_support.number;

} // namespace oryn::tarva::library
