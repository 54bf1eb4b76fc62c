#include "objects/empty_program.h"

#include "properties/make_property.h"
#include "properties/program_catalogue.h"

#include <stdexcept>
#include <utility>

namespace oryn::tarva::library {
namespace {

// There is nothing of OpenCL below an empty program.
constexpr version_number no_version = 0;

} // namespace

std::shared_ptr<property_base> empty_program::get_property(const property_path& path) {
  const program_catalogue& catalogue = get_program_catalogue();
  const auto* row = catalogue.find(no_version, path);
  if (row == nullptr) {
    return std::make_shared<property_base>();
  }
  const auto make = [&](auto... value) {
    return make_property(catalogue.get_dictionary(), this, path, std::move(value)...);
  };
  switch (row->source) {
  case program_source::user_label:
    return make(get_name());
  case program_source::kernel_names:
    return make(get_kernel_names());
  case program_source::object_id:
    return make(get_unique_identifier());
  default:
    return make();
  }
}

std::vector<std::string> empty_program::get_child_names(const property_path& path) {
  return get_program_catalogue().get_child_names(no_version, path);
}

std::shared_ptr<library_kernel> empty_program::get_kernel(const std::string& name) {
  throw std::logic_error("Cannot extract a kernel from an empty program.  Kernel name: " + name);
}

std::vector<std::string> empty_program::get_kernel_names() {
  return {};
}

} // namespace oryn::tarva::library
