#pragma once

#include "capability/opencl_functions.h"

#include <cstddef>

namespace qv {

// False if `bytes` begin as a SPIR-V module and do not go on as one: an instruction that does not fit, or a
// function without end; or if the module is newer than what a device of `context` says that it takes. Other languages
// are not judged.
bool is_harmless_module(const opencl_functions& cl, cl_context context, const void* bytes,
                        std::size_t length);

} // namespace qv
