#include "objects/library_kernel.h"

#include "base/unique_identifier.h"
#include "objects/library_program.h"

namespace oryn::tarva::library {

library_kernel::library_kernel(std::shared_ptr<library_program> program, std::string name)
    : unique_identifier_(library::get_unique_identifier()), program_(std::move(program)),
      name_(std::move(name)) {}

library_kernel::~library_kernel() = default;

} // namespace oryn::tarva::library
