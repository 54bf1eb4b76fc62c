// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The words that tarva-info is given: read as a command line, followed as the path of a property, and shown.
#include "fuzz/target.h"
#include "tools/tarva-info/arguments.h"
#include "tools/tarva-info/property_tree.h"
#include "tools/tarva-info/text.h"

#include <getopt.h>

namespace {

using fuzz::demand;

tarva_info::arguments parse(const std::string& words_with_zeros) {
  std::string words = std::string("tarva-info\0", 11) + words_with_zeros;
  std::vector<char*> each{words.data()};
  for (std::size_t end = words.find('\0'); end != std::string::npos; end = words.find('\0', end + 1))
    each.push_back(&words[end + 1]);
  const int count = static_cast<int>(each.size());
  each.push_back(nullptr);
  optind = 0; // begins anew
  return tarva_info::parse_arguments(count, each.data());
}

void check_text(const std::string& text) {
  const std::string shown = tarva_info::printable(text);
  demand(tarva_info::printable(shown) == shown, "what is printable stays as it is");
  demand(tarva_info::width_of(tarva_info::cut(shown, 20)) <= 20, "what is cut is not wider than told");
  demand(tarva_info::width_of(tarva_info::padded(shown, 20)) >= 20, "what is padded fills its width");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto& devices = *new auto([] {
    scripted::set_devices({{"one", {1}}, {"another", {6}}});
    return tarva::devices();
  }());
  static const auto& before = *new auto(scripted::live_objects());
  static const auto& whole = *new auto(tarva_info::read_tree(devices.back().properties()));
  fuzz::input from(data, size);
  const tarva::device& device = devices[from.below(devices.size())];
  const std::string words(reinterpret_cast<const char*>(from.data()), from.size());
  check_text(words);
  try {
    const tarva_info::arguments given = parse(words);
    if (!given.key_part.empty()) {
      tarva_info::property_node tree = whole;
      demand(tarva_info::keep_matching(tree, given.key_part) == !tree.children.empty(),
             "what matches is kept");
    }
    const tarva::property found = tarva_info::find_property(device.properties(), given.path);
    demand(tarva_info::plain_elements(tarva_info::read_property(found).value).size() == found.size(),
           "a value has all its elements");
  } catch (const std::exception& refusal) {
    demand(*refusal.what() != '\0', "a refusal has its words");
  }
  fuzz::demand_balance(before);
  return 0;
}
