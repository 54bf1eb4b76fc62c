#pragma once

#include <cstddef>

namespace qv {

// False if `bytes` begin as a SPIR-V module and do not go on as one: an instruction that does not fit, or a
// function without end. Other languages are not judged.
bool is_whole_if_spirv(const void* bytes, std::size_t length);

} // namespace qv
