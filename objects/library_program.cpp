// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "objects/library_program.h"

#include "base/unique_identifier.h"
#include "objects/library_device.h"

#include <stdexcept>

namespace oryn::tarva::library {

library_kernel::library_kernel(std::shared_ptr<library_program> program, std::string name)
    : unique_identifier_(library::get_unique_identifier()), program_(std::move(program)),
      name_(std::move(name)) {}

library_kernel::~library_kernel() = default;

// A built-in program is held by its own device: a strong pointer back would keep both for ever.
library_program::library_program(bool is_builtin, const std::shared_ptr<library_device>& device,
                                 std::string name)
    : unique_identifier_(library::get_unique_identifier()), device_(is_builtin ? nullptr : device),
      builtin_device_(device), name_(std::move(name)), is_builtin_(is_builtin) {}

library_program::~library_program() = default;

bool empty_program::read_value(const program_catalogue::row& wanted, property_value& value) {
  switch (wanted.source) {
  case program_source::user_label:
    value.set(get_name());
    break;
  case program_source::kernel_names:
    value.set(get_kernel_names());
    break;
  case program_source::object_id:
    value.set(get_unique_identifier());
    break;
  default:
    break;
  }
  return true;
}

std::shared_ptr<library_kernel> empty_program::get_kernel(const std::string& name) {
  throw std::logic_error("Cannot extract a kernel from an empty program.  Kernel name: " + name);
}

std::vector<std::string> empty_program::get_kernel_names() {
  return {};
}

} // namespace oryn::tarva::library
