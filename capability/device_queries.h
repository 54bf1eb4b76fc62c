// Questions to platforms and devices. What cannot be known is nothing, and no failure.
#pragma once

#include "capability/opencl_functions.h"

#include <cstdint>
#include <optional>
#include <string>

namespace qv {

// Nothing if the text cannot be had in one piece.
std::optional<std::string> platform_text(const opencl_functions& cl, cl_platform_id platform,
                                         cl_platform_info name);
std::optional<std::string> device_text(const opencl_functions& cl, cl_device_id device, cl_device_info name);

// A number, flag or bit field of up to 64 bits. 0 if the query fails, where that is not told from it.
std::optional<std::uint64_t> told_device_number(const opencl_functions& cl, cl_device_id device,
                                                cl_device_info name);
std::uint64_t platform_number(const opencl_functions& cl, cl_platform_id platform, cl_platform_info name);
std::uint64_t device_number(const opencl_functions& cl, cl_device_id device, cl_device_info name);

} // namespace qv
