#include "properties/data_type.h"

#include <stdexcept>

namespace oryn::tarva::library {

void refuse_data_type() {
  throw std::logic_error("Unsupported type.");
}

const char* data_type_name(data_type type) {
  return get_data_type_row(type).name;
}

} // namespace oryn::tarva::library
