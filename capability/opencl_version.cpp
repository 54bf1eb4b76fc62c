#include "capability/opencl_version.h"

#include <array>
#include <charconv>

namespace qv {
namespace {

constexpr std::array<opencl_version, capability_count> capability_versions{
    {{1, 0}, {1, 1}, {1, 2}, {2, 0}, {2, 1}, {2, 2}}};

std::string_view trim(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos)
    return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace

std::optional<opencl_version> take_version(std::string_view& text) {
  const char* const end = text.data() + text.size();
  opencl_version version;
  const auto major = std::from_chars(text.data(), end, version.major);
  if (major.ec != std::errc() || major.ptr == end || *major.ptr != '.')
    return std::nullopt;
  const auto minor = std::from_chars(major.ptr + 1, end, version.minor);
  if (minor.ec != std::errc())
    return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(minor.ptr - text.data()));
  return version;
}

std::optional<opencl_version> parse_reported_version(std::string_view text) {
  constexpr std::string_view prefix = "OpenCL ";
  if (text.substr(0, prefix.size()) != prefix)
    return std::nullopt;
  text.remove_prefix(prefix.size());
  return take_version(text);
}

std::uint32_t capability_of_version(opencl_version version) {
  for (std::uint32_t i = 0; i < capability_count; ++i)
    if (capability_versions[i] == version)
      return i + 1;
  return 0;
}

capability_set parse_capability_list(std::string_view list) {
  capability_set capabilities;
  while (!list.empty()) {
    const std::size_t comma = list.find(',');
    std::string_view entry = trim(list.substr(0, comma));
    list.remove_prefix(comma == std::string_view::npos ? list.size() : comma + 1);

    const std::optional<opencl_version> version = take_version(entry);
    if (!version || !entry.empty())
      continue;
    if (const std::uint32_t capability = capability_of_version(*version); capability != 0)
      capabilities.set(capability);
  }
  return capabilities;
}

} // namespace qv
