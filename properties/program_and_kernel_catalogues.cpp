// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "properties/program_and_kernel_catalogues.h"

namespace oryn::tarva::library {
namespace {

using namespace version_ranges;

constexpr program_catalogue::row program_rows[] = {
    {"ROOT", "", with_or_without_opencl, program_source::none, "Root property.",
     "The root property of a program, simply provided as the main root element."},
    // Children of ROOT.
    {"USER_LABEL", "ROOT", with_or_without_opencl, program_source::user_label, "User Label",
     "User-supplied label for the program."},
    {"KERNEL_NAMES", "ROOT", with_or_without_opencl, program_source::kernel_names, "Kernel Names",
     "The names of kernels available from the program."},
    {"OPENCL", "ROOT", all, program_source::none, "OpenCL root property.",
     "The root property of all OpenCL properties."},
    {"OBJECT_ID", "ROOT", with_or_without_opencl, program_source::object_id, "Object Identifier",
     "A unique identifier for the TARVA object."},
    // Children of OPENCL.
    {"CL_PROGRAM_SOURCE", "OPENCL", all, program_source::source, "Source code",
     "The source code used to compile the program."},
    {"CL_PROGRAM_IL", "OPENCL", from_2_1, program_source::il, "Intermediate Language (IL) code",
     "The IL source code used to compile the program."},
    {"CL_PROGRAM_BINARY", "OPENCL", all, program_source::binary, "Device Binary",
     "Device-specific binary representation of the compiled program."},
};

constexpr kernel_catalogue::row kernel_rows[] = {
    {"ROOT", "", all, kernel_source::none, "Root property.",
     "The root property of a kernel, simply provided as the main root element."},
    // Children of ROOT.
    {"MAX_WORK_ITEM_DIMENSIONS", "ROOT", all, kernel_source::max_work_item_dimensions,
     "Maximum dimensions of the kernel",
     "Maximum dimensions that specify the global and local work-size for an NDRange kernel"},
    {"MAX_WORK_GROUP_SIZE", "ROOT", all, kernel_source::max_work_group_size, "Maximum work-group size",
     "The maximum work-group size that can be used to execute the kernel."},
    {"KERNEL_NAME", "ROOT", all, kernel_source::name, "Kernel Name", "The name of the kernel"},
    {"OPENCL", "ROOT", all, kernel_source::none, "OpenCL root property.",
     "The root property of all OpenCL properties."},
    {"OBJECT_ID", "ROOT", all, kernel_source::object_id, "Object Identifier",
     "A unique identifier for the TARVA object."},
    {"REQUIRED_WORK_GROUP_SIZE", "ROOT", all, kernel_source::required_work_group_size,
     "Required work-group size", "The work-group size that must be specified to launch this kernel"},
    {"MAX_GLOBAL_WORK_SIZE", "ROOT", all, kernel_source::max_global_work_size, "Maximum global work size",
     "The maximum global work size that can be specified for this kernel"},
    // Children of OPENCL.
    {"CL_KERNEL_NUM_ARGS", "OPENCL", all, kernel_source::num_args, "Number of arguments",
     "The number of arguments required by the kernel"},
    {"CL_KERNEL_ATTRIBUTES", "OPENCL", from_1_2, kernel_source::attributes, "Kernel Attributes",
     "Attributes specified by the __attribute__ qualifier"},
    {"CL_KERNEL_COMPILE_WORK_GROUP_SIZE", "OPENCL", all, kernel_source::compile_work_group_size,
     "Compiled work-group size",
     "The work-group size specified by __attribute__((reqd_work_group_size(X,Y,Z))) qualifier, or (0,0,0) if not specified."},
    {"CL_KERNEL_PREFERRED_WORK_GROUP_SIZE_MULTIPLE", "OPENCL", from_1_1,
     kernel_source::preferred_work_group_size_multiple, "Preferred work-group size multiple",
     "The preferred multiple of work-group size for launch.  This is a performance hint."},
};

} // namespace

const program_catalogue& get_program_catalogue() {
  static const program_catalogue catalogue(program_rows);
  return catalogue;
}

const kernel_catalogue& get_kernel_catalogue() {
  static const kernel_catalogue catalogue(kernel_rows);
  return catalogue;
}

} // namespace oryn::tarva::library
