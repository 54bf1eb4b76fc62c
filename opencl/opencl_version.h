#pragma once

#include "access/opencl/version.h"

namespace oryn::tarva::library {

// The library's classes for OpenCL are templates over the versions of the access layer.
using skerv::opencl::version;
using skerv::opencl::version_traits;

} // namespace oryn::tarva::library
