// clCreateProgramWithILKHR, which a caller asks for by its address and then calls without this library.
#pragma once

#include "capability/root_device.h"

namespace qv {

// What to give out as the address of the function on `platform`, whose own is `function`. It checks what it is given, as
// the command for the core function does, and gives out a program of this library. Null if there are
// too many platforms.
void* checked_il_function(const root_device& device, cl_platform_id platform, void* function) noexcept;

} // namespace qv
