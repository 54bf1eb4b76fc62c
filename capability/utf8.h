#pragma once

#include <string_view>

namespace qv {

bool is_utf8(std::string_view text);

} // namespace qv
