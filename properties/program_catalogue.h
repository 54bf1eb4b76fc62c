#pragma once

#include "properties/catalogue.h"

#include <cstdint>
#include <optional>

namespace oryn::tarva::library {

// Where the value of a program's property comes from.
enum class program_source : std::uint8_t {
  none,
  user_label,
  kernel_names,
  object_id,
  source,
  il,
  binary,
};

std::optional<data_type> value_type(program_source source);

using program_catalogue = catalogue<program_source>;

const program_catalogue& get_program_catalogue();

} // namespace oryn::tarva::library
