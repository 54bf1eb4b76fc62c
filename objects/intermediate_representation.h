// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What programs are loaded from, and what loading gives.
#pragma once

#include "properties/data_type.h"

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

// The kinds of intermediate representation, with the values of the public interface.
namespace ir_type {

inline constexpr std::uint64_t source_1_0 = 1;
inline constexpr std::uint64_t source_1_1 = 2;
inline constexpr std::uint64_t source_1_2 = 3;
inline constexpr std::uint64_t source_2_0 = 4;
inline constexpr std::uint64_t source_2_1 = 5;
inline constexpr std::uint64_t spir_1_2 = 6;
inline constexpr std::uint64_t spir_2_0 = 7;
inline constexpr std::uint64_t spir_v = 8;
inline constexpr std::uint64_t device_binary = 9;

} // namespace ir_type

// What accompanies an intermediate representation. Made by the exported function from the caller's record, then shared and
// never changed; the device finds out by its class what it is.
class ir_header {
public:
  virtual ~ir_header() = default;
};

// For all that needs nothing besides its data and options.
class empty_ir_header : public ir_header {};

// One specialization constant with its own copy of the value.
class spirv_specialization_constant {
public:
  // Copies one element of `type` from `value`.
  spirv_specialization_constant(std::uint64_t id, data_type type, const void* value)
      : id_(id), type_(type), value_(copy_element_bytes(value, type)) {}

  std::uint64_t get_id() const { return id_; }
  data_type get_type() const { return type_; }
  // The bytes of the value, element_size(type) of them.
  const void* get_value() const { return value_.empty() ? nullptr : value_.data(); }

private:
  std::uint64_t id_;
  data_type type_;
  std::vector<std::uint8_t> value_;
};

// The values with which the constants of a SPIR-V module are replaced when it is built.
class spirv_specialization_constant_array : public ir_header {
public:
  explicit spirv_specialization_constant_array(std::vector<spirv_specialization_constant> constants)
      : constants_(std::move(constants)) {}

  std::uint64_t size() const { return constants_.size(); }
  const spirv_specialization_constant& at(std::uint64_t index) const {
    if (index >= constants_.size())
      throw std::out_of_range("Attempted to access array entry " + std::to_string(index) +
                              " but there are only " + std::to_string(constants_.size()) +
                              " array elements.");
    return constants_[index];
  }

private:
  std::vector<spirv_specialization_constant> constants_;
};

class library_program;

// What library_device::load_ir() gives: after a failed build `success` is false, `program` is an empty program, and the log says
// why. A program that does not build is an answer and no exception.
struct build_result {
  build_result(bool is_success, std::shared_ptr<library_program> made, std::string text)
      : success(is_success), program(std::move(made)), log(std::move(text)) {}

  bool success;
  std::shared_ptr<library_program> program;
  std::string log;
};

} // namespace oryn::tarva::library
