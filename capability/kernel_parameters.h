// What the parameters of a kernel take, as far as an implementation tells.
#pragma once

#include "capability/opencl_functions.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace qv {

struct root_device;

enum class parameter : std::uint8_t { unknown, value, buffer, local_memory, image, sampler, device_queue };

// Nothing if not even their number is told. Throws std::bad_alloc.
std::optional<std::vector<parameter>> parameters_of(const opencl_functions& cl, cl_kernel kernel);

using group_size = std::array<std::size_t, 3>;

// The size of work-groups that the attributes of a kernel demand, as in reqd_work_group_size(8,4,2); zeros if they demand
// none. Some implementations tell it nowhere else.
group_size group_size_in(std::string_view attributes);

// The status for an argument that `wanted` cannot take and that some implementations would take blindly; CL_SUCCESS for
// what OpenCL may judge. Does not judge whether a buffer is one.
cl_int check_kind(const root_device& device, parameter wanted, std::size_t size, const void* value) noexcept;

} // namespace qv
