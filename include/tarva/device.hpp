// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

/// @file
/// The devices of the machine.
#ifndef TARVA_DEVICE_HPP
#define TARVA_DEVICE_HPP

#include <tarva/error.hpp>
#include <tarva/handle.hpp>
#include <tarva/program.hpp>
#include <tarva/property.hpp>
#include <tarva/result.hpp>
#include <tarva/view.hpp>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

namespace tarva {

/// The type of a device; best_device() prefers a later one. A device of several types at once is `other`.
enum class device_type { other, custom, cpu, accelerator, gpu };

/// "gpu" and so on, also for TARVA_DEVICE.
constexpr const char* name_of(device_type type) noexcept {
  constexpr const char* names[] = {"other", "custom", "cpu", "accelerator", "gpu"};
  return names[static_cast<std::size_t>(type)];
}

/// One device, under one OpenCL version.
class device : public handle<tarva_abi_device_s, tarva_abi_retain_device, tarva_abi_release_device> {
public:
  using handle::handle;

  std::string name() const { return properties()["NAME"].get<std::string>(); }
  property properties() const { return detail::root<tarva_abi_get_device_root_property>(get()); }

  device_type type() const {
    const property opencl = properties()["OPENCL"];
    for (const auto& [key, type] : {std::pair{"CL_DEVICE_TYPE_GPU", device_type::gpu},
                                    {"CL_DEVICE_TYPE_CPU", device_type::cpu},
                                    {"CL_DEVICE_TYPE_ACCELERATOR", device_type::accelerator},
                                    {"CL_DEVICE_TYPE_CUSTOM", device_type::custom}})
      if (const auto flag = opencl.find(key); flag && flag->get<bool>()) // no custom ones below OpenCL 1.2
        return type;
    return device_type::other;
  }

  /// The OpenCL version under which the library offers the device, such as "1.2". The device itself may be of a later
  /// one, which its CL_DEVICE_VERSION tells.
  std::string version() const {
    return properties()["FRIENDLY_SUMMARY"].get<std::string>().substr(std::strlen("OpenCL "), 3);
  }

  /// Builds OpenCL C source. Throws build_failure if it does not build. Where there is a label, the compiler's
  /// messages have it in the place of a file's name.
  program build(std::string_view source, text options = "", text label = "") const {
    return load(ir::source_1_0, as_bytes(source), options, label);
  }
  /// Builds a program of any kind. Throws build_failure if it does not build.
  program load(ir kind, view<const std::byte> data, text options = "", text label = "",
               const std::vector<constant>& constants = {}) const {
    build_result result = try_load(kind, data, options, label, constants);
    if (!result.success) {
      const bool has_no_body =
          is_source(kind) && std::find(data.begin(), data.end(), std::byte{'{'}) == data.end();
      detail::fail<build_failure>(std::move(result.log), label.c_str(), options.c_str(),
                                  has_no_body ? "A source is the text of a program, not the name of a file."
                                              : "");
    }
    return std::move(result.made);
  }
  /// The same, but a build that fails is a result, too.
  build_result try_load(ir kind, view<const std::byte> data, text options = "", text label = "",
                        const std::vector<constant>& constants = {}) const {
    using unique = std::unique_ptr<tarva_abi_build_result_s, detail::give_up<tarva_abi_free_build_result>>;
    const std::string named =
        is_source(kind) && *label.c_str() != '\0' ? with_file_name(data, label.c_str()) : "";
    if (!named.empty())
      data = as_bytes(named);
    header accompanying(constants);
    tarva_abi_build_result_s* record = nullptr;
    const auto add_options = [&](tarva_abi_result code, const std::vector<failure>&) {
      return code == TARVA_ABI_RUNTIME_FAILURE && *options.c_str() != '\0'
                 ? std::string("The options were: ") + options.c_str()
                 : "";
    };
    if (!detail::call_with<tarva_abi_load_device_ir>(
            add_options, get(), &accompanying.record, static_cast<tarva_abi_ir_type>(kind),
            static_cast<const void*>(data.data()), std::uint64_t{data.size()}, options.c_str(), label.c_str(),
            &record))
      return {};
    const unique owned(record);
    program made(record->program);
    return {std::move(made), record->build_log == nullptr ? "" : record->build_log, record->success != 0};
  }
  /// Whether the device takes such data. Nothing is built.
  bool supports(ir kind, const std::vector<constant>& constants = {}) const {
    header accompanying(constants);
    std::uint64_t supported = 0;
    call<tarva_abi_check_device_ir_support>(get(), &accompanying.record, static_cast<tarva_abi_ir_type>(kind),
                                            static_cast<const void*>(nullptr), std::uint64_t{0}, "",
                                            &supported);
    return supported != 0;
  }

