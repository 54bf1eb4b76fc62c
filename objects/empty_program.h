#pragma once

#include "objects/library_program.h"
#include "properties/catalogue_owner.h"
#include "properties/program_catalogue.h"

#include <memory>
#include <string>
#include <vector>

namespace oryn::tarva::library {

// Stands for no program at all: that of a failed build, or of a device without built-in kernels.
class empty_program : public catalogue_owner<library_program, get_program_catalogue> {
public:
  using catalogue_owner::catalogue_owner;

  std::shared_ptr<library_kernel> get_kernel(const std::string& name) override;
  std::vector<std::string> get_kernel_names() override;

private:
  // There is nothing of OpenCL below an empty program.
  version_number get_catalogue_version() const override { return 0; }
  bool read_value(const program_catalogue::row& wanted, property_value& value) override;
};

} // namespace oryn::tarva::library
