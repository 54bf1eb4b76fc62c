// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// tarva-info: shows what the library has to say about the devices of the machine.
#include "tools/tarva-info/arguments.h"
#include "tools/tarva-info/output.h"

#include <iostream>
#include <sstream>

namespace tarva_info {
namespace {

constexpr int status_failure = 1;
constexpr int status_usage = 2;

std::vector<numbered_device> choose(const std::vector<tarva::device>& devices,
                                    const std::optional<std::uint64_t>& wanted) {
  std::vector<numbered_device> chosen;
  for (std::size_t i = 0; i < devices.size(); ++i)
    if (!wanted || *wanted == i)
      chosen.push_back({i, devices[i]});
  return chosen;
}

// The values of one path, an element on a line, of each device.
void write_values(const std::vector<numbered_device>& devices, const std::string& path, const style& look) {
  for (const numbered_device& device : devices) {
    const tarva::property found = find_property(device.handle.properties(), path);
    if (!found.has_value())
      throw std::runtime_error(path + " has no value");
    for (const std::string& element : plain_elements(read_property(found).value))
      std::cout << (look.is_terminal ? printable(element) : element) << '\n';
  }
}

void write_trees(const std::vector<numbered_device>& devices, const arguments& given) {
  const style look = style_of_standard_output();
  std::vector<numbered_tree> trees;
  bool has_match = false;
  for (const numbered_device& device : devices) {
    trees.push_back({device.number, given.program.empty() ? read_tree(device.handle.properties())
                                                          : read_kernels(device.handle, given.program)});
    has_match = keep_matching(trees.back().root, given.key_part) || has_match;
  }
  if (given.form == output_form::json)
    write_json(std::cout, trees);
  if (!has_match)
    throw std::runtime_error(given.key_part.empty() ? "there are no kernels in " + given.program
                                                    : "no key contains " + given.key_part);
  if (given.form == output_form::json)
    return;
  for (const numbered_tree& tree : trees) {
    if (given.form == output_form::raw) {
      write_raw(std::cout, tree.number, tree.root);
    } else {
      std::cout << (&tree == &trees.front() ? "" : "\n");
      write_tree(std::cout, tree.number, tree.root, look);
    }
  }
}

bool write(const std::vector<numbered_device>& devices, const arguments& given) {
  switch (given.form) {
  case output_form::list:
    write_list(std::cout, devices, style_of_standard_output());
    return true;
  case output_form::value:
    write_values(devices, given.path, style_of_standard_output());
    return true;
  case output_form::text:
  case output_form::xml:
    return write_library_trees(std::cout, devices,
                               given.form == output_form::text ? TARVA_ABI_TREE_TEXT : TARVA_ABI_TREE_XML,
                               !given.device, style_of_standard_output());
  default:
    write_trees(devices, given);
    return true;
  }
}

bool run(const arguments& given) {
  if (given.form == output_form::help) {
    std::cout << usage_text;
    return true;
  }
  if (given.form == output_form::version) {
    std::cout << "tarva-info " TARVA_INFO_VERSION " (interface " << tarva_abi_get_abi_version() << ")\n";
    return true;
  }
  const std::vector<tarva::device> devices = tarva::devices();
  const std::vector<numbered_device> chosen = choose(devices, given.device);
  if (chosen.empty() && given.device && !devices.empty()) {
    throw std::runtime_error("no device " + std::to_string(*given.device) + ", the last is " +
                             std::to_string(devices.size() - 1));
  }
  if (chosen.empty()) {
    if (given.form == output_form::json)
      write_json(std::cout, {});
    (void)tarva::first_device(); // which says what to install
  }
  return write(chosen, given);
}

// A full disk shows only when all is written.
int finish(int status) {
  if (!std::cout.flush()) {
    std::cerr << "tarva-info: cannot write the output\n";
    return status_failure;
  }
  return status;
}

} // namespace
} // namespace tarva_info

int main(int count, char** words) {
  using namespace tarva_info;
  try {
    return finish(run(parse_arguments(count, words)) ? 0 : status_failure);
  } catch (const usage_failure& failure) {
    std::cerr << "tarva-info: " << printable(failure.what()) << "\nTry 'tarva-info --help'.\n";
    return status_usage;
  } catch (const std::exception& failure) {
    finish(0);
    std::istringstream lines(failure.what()); // more than one in what a compiler says
    std::string prefix = "tarva-info: ";
    for (std::string line; std::getline(lines, line); prefix.clear())
      std::cerr << prefix << printable(line) << '\n';
    return status_failure;
  }
}
