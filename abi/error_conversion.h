#pragma once

#include "abi/handle_records.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <utility>

namespace oryn::tarva::library {

class abi_bridge;
class error_object;

// A result code, and the failure as an object; none for success and for lack of memory.
using error_description = std::pair<tarva_abi_result, std::shared_ptr<error_object>>;

// The exception with all that is nested in it.
error_description describe_exception(const std::exception_ptr& exception);

// The same with a handle for the caller. Lets nothing escape: if the description itself fails, the failure is
// unknown.
std::pair<tarva_abi_result, tarva_abi_error_s*>
convert_exception(abi_bridge& bridge, const std::exception_ptr& exception) noexcept;

} // namespace oryn::tarva::library
