// What a device of each version takes as a program, and how it loads it; compiled once for each version.
#pragma once

#include "objects/empty_program.h"
#include "objects/ir_type.h"
#include "opencl/opencl_device.h"
#include "opencl/opencl_program.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

namespace oryn::tarva::library {

namespace detail {

// Which kinds a version takes without a condition, by its version.
struct ir_row {
  std::uint64_t type;
  version first;
};

inline constexpr std::array<ir_row, 7> unconditional_ir = {{
    {ir_type::source_1_0, version::v1_0},
    {ir_type::source_1_1, version::v1_1},
    {ir_type::source_1_2, version::v1_2},
    {ir_type::source_2_0, version::v2_0},
    {ir_type::source_2_1, version::v2_1},
    {ir_type::spir_v, version::v2_1},
    {ir_type::device_binary, version::v1_0},
}};

inline constexpr const char* header_is_not_empty = "Expected the IR header to be empty.";

template <version V>
void check_ir_header(const ir_header* header, std::uint64_t type) {
  if (dynamic_cast<const empty_ir_header*>(header) != nullptr)
    return;
  if constexpr (version_traits<V>::has_specialization_constants) {
    if (dynamic_cast<const spirv_specialization_constant_array*>(header) == nullptr)
      throw std::logic_error(
          "Expected the IR header to be empty or be a SPIR-V specialization constant array.");
    if (type == ir_type::spir_v)
      return;
  }
  throw std::logic_error(header_is_not_empty);
}

} // namespace detail

template <version V>
bool opencl_version_device<V>::has_spir_version(const char* wanted) const {
  if constexpr (version_traits<V>::has_spir) {
    if (!device_->has_spir_extension())
      return false;
    const auto versions = device_->template get<skerv::opencl::device_parameter::spir_versions>();
    return std::find(versions.begin(), versions.end(), wanted) != versions.end();
  } else {
    return false;
  }
}

template <version V>
bool opencl_version_device<V>::is_ir_supported(const std::shared_ptr<const ir_header>& header,
                                               std::uint64_t type, const std::vector<std::uint8_t>&,
                                               const std::string&) {
  detail::check_ir_header<V>(header.get(), type);
  for (const auto& row : detail::unconditional_ir)
    if (row.type == type && V >= row.first)
      return true;
  if (type == ir_type::spir_1_2)
    return has_spir_version("1.2");
  if (type == ir_type::spir_2_0)
    return has_spir_version("2.0");
  if constexpr (version_traits<V>::has_il_extension)
    return type == ir_type::spir_v && device_->has_il_program_extension();
  return false;
}

template <version V>
skerv::opencl::program<V>
opencl_version_device<V>::make_program(std::uint64_t type, const std::vector<std::uint8_t>& data) const {
  if (type == ir_type::device_binary || type == ir_type::spir_1_2 || type == ir_type::spir_2_0) {
    std::vector<skerv::opencl::device_binary<V>> binaries;
    binaries.push_back({*device_, data});
    return context_->create_program_with_binaries(binaries);
  }
  if (type == ir_type::spir_v) {
    if constexpr (version_traits<V>::has_il)
      return context_->create_program_with_il(data);
    else if constexpr (version_traits<V>::has_il_extension)
      return context_->create_program_with_il(data.data(), data.size());
  }
  // The text needs not end in a zero byte; OpenCL is told no length.
  const std::string text(data.begin(), data.end());
  return context_->create_program_with_source(text.c_str());
}

template <version V>
void opencl_version_device<V>::set_specialization_constants(skerv::opencl::program<V>& program,
                                                            const ir_header& header) {
  if constexpr (version_traits<V>::has_specialization_constants) {
    const auto* constants = dynamic_cast<const spirv_specialization_constant_array*>(&header);
    for (std::uint64_t i = 0; constants != nullptr && i < constants->size(); ++i) {
      const auto& constant = constants->at(i);
      if (constant.get_id() > UINT32_MAX)
        throw std::logic_error("SPIR-V specialization constant id " + std::to_string(constant.get_id()) +
                               " is not representable in 32-bits for OpenCL.");
      const auto id = static_cast<std::uint32_t>(constant.get_id());
      if (constant.get_type() == data_type::boolean_) {
        std::uint32_t flag = 0;
        std::memcpy(&flag, constant.get_value(), sizeof(flag));
        program.set_specialization_constant(id, flag != 0);
      } else {
        program.set_specialization_constant(id, element_size(constant.get_type()), constant.get_value());
      }
    }
  }
}

template <version V>
build_result opencl_version_device<V>::load_ir(const std::shared_ptr<const ir_header>& header,
                                               std::uint64_t type, const std::vector<std::uint8_t>& data,
                                               const std::string& options, const std::string& user_label) {
  constexpr std::int32_t build_success = 0;
  if (!is_ir_supported(header, type, data, options))
    throw std::logic_error("IR is not supported by the device.");
  skerv::opencl::program<V> program = make_program(type, data);
  if (type == ir_type::spir_v)
    set_specialization_constants(program, *header);
  program.build(list_of_this(), options, nullptr, nullptr);
  std::shared_ptr<library_program> made;
  const bool success = program.get_build_status(*device_) == build_success;
  if (success)
    made = std::make_shared<opencl_version_program<V>>(false, this->shared_from_this(), program, user_label);
  else
    made = std::make_shared<empty_program>(false, this->shared_from_this(), user_label);
  return build_result(success, std::move(made), program.get_build_log(*device_));
}

} // namespace oryn::tarva::library
