// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The command line.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace tarva_info {

enum class output_form { list, tree, raw, json, text, xml, value, help, version };

struct arguments {
  output_form form = output_form::list;
  std::optional<std::uint64_t> device{}; // none: all
  std::string path{};                    // for `value`
  std::string key_part{};                // what keys are to contain; empty for all keys
  std::string program{}; // a file whose kernels are to be shown; empty for the device's properties
};

class usage_failure : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

arguments parse_arguments(int count, char** words);

extern const char* const usage_text;

} // namespace tarva_info
