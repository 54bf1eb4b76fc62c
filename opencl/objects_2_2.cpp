// The device, program and kernel of OpenCL 2.2.
#include "opencl/load_ir.inl.h"
#include "opencl/opencl_device.inl.h"
#include "opencl/opencl_kernel.inl.h"
#include "opencl/opencl_program.inl.h"

namespace oryn::tarva::library {

template class opencl_version_device<version::v2_2>;
template class opencl_version_program<version::v2_2>;
template class opencl_version_kernel<version::v2_2>;

} // namespace oryn::tarva::library
