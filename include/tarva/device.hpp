/// @file
/// The devices of the machine.
#ifndef TARVA_DEVICE_HPP
#define TARVA_DEVICE_HPP

#include <tarva/error.hpp>
#include <tarva/handle.hpp>
#include <tarva/program.hpp>
#include <tarva/property.hpp>
#include <tarva/view.hpp>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarva {

/// One device, under one OpenCL version.
class device : public handle<tarva_abi_device_s, tarva_abi_retain_device, tarva_abi_release_device> {
public:
  using handle::handle;

  std::string name() const { return properties()["NAME"].get<std::string>(); }
  property properties() const { return detail::root<tarva_abi_get_device_root_property>(get()); }

  /// Builds OpenCL C source. Throws build_failure if it does not build.
  program build(std::string_view source, text options = "", text label = "") const {
    return load(ir::source_1_0, as_bytes(source), options, label);
  }
  /// Builds a program of any kind. Throws build_failure if it does not build.
  program load(ir kind, view<const std::byte> data, text options = "", text label = "",
               const std::vector<constant>& constants = {}) const {
    build_result result = try_load(kind, data, options, label, constants);
    if (!result.success)
      throw build_failure(std::move(result.log));
    return std::move(result.made);
  }
  /// The same, but a build that fails is a result, too.
  build_result try_load(ir kind, view<const std::byte> data, text options = "", text label = "",
                        const std::vector<constant>& constants = {}) const {
    using unique = std::unique_ptr<tarva_abi_build_result_s, detail::give_up<tarva_abi_free_build_result>>;
    header accompanying(constants);
    tarva_abi_build_result_s* record = nullptr;
    detail::call<tarva_abi_load_device_ir>(get(), &accompanying.record, static_cast<tarva_abi_ir_type>(kind),
                                           static_cast<const void*>(data.data()), std::uint64_t{data.size()},
                                           options.c_str(), label.c_str(), &record);
    const unique owned(record);
    program made(record->program);
    return {std::move(made), record->build_log == nullptr ? "" : record->build_log, record->success != 0};
  }
  /// Whether the device takes such data. Nothing is built.
  bool supports(ir kind, const std::vector<constant>& constants = {}) const {
    header accompanying(constants);
    std::uint64_t supported = 0;
    detail::call<tarva_abi_check_device_ir_support>(
        get(), &accompanying.record, static_cast<tarva_abi_ir_type>(kind), static_cast<const void*>(nullptr),
        std::uint64_t{0}, "", &supported);
    return supported != 0;
  }

  /// The program of the kernels that are built into the device.
  program builtin_program() const {
    tarva_abi_program_s* record = nullptr;
    detail::call<tarva_abi_get_builtin_program>(get(), &record);
    return program(record);
  }

private:
  /// The record that accompanies a program's data.
  struct header {
    explicit header(const std::vector<constant>& from) {
      for (const constant& one : from)
        constants.push_back(one.record());
      if (!constants.empty())
        record = {TARVA_ABI_IR_HEADER_SPECIALIZATION_CONSTANTS, constants.data(), constants.size()};
    }
    std::vector<tarva_abi_specialization_constant_s> constants{};
    tarva_abi_ir_header_s record{TARVA_ABI_IR_HEADER_EMPTY, nullptr, 0};
  };
};

/// All devices, in the library's order: those of OpenCL 1.0 first.
inline std::vector<device> devices() {
  using array = std::unique_ptr<tarva_abi_device_array_s, detail::give_up<tarva_abi_free_device_array>>;
  tarva_abi_device_array_s* record = nullptr;
  detail::call<tarva_abi_get_devices>(&record);
  const array owned(record);
  std::vector<device> result;
  result.reserve(record->count);
  for (std::uint64_t i = 0; i < record->count; ++i)
    result.emplace_back(record->devices[i]);
  return result;
}

/// The first device. Throws runtime_failure if the machine has none.
inline device first_device() {
  std::vector<device> all = devices();
  if (all.empty())
    throw runtime_failure(TARVA_ABI_RUNTIME_FAILURE, "The machine has no OpenCL device.", {});
  return std::move(all.front());
}

} // namespace tarva

#endif
