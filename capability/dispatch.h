// From the number of a command to what performs it.
#pragma once

#include "capability/executor.h"

#include <array>

namespace qv {

inline constexpr std::size_t highest_command_number = 99;

struct command {
  executor run = nullptr; // null: no such command
  bool releases = false;
};

// Indexed by command number.
using command_array = std::array<command, highest_command_number + 1>;

// `capability` is 1 to 6.
const command_array& commands_of_capability(std::uint32_t capability);

} // namespace qv
