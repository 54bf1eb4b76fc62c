// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What libqv looks into before an implementation sees it: device binaries, SPIR-V modules and build options; and the lists of
// versions that it reads. Each verdict is held against those on inputs that differ in a known way.
#include "capability/environment.h"
#include "capability/program_checks.h"
#include "fuzz/target.h"

#include <cstring>

namespace {

using fuzz::demand;

// Of exactly that size, so that a step beyond it is seen.
using bytes = std::vector<unsigned char>;

void check_binary(const qv::quirks& known, bytes binary) {
  const auto is_harmless = [&] { return qv::is_harmless_binary(known, binary.data(), binary.size()); };
  constexpr char magic[] = "poclbin";
  const bool is_judged =
      known.binaries == qv::binary_format::pocl
          ? binary.size() >= sizeof magic && std::memcmp(binary.data(), magic, sizeof magic) == 0
          : known.binaries != qv::binary_format::checked_by_itself;
  if (!is_harmless() || !is_judged)
    return;
  binary.push_back(0);
  demand(!is_harmless(), "a whole binary ends where it ends");
  binary.pop_back();
  binary.pop_back();
  binary.shrink_to_fit();
  demand(binary.size() <= sizeof magic || !is_harmless(), "a whole binary lacks nothing");
}

void check_module(bytes module) {
  // Of a context that tells no devices, so any version will do.
  const auto is_harmless = [&] { return qv::is_harmless_module({}, nullptr, module.data(), module.size()); };
  const bool before = is_harmless();
  if (module.size() % 4 != 0)
    return;
  for (std::size_t i = 0; i < module.size(); i += 4)
    std::reverse(&module[i], &module[i] + 4);
  demand(before == is_harmless(), "both byte orders are one module");
}

void check_options(const qv::quirks& known, const std::string& options) {
  demand(qv::are_harmless_options(known, options) == qv::are_harmless_options(known, "  " + options + " "),
         "blanks around options change nothing");
  const bool is_text = qv::is_utf8(options);
  demand(is_text == qv::is_utf8(options + "\xF0\x9F\x99\x82"), "a character more changes nothing");
  demand(!is_text || !qv::is_utf8(options + "\xE2\x82"), "half a character is none");
}

void check_versions(std::string_view list) {
  std::string unknown;
  const qv::capability_set found = qv::parse_capability_list(list, &unknown);
  demand(!found.test(0), "there is no capability 0");
  demand(found == qv::parse_capability_list(std::string(list) + ",1.7,", nullptr),
         "a wrong entry takes nothing");
  static_cast<void>(qv::parse_reported_version(list));
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::input from(data, size);
  const std::size_t what = from.below(4);
  qv::quirks known = qv::quirks_of_platform(from.one_of(fuzz::platforms));
  const bytes rest(from.data(), from.data() + from.size());
  const std::string text(rest.begin(), rest.end());
  if (what == 0)
    check_binary(known, rest);
  else if (what == 1)
    check_module(rest);
  else if (what == 2)
    check_options(known, text);
  else
    check_versions(text);
  return 0;
}
