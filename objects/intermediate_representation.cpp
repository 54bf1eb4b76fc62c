#include "objects/intermediate_representation.h"

#include <stdexcept>
#include <string>

namespace oryn::tarva::library {

spirv_specialization_constant::spirv_specialization_constant(std::uint64_t id, data_type type,
                                                             const void* value)
    : id_(id), type_(type), value_(copy_element_bytes(value, type)) {}

const spirv_specialization_constant& spirv_specialization_constant_array::at(std::uint64_t index) const {
  if (index >= constants_.size())
    throw std::out_of_range("Attempted to access array entry " + std::to_string(index) +
                            " but there are only " + std::to_string(constants_.size()) + " array elements.");
  return constants_[index];
}

} // namespace oryn::tarva::library
