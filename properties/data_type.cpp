#include "properties/data_type.h"

#include <stdexcept>

namespace oryn::tarva::library {

void refuse_data_type() {
  throw std::logic_error("Unsupported type.");
}

const char* data_type_name(data_type type) {
  const data_type_row* row = find_data_type(type);
  if (row == nullptr)
    refuse_data_type();
  return row->name;
}

} // namespace oryn::tarva::library
