// The library's classes for OpenCL are templates over the versions of the access layer. A member that a version lacks is
// not there in the class of that version, so that using it does not compile; what the versions do differently is asked of
// `version_traits` where it is done.
#pragma once

#include "access/opencl/version.h"

namespace oryn::tarva::library {

using skerv::opencl::version;
using skerv::opencl::version_traits;

} // namespace oryn::tarva::library
