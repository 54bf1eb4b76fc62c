#include "objects/library_program.h"

#include "base/unique_identifier.h"
#include "objects/library_device.h"

namespace oryn::tarva::library {

// A built-in program is held by its own device: a strong pointer back would keep both for ever.
library_program::library_program(bool is_builtin, const std::shared_ptr<library_device>& device,
                                 std::string name)
    : unique_identifier_(library::get_unique_identifier()), device_(is_builtin ? nullptr : device),
      builtin_device_(device), name_(std::move(name)), is_builtin_(is_builtin) {}

library_program::~library_program() = default;

} // namespace oryn::tarva::library
