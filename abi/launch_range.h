#pragma once

#include "include/tarva_abi.h"
#include "ir/nd_range.h"

namespace oryn::tarva::library {

class library_kernel;

// The extent of a launch, worked out for the kernel. No more of the record is read than its type needs.
nd_range make_range(library_kernel& kernel, const tarva_abi_launch_range_s& launch_range);

void test_launch_type(tarva_abi_launch_type type);

} // namespace oryn::tarva::library
