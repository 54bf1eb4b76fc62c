// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// A failure as data: the error objects that callers are given, and how exceptions become such objects.
#pragma once

#include "abi/handle_kinds.h"
#include "properties/property_interface.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

class abi_bridge;

// One exception of a chain that leads from the outermost one inward. Made by the conversion below and not changed after
// that, so any thread may read it. The bridge owns those that have a handle, and each owns the next.
class error_object : public property_interface {
public:
  error_object(std::uint64_t exception_type, std::string message);

  // ROOT, and below it EXCEPTION_TYPE and EXCEPTION_MESSAGE. Any other path has an empty property.
  std::shared_ptr<property_base> get_property(property_path path) override;
  std::vector<std::string> get_child_names(const property_path& path) override;

  // Makes the next object of the chain and returns it. Throws std::logic_error if there is one already.
  std::shared_ptr<error_object> set_nested_error(std::uint64_t exception_type, std::string message);
  // Empty at the end of the chain.
  std::shared_ptr<error_object> get_nested_error() const { return nested_; }

private:
  std::shared_ptr<error_object> nested_;
  std::string message_;
  std::uint64_t exception_type_;
};

// A result code, and the failure as an object; none for success and for lack of memory.
using error_description = std::pair<tarva_abi_result, std::shared_ptr<error_object>>;

// The exception with all that is nested in it.
error_description describe_exception(const std::exception_ptr& exception);

// The same with a handle for the caller. If the description itself fails, the result is TARVA_ABI_UNKNOWN_FAILURE, without
// an object.
std::pair<tarva_abi_result, tarva_abi_error_s*>
convert_exception(abi_bridge& bridge, const std::exception_ptr& exception) noexcept;

} // namespace oryn::tarva::library
