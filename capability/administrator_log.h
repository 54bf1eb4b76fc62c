// What an administrator may want to know of the machine, for those who ask for it by QV_LOG.
#pragma once

#include <initializer_list>
#include <string_view>

namespace qv {

// Writes one line of these parts to the standard error stream if the environment variable QV_LOG is set, and is
// neither empty nor "0".
void tell_administrator(std::initializer_list<std::string_view> parts) noexcept;

} // namespace qv
