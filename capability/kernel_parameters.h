// What the parameters of a kernel take, as far as an implementation tells.
#pragma once

#include "capability/opencl_functions.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace qv {

struct root_device;

enum class parameter : std::uint8_t { unknown, value, buffer, local_memory, image, sampler, device_queue };

// Nothing if not even their number is told. Throws std::bad_alloc.
std::optional<std::vector<parameter>> parameters_of(const opencl_functions& cl, cl_kernel kernel);

// The status for an argument that `wanted` cannot take and that some implementations would take blindly; CL_SUCCESS for
// what OpenCL may judge. Does not judge whether a buffer is one.
cl_int check_kind(const root_device& device, parameter wanted, std::size_t size, const void* value) noexcept;

} // namespace qv
