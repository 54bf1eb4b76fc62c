// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The library's classes for OpenCL are templates over the versions of the access layer. A member that a version lacks is
// not there in the class of that version, so that using it does not compile; what the versions do differently is asked of
// `version_traits` where it is done.
#pragma once

#include "access/opencl/version.h"

namespace oryn::tarva::library {

using skerv::opencl::version;
using skerv::opencl::version_traits;

template <version V>
class opencl_version_device;
template <version V>
class opencl_version_program;
template <version V>
class opencl_version_kernel;

// Their names in each version.
using opencl_1_0_device = opencl_version_device<version::v1_0>;
using opencl_1_0_program = opencl_version_program<version::v1_0>;
using opencl_1_0_kernel = opencl_version_kernel<version::v1_0>;
using opencl_1_1_device = opencl_version_device<version::v1_1>;
using opencl_1_1_program = opencl_version_program<version::v1_1>;
using opencl_1_1_kernel = opencl_version_kernel<version::v1_1>;
using opencl_1_2_device = opencl_version_device<version::v1_2>;
using opencl_1_2_program = opencl_version_program<version::v1_2>;
using opencl_1_2_kernel = opencl_version_kernel<version::v1_2>;
using opencl_2_0_device = opencl_version_device<version::v2_0>;
using opencl_2_0_program = opencl_version_program<version::v2_0>;
using opencl_2_0_kernel = opencl_version_kernel<version::v2_0>;
using opencl_2_1_device = opencl_version_device<version::v2_1>;
using opencl_2_1_program = opencl_version_program<version::v2_1>;
using opencl_2_1_kernel = opencl_version_kernel<version::v2_1>;
using opencl_2_2_device = opencl_version_device<version::v2_2>;
using opencl_2_2_program = opencl_version_program<version::v2_2>;
using opencl_2_2_kernel = opencl_version_kernel<version::v2_2>;

} // namespace oryn::tarva::library
