#pragma once

#include "properties/data_type.h"

#include <cstdint>
#include <vector>

namespace oryn::tarva::library {

// What accompanies an intermediate representation.
class ir_header {
public:
  virtual ~ir_header() = default;
};

class empty_ir_header : public ir_header {};

// One specialization constant with its own copy of the value.
class spirv_specialization_constant {
public:
  // Copies one element of `type` from `value`.
  spirv_specialization_constant(std::uint64_t id, data_type type, const void* value);

  std::uint64_t get_id() const { return id_; }
  data_type get_type() const { return type_; }
  // The bytes of the value, element_size(type) of them.
  const void* get_value() const { return value_.empty() ? nullptr : value_.data(); }

private:
  std::uint64_t id_;
  data_type type_;
  std::vector<std::uint8_t> value_;
};

class spirv_specialization_constant_array : public ir_header {
public:
  explicit spirv_specialization_constant_array(std::vector<spirv_specialization_constant> constants)
      : constants_(std::move(constants)) {}

  std::uint64_t size() const { return constants_.size(); }
  const spirv_specialization_constant& at(std::uint64_t index) const;

private:
  std::vector<spirv_specialization_constant> constants_;
};

} // namespace oryn::tarva::library
