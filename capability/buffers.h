// The buffers that are alive: those that this library has made and not released.
#pragma once

#include "capability/opencl_functions.h"

#include <cstdint>

namespace qv {

// False without memory for the note.
bool note_live_buffer(cl_mem buffer) noexcept;
void forget_buffer(cl_mem buffer) noexcept;

// Whether `value`, which may be any number, is a buffer that is alive.
bool is_live_buffer(cl_mem value) noexcept;

// How often a buffer has been forgotten: what was alive at some count is alive as long as the count stays.
std::uint64_t forgotten_buffers() noexcept;

} // namespace qv
