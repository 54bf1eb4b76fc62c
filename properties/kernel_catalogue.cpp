#include "properties/kernel_catalogue.h"

#include "properties/version_ranges.h"

namespace oryn::tarva::library {
namespace {

using namespace version_ranges;
using from = kernel_source;

constexpr kernel_catalogue::row rows[] = {
    {"ROOT", "", all, from::none, "Root property.",
     "The root property of a kernel, simply provided as the main root element."},
    // Children of ROOT.
    {"MAX_WORK_ITEM_DIMENSIONS", "ROOT", all, from::max_work_item_dimensions,
     "Maximum dimensions of the kernel",
     "Maximum dimensions that specify the global and local work-size for an NDRange kernel"},
    {"MAX_WORK_GROUP_SIZE", "ROOT", all, from::max_work_group_size, "Maximum work-group size",
     "The maximum work-group size that can be used to execute the kernel."},
    {"KERNEL_NAME", "ROOT", all, from::name, "Kernel Name", "The name of the kernel"},
    {"OPENCL", "ROOT", all, from::none, "OpenCL root property.",
     "The root property of all OpenCL properties."},
    {"OBJECT_ID", "ROOT", all, from::object_id, "Object Identifier",
     "A unique identifier for the TARVA object."},
    {"REQUIRED_WORK_GROUP_SIZE", "ROOT", all, from::required_work_group_size, "Required work-group size",
     "The work-group size that must be specified to launch this kernel"},
    {"MAX_GLOBAL_WORK_SIZE", "ROOT", all, from::max_global_work_size, "Maximum global work size",
     "The maximum global work size that can be specified for this kernel"},
    // Children of OPENCL.
    {"CL_KERNEL_NUM_ARGS", "OPENCL", all, from::num_args, "Number of arguments",
     "The number of arguments required by the kernel"},
    {"CL_KERNEL_ATTRIBUTES", "OPENCL", from_1_2, from::attributes, "Kernel Attributes",
     "Attributes specified by the __attribute__ qualifier"},
    {"CL_KERNEL_COMPILE_WORK_GROUP_SIZE", "OPENCL", all, from::compile_work_group_size,
     "Compiled work-group size",
     "The work-group size specified by __attribute__((reqd_work_group_size(X,Y,Z))) qualifier, or (0,0,0) if not specified."},
    {"CL_KERNEL_PREFERRED_WORK_GROUP_SIZE_MULTIPLE", "OPENCL", from_1_1,
     from::preferred_work_group_size_multiple, "Preferred work-group size multiple",
     "The preferred multiple of work-group size for launch.  This is a performance hint."},
};

} // namespace

std::optional<data_type> value_type(kernel_source source) {
  switch (source) {
  case from::none:
    return std::nullopt;
  case from::name:
  case from::attributes:
    return data_type::string_;
  default:
    return data_type::uint64_;
  }
}

const kernel_catalogue& get_kernel_catalogue() {
  static const kernel_catalogue catalogue(rows);
  return catalogue;
}

} // namespace oryn::tarva::library
