#include "properties/program_catalogue.h"

#include "properties/version_ranges.h"

namespace oryn::tarva::library {
namespace {

using namespace version_ranges;
using from = program_source;

constexpr program_catalogue::row rows[] = {
    {"ROOT", "", with_or_without_opencl, from::none, "Root property.",
     "The root property of a program, simply provided as the main root element."},
    // Children of ROOT.
    {"USER_LABEL", "ROOT", with_or_without_opencl, from::user_label, "User Label",
     "User-supplied label for the program."},
    {"KERNEL_NAMES", "ROOT", with_or_without_opencl, from::kernel_names, "Kernel Names",
     "The names of kernels available from the program."},
    {"OPENCL", "ROOT", all, from::none, "OpenCL root property.",
     "The root property of all OpenCL properties."},
    {"OBJECT_ID", "ROOT", with_or_without_opencl, from::object_id, "Object Identifier",
     "A unique identifier for the TARVA object."},
    // Children of OPENCL.
    {"CL_PROGRAM_SOURCE", "OPENCL", all, from::source, "Source code",
     "The source code used to compile the program."},
    {"CL_PROGRAM_IL", "OPENCL", from_2_1, from::il, "Intermediate Language (IL) code",
     "The IL source code used to compile the program."},
    {"CL_PROGRAM_BINARY", "OPENCL", all, from::binary, "Device Binary",
     "Device-specific binary representation of the compiled program."},
};

} // namespace

std::optional<data_type> value_type(program_source source) {
  switch (source) {
  case from::none:
    return std::nullopt;
  case from::object_id:
    return data_type::uint64_;
  case from::il:
  case from::binary:
    return data_type::uint8_;
  default:
    return data_type::string_;
  }
}

const program_catalogue& get_program_catalogue() {
  static const program_catalogue catalogue(rows);
  return catalogue;
}

} // namespace oryn::tarva::library
