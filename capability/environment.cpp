// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "capability/environment.h"

#include "base/printable_text.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace qv {
namespace {

// As the C library's own sensitive variables: not for a process that has more rights than its caller.
bool is_log_wanted() {
  const char* const value = secure_getenv("QV_LOG");
  return value != nullptr && *value != '\0' && std::string_view(value) != "0";
}

// What devices say of themselves may hold anything, at any length; a terminal would obey some of it.
void append_printable(std::string& line, std::string_view text) {
  constexpr std::size_t most_bytes = 300;
  oryn::write_escaped(text.substr(0, most_bytes), [&line](std::string_view part) { line += part; });
}

// In one write, so that lines of several threads do not mix.
void write_line(std::initializer_list<std::string_view> parts) noexcept {
  try {
    std::string line = "libqv: ";
    for (const std::string_view part : parts)
      append_printable(line, part);
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
  } catch (...) {
    // A line for which there is no memory is no reason to leave out more than the line.
  }
}

std::string_view trim(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos)
    return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// 0 for what is not a version and nothing but a version.
std::uint32_t capability_of_entry(std::string_view entry) {
  const std::optional<opencl_version> version = take_version(entry);
  return version && entry.empty() ? capability_of_version(*version) : 0;
}

} // namespace

void log_line(std::initializer_list<std::string_view> parts) noexcept {
  if (is_log_wanted())
    write_line(parts);
}

capability_set parse_capability_list(std::string_view list, std::string* unknown) {
  capability_set capabilities;
  while (!list.empty()) {
    const std::size_t comma = list.find(',');
    const std::string_view entry = trim(list.substr(0, comma));
    list.remove_prefix(comma == std::string_view::npos ? list.size() : comma + 1);
    if (const std::uint32_t capability = capability_of_entry(entry); capability != 0)
      capabilities.set(capability);
    else if (unknown != nullptr && !entry.empty())
      unknown->append(unknown->empty() ? "\"" : ", \"").append(entry).append("\"");
  }
  return capabilities;
}

capability_set select_capabilities(const char* versions) {
  if (versions == nullptr)
    return {};
  std::string unknown;
  const capability_set capabilities = parse_capability_list(versions, &unknown);
  // The machine is looked at again if there was too little memory the first time.
  static std::atomic<bool> was_told = false;
  if (!unknown.empty() && !was_told.exchange(true))
    write_line(
        {"QV_OPENCL_VERSIONS takes versions from 1.0 to 2.2 with commas between them, such as 1.2,2.0; "
         "this is not understood: ",
         unknown, capabilities.none() ? "; devices are offered as what they report" : ""});
  return capabilities;
}

} // namespace qv
