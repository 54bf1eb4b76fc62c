// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What may be given to a kernel as an argument, as far as an implementation tells.
//
// Implementations follow a wrong argument blindly: a number where a buffer belongs, a buffer that was released, a null
// value. So arguments are checked here first, against what the kernel's parameters are and which buffers are alive. OpenCL
// 1.1 and older, and programs that are not from source, tell nothing of parameters; there OpenCL alone judges.
//
// All may be called from any thread. One lock guards the set of live buffers; it is held for a look-up only, and no other lock
// is taken under it.
#pragma once

#include "capability/opencl_functions.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace qv {

struct root_device;

// Buffers are OpenCL's own, not objects of this library. This library knows which it has made and not released.

// To be called when one was made. False without memory: then the buffer cannot be used.
bool add_live_buffer(cl_mem buffer) noexcept;
// To be called before one is released, as its address may be given out again at once.
void remove_live_buffer(cl_mem buffer) noexcept;
// Whether `value`, which may be any number, is a buffer that is alive.
bool is_live_buffer(cl_mem value) noexcept;
// How often a buffer was removed: what was alive at some count is alive as long as the count stays. A launch that sets the
// same buffers as the last one needs no look-up then.
extern std::atomic<std::uint64_t> removed_buffers;

enum class parameter : std::uint8_t { unknown, value, buffer, local_memory, image, sampler, device_queue };

// Nothing if not even their number is told. Throws std::bad_alloc.
std::optional<std::vector<parameter>> parameters_of(const opencl_functions& cl, cl_kernel kernel);

// The status for an argument that `wanted` cannot take and that some implementations would take blindly; CL_SUCCESS for
// what OpenCL may judge. Does not judge whether a buffer is alive.
cl_int check_kind(const root_device& device, parameter wanted, std::size_t size, const void* value) noexcept;

using group_size = std::array<std::size_t, 3>;

// The size of work-groups that the attributes of a kernel demand, as in reqd_work_group_size(8,4,2); zeros if they demand
// none. Some implementations tell it nowhere else.
group_size group_size_in(std::string_view attributes);

} // namespace qv
