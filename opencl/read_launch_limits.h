// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Finds out what a launch of a kernel must respect, and what its parameters take.
#pragma once

#include "access/opencl/device.h"
#include "access/opencl/kernel.h"
#include "objects/launch_limits.h"
#include "opencl/opencl_version.h"

#include <memory>

namespace oryn::tarva::library {

// What the device tells of itself and of the kernel, without the parameters. What it does not tell is left out; a failure
// of the moment, such as want of memory, is thrown.
template <version V>
launch_limits read_launch_limits(const skerv::opencl::kernel<V>& kernel,
                                 const skerv::opencl::device<V>& device);

// What the parameters of the kernel take, found out by trying arguments on it; nobody else may use the kernel meanwhile. Null
// if the kernel does not tell a number of parameters that can be.
template <version V>
std::shared_ptr<const kernel_signature> learn_signature(skerv::opencl::kernel<V>& kernel,
                                                        const launch_limits& limits);

} // namespace oryn::tarva::library
