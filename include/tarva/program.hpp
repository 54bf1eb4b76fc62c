// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

/// @file
/// Programs, and what they are built from.
#ifndef TARVA_PROGRAM_HPP
#define TARVA_PROGRAM_HPP

#include <tarva/handle.hpp>
#include <tarva/kernel.hpp>
#include <tarva/property.hpp>
#include <tarva/result.hpp>
#include <tarva/types.hpp>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace tarva {

/// What the data of a program is; see tarva_abi_ir_type for the devices that take it.
enum class ir : tarva_abi_ir_type {
  source_1_0 = TARVA_ABI_IR_SOURCE_1_0,
  source_1_1 = TARVA_ABI_IR_SOURCE_1_1,
  source_1_2 = TARVA_ABI_IR_SOURCE_1_2,
  source_2_0 = TARVA_ABI_IR_SOURCE_2_0,
  source_2_1 = TARVA_ABI_IR_SOURCE_2_1,
  spir_1_2 = TARVA_ABI_IR_SPIR_1_2,
  spir_2_0 = TARVA_ABI_IR_SPIR_2_0,
  spir_v = TARVA_ABI_IR_SPIR_V,
  device_binary = TARVA_ABI_IR_DEVICE_BINARY
};

/// A value for a specialization constant of a SPIR-V module.
class constant {
public:
  template <class T>
  constant(std::uint32_t id, const T& value) noexcept : id_(id), type_(element<T>::type) {
    static_assert(is_element<T>, TARVA_NO_VALUE);
    std::memcpy(bytes_.data(), &value, sizeof value);
  }
  /// Points into this object.
  tarva_abi_specialization_constant_s record() const noexcept { return {id_, type_, bytes_.data()}; }

private:
  std::uint32_t id_;
  tarva_abi_data_type type_;
  std::array<unsigned char, sizeof(double16)> bytes_{};
};

/// A program of one device.
class program : public handle<tarva_abi_program_s, tarva_abi_retain_program, tarva_abi_release_program> {
public:
  using handle::handle;

  /// A kernel by its name. If there is none of that name, the failure tells those there are.
  tarva::kernel kernel(text name) const {
    tarva_abi_kernel_s* record = nullptr;
    detail::call_with<tarva_abi_get_kernel>(
        [&](tarva_abi_result code, const std::vector<failure>&) {
          return code == TARVA_ABI_RUNTIME_FAILURE ? list_kernels(name.c_str()) : "";
        },
        get(), name.c_str(), &record);
    return tarva::kernel(record);
  }
  /// A kernel by its name, with its parameters.
  template <class... Parameters>
  function<Parameters...> kernel(text name) const {
    return function<Parameters...>(kernel(name));
  }

  /// The names of its kernels.
  std::vector<std::string> kernel_names() const {
    return properties()["KERNEL_NAMES"].get_all<std::string>();
  }

  property properties() const { return detail::root<tarva_abi_get_program_root_property>(get()); }

private:
  /// For a failure, so it fails no more itself.
  std::string list_kernels(std::string_view wanted) const {
    if (!*this)
      return {};
    const auto names = attempt([this] { return kernel_names(); });
    if (!names)
      return {};
    std::string list;
    for (const std::string& one : *names) {
      if (one == wanted) // it fails for another reason
        return {};
      list += (list.empty() ? "" : ", ") + one;
    }
    return "There is no " + std::string(wanted) +
           (list.empty() ? ", and no other." : ", but there are: " + list + '.');
  }
};

/// What became of a program.
struct build_result {
  program made{}; ///< without kernels if the build failed
  std::string log{};
  bool success = false;
};

} // namespace tarva

#endif
