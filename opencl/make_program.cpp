// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "opencl/make_program.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <string>

namespace oryn::tarva::library {

namespace {

// The kinds of IR that devices take from some version on, whatever else they have.
struct ir_row {
  std::uint64_t type;
  version first;
};

constexpr std::array<ir_row, 7> unconditional_ir = {{
    {ir_type::source_1_0, version::v1_0},
    {ir_type::source_1_1, version::v1_1},
    {ir_type::source_1_2, version::v1_2},
    {ir_type::source_2_0, version::v2_0},
    {ir_type::source_2_1, version::v2_1},
    {ir_type::spir_v, version::v2_1},
    {ir_type::device_binary, version::v1_0},
}};

constexpr const char* header_is_not_empty = "Expected the IR header to be empty.";

// Constants go with SPIR-V alone, and only where the version has a function for them. Whoever gives them for something else would
// wrongly believe them to be set.
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

// SPIR is an extension: the device lists the versions that it takes.
template <version V>
bool has_spir_version(const skerv::opencl::device<V>& device, const char* wanted) {
  if constexpr (version_traits<V>::has_spir) {
    if (!device.has_spir_extension())
      return false;
    const auto versions = device.template get<skerv::opencl::device_parameter::spir_versions>();
    return std::find(versions.begin(), versions.end(), wanted) != versions.end();
  } else {
    return false;
  }
}

// SPIR modules are given to OpenCL like binaries of a device. What remains is source.
template <version V>
skerv::opencl::program<V>
make_unspecialized_program(const skerv::opencl::context<V>& context, const skerv::opencl::device<V>& device,
                           std::uint64_t type, const std::vector<std::uint8_t>& data) {
  if (type == ir_type::device_binary || type == ir_type::spir_1_2 || type == ir_type::spir_2_0) {
    std::vector<skerv::opencl::device_binary<V>> binaries;
    binaries.push_back({device, data});
    return context.create_program_with_binaries(binaries);
  }
  if (type == ir_type::spir_v) {
    if constexpr (version_traits<V>::has_il)
      return context.create_program_with_il(data);
    else if constexpr (version_traits<V>::has_il_extension)
      return context.create_program_with_il(data.data(), data.size());
  }
  // The text needs not end in a zero byte; OpenCL is told no length.
  const std::string text(data.begin(), data.end());
  return context.create_program_with_source(text.c_str());
}

// Before the build, which looks at them. A boolean is 4 bytes here and a C++ bool below.
template <version V>
void set_specialization_constants(skerv::opencl::program<V>& program, const ir_header& header) {
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

} // namespace

template <version V>
bool takes_ir(const skerv::opencl::device<V>& device, const ir_header* header, std::uint64_t type) {
  check_ir_header<V>(header, type);
  for (const auto& row : unconditional_ir)
    if (row.type == type && V >= row.first)
      return true;
  if (type == ir_type::spir_1_2)
    return has_spir_version<V>(device, "1.2");
  if (type == ir_type::spir_2_0)
    return has_spir_version<V>(device, "2.0");
  if constexpr (version_traits<V>::has_il_extension)
    return type == ir_type::spir_v && device.has_il_program_extension();
  return false;
}

template <version V>
skerv::opencl::program<V> make_program(const skerv::opencl::context<V>& context,
                                       const skerv::opencl::device<V>& device, const ir_header& header,
                                       std::uint64_t type, const std::vector<std::uint8_t>& data) {
  skerv::opencl::program<V> program = make_unspecialized_program<V>(context, device, type, data);
  if (type == ir_type::spir_v)
    set_specialization_constants<V>(program, header);
  return program;
}

#define INSTANTIATE(V)                                                                                       \
  template bool takes_ir<version::V>(const skerv::opencl::device<version::V>&, const ir_header*,             \
                                     std::uint64_t);                                                         \
  template skerv::opencl::program<version::V> make_program<version::V>(                                      \
      const skerv::opencl::context<version::V>&, const skerv::opencl::device<version::V>&, const ir_header&, \
      std::uint64_t, const std::vector<std::uint8_t>&);
ORYN_FOR_EACH_VERSION(INSTANTIATE)
#undef INSTANTIATE

} // namespace oryn::tarva::library
