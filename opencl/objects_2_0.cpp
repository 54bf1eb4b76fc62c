// The device, program and kernel of OpenCL 2.0.
#include "opencl/load_ir.inl.h"
#include "opencl/opencl_device.inl.h"
#include "opencl/opencl_kernel.inl.h"
#include "opencl/opencl_program.inl.h"

namespace oryn::tarva::library {

template class opencl_version_device<version::v2_0>;
template class opencl_version_program<version::v2_0>;
template class opencl_version_kernel<version::v2_0>;

} // namespace oryn::tarva::library
