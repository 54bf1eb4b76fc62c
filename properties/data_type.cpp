#include "properties/data_type.h"

#include <stdexcept>

namespace oryn::tarva::library {

const data_type_row& get_data_type_row(data_type type) {
  const data_type_row* row = find_data_type(type);
  if (row == nullptr) {
    throw std::logic_error("Unsupported type.");
  }
  return *row;
}

std::uint64_t element_size(data_type type) {
  return get_data_type_row(type).element_bytes();
}

const char* data_type_name(data_type type) {
  return get_data_type_row(type).name;
}

} // namespace oryn::tarva::library
