#pragma once

#include "objects/library_program.h"

#include <memory>
#include <string>
#include <vector>

namespace oryn::tarva::library {

// Stands for no program at all: that of a failed build, or of a device without built-in kernels.
class empty_program : public library_program {
public:
  using library_program::library_program;

  std::shared_ptr<property_base> get_property(const property_path& path) override;
  std::vector<std::string> get_child_names(const property_path& path) override;
  std::shared_ptr<library_kernel> get_kernel(const std::string& name) override;
  std::vector<std::string> get_kernel_names() override;
};

} // namespace oryn::tarva::library
