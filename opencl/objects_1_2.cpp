// The device, program and kernel of OpenCL 1.2.
#include "opencl/load_ir.inl.h"
#include "opencl/opencl_device.inl.h"
#include "opencl/opencl_kernel.inl.h"
#include "opencl/opencl_program.inl.h"

namespace oryn::tarva::library {

template class opencl_version_device<version::v1_2>;
template class opencl_version_program<version::v1_2>;
template class opencl_version_kernel<version::v1_2>;

} // namespace oryn::tarva::library
