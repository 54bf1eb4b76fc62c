// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What a device of each OpenCL version takes as a program, and how OpenCL is given it.
#pragma once

#include "access/opencl/context.h"
#include "access/opencl/device.h"
#include "access/opencl/program.h"
#include "objects/intermediate_representation.h"
#include "opencl/opencl_version.h"

#include <cstdint>
#include <vector>

namespace oryn::tarva::library {

// Whether the device takes IR of this type, one of `ir_type`. Throws std::logic_error for a header that does not go with it.
template <version V>
bool takes_ir(const skerv::opencl::device<V>& device, const ir_header* header, std::uint64_t type);

// An OpenCL program that is not built yet, with its specialization constants set. Only for what takes_ir() allows.
template <version V>
skerv::opencl::program<V> make_program(const skerv::opencl::context<V>& context,
                                       const skerv::opencl::device<V>& device, const ir_header& header,
                                       std::uint64_t type, const std::vector<std::uint8_t>& data);

} // namespace oryn::tarva::library
