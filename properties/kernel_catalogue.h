#pragma once

#include "properties/catalogue.h"

#include <cstdint>
#include <optional>

namespace oryn::tarva::library {

// Where the value of a kernel's property comes from.
enum class kernel_source : std::uint8_t {
  none,
  max_work_item_dimensions,
  max_work_group_size,
  name,
  object_id,
  required_work_group_size,
  max_global_work_size,
  num_args,
  attributes,
  compile_work_group_size,
  preferred_work_group_size_multiple,
};

std::optional<data_type> value_type(kernel_source source);

using kernel_catalogue = catalogue<kernel_source>;

const kernel_catalogue& get_kernel_catalogue();

} // namespace oryn::tarva::library