  /// The program of the kernels that are built into the device.
  program builtin_program() const {
    tarva_abi_program_s* record = nullptr;
    call<tarva_abi_get_builtin_program>(get(), &record);
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

  static constexpr bool is_source(ir kind) noexcept {
    return kind >= ir::source_1_0 && kind <= ir::source_2_1;
  }

  /// The source behind a line that tells the compiler its name.
  static std::string with_file_name(view<const std::byte> source, std::string_view name) {
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF"; // allowed at the very beginning only
    std::string_view lines(reinterpret_cast<const char*>(source.data()), source.size());
    if (lines.substr(0, byte_order_mark.size()) == byte_order_mark)
      lines.remove_prefix(byte_order_mark.size());
    std::string result = "#line 1 \"";
    for (const char letter : name)
      result += letter == '"' || letter == '\\' ? std::string{'\\', letter}
                                                : std::string(1, letter == '\n' ? ' ' : letter);
    return result.append("\"\n").append(lines);
  }
};

/// All devices, in the library's order, which is that of tarva-info: those of OpenCL 1.0 first. A device that is
/// offered under several versions, as QV_OPENCL_VERSIONS can ask for, is in it once for each.
inline std::vector<device> devices() {
  using array = std::unique_ptr<tarva_abi_device_array_s, detail::give_up<tarva_abi_free_device_array>>;
  tarva_abi_device_array_s* record = nullptr;
  std::vector<device> result;
  if (!call<tarva_abi_get_devices>(&record))
    return result;
  const array owned(record);
  result.reserve(record->count);
  for (std::uint64_t i = 0; i < record->count; ++i)
    result.emplace_back(record->devices[i]);
  return result;
}

/// Those of one type.
inline std::vector<device> devices(device_type type) {
  std::vector<device> result = devices();
  result.erase(
      std::remove_if(result.begin(), result.end(), [type](const device& one) { return one.type() != type; }),
      result.end());
  return result;
}

namespace detail {

/// What is known of a device before it is chosen. What it does not tell counts as little.
struct candidate {
  explicit candidate(const device& one) {
    attempt([&] { type = one.type(); });
    attempt([&] { name = one.name(); });
    attempt([&] { version = one.version(); });
    const auto ask = [opencl = one.properties()["OPENCL"]](const char* key, auto otherwise) {
      return attempt([&] { return opencl[key].get<decltype(otherwise)>(); }).value_or(otherwise);
    };
    is_available = ask("CL_DEVICE_AVAILABLE", false);
    speed = std::max(ask("CL_DEVICE_MAX_COMPUTE_UNITS", std::uint64_t{1}), std::uint64_t{1}) *
            std::max(ask("CL_DEVICE_MAX_CLOCK_FREQUENCY", std::uint64_t{1}), std::uint64_t{1});
  }
  auto rank() const { return std::tie(type, speed, version); }

  device_type type = device_type::other;
  bool is_available = false;
  std::uint64_t speed = 0;
  std::string version{}, name{};
};

inline bool contains(std::string_view text, std::string_view part) {
  const auto lower = [](char letter) { return letter >= 'A' && letter <= 'Z' ? letter + 'a' - 'A' : letter; };
  const auto same = [&](char a, char b) { return lower(a) == lower(b); };
  return std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end();
}

/// The place of the best of those that TARVA_DEVICE allows, or the number of devices if it allows none.
inline std::size_t choose(const std::vector<candidate>& all, std::string_view wanted) {
  const char* const end = wanted.data() + wanted.size();
  std::size_t number = 0, best = all.size();
  const auto [stopped, failed] = std::from_chars(wanted.data(), end, number);
  if (!wanted.empty() && failed == std::errc() && stopped == end && number < all.size())
    return number;
  const auto is_named = [&](const candidate& one) {
    const std::string_view type = name_of(one.type);
    return type.size() == wanted.size() && contains(type, wanted);
  };
  const bool by_type = std::any_of(all.begin(), all.end(), is_named);
  for (std::size_t i = 0; i < all.size(); ++i)
    if (all[i].is_available && (by_type ? is_named(all[i]) : contains(all[i].name, wanted)) &&
        (best == all.size() || all[best].rank() < all[i].rank()))
      best = i;
  return best;
}

inline std::string list(const std::vector<candidate>& all) {
  std::string text = "There are:";
  for (std::size_t i = 0; i < all.size(); ++i)
    text += (i == 0 ? " " : ", ") + std::to_string(i) + " (" + all[i].name + ", " + name_of(all[i].type) +
            ", OpenCL " + all[i].version + (all[i].is_available ? ")" : ", not available)");
  return text + '.';
}

inline bool require_device(const std::vector<device>& all) {
  if (all.empty())
    fail<runtime_failure>(
        TARVA_ABI_RUNTIME_FAILURE,
        "The machine has no OpenCL device. An implementation of OpenCL has to be installed: on Debian and "
        "Ubuntu the package pocl-opencl-icd is one for every processor, and intel-opencl-icd, "
        "mesa-opencl-icd and nvidia-opencl-icd are for graphics processors. QV_LOG=1 in the environment has "
        "the reason written why a device is left out.",
        std::vector<failure>());
  return !all.empty();
}

} // namespace detail

/// The first device of the list: of the oldest OpenCL version, not the fastest. Throws runtime_failure if the machine
/// has no device.
inline device first_device() {
  std::vector<device> all = devices();
  return detail::require_device(all) ? std::move(all.front()) : device();
}

/// The available device that promises most: graphics processors come first, then accelerators, then processors; then
/// decide compute units times clock, then the newest OpenCL version. The user of the program can choose by
/// TARVA_DEVICE in the environment, save in a process with more rights than its caller: the number of a device in
/// the list, a type (gpu, accelerator, cpu, custom) or a part of the name, each for the best such device. Throws
/// runtime_failure if there is none.
inline device best_device() {
  std::vector<device> all = devices();
  if (!detail::require_device(all))
    return device();
  const std::vector<detail::candidate> candidates(all.begin(), all.end());
  const char* const given = secure_getenv("TARVA_DEVICE");
  const std::string wanted = given == nullptr ? "" : given;
  const std::size_t best = detail::choose(candidates, wanted);
  if (best == all.size()) {
    detail::fail<runtime_failure>(
        TARVA_ABI_RUNTIME_FAILURE,
        (wanted.empty() ? "No device of the machine is available. "
                        : "TARVA_DEVICE is " + wanted + ", and no available device is that. ") +
            detail::list(candidates),
        std::vector<failure>());
    return device();
  }
  return std::move(all[best]);
}

} // namespace tarva

#endif
