// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What is wrong with a launch.
#pragma once

#include "ir/logical_operation.h"
#include "ir/nd_range.h"
#include "objects/library_program.h"

namespace oryn::tarva::library {

// The refusals of a launch that would fail, or worse, on the device: by its range and its arguments, and by where the content of
// its memory objects is. It runs when the launch is lowered, before anything changes, and throws std::logic_error. All that it
// needs of the kernel was read when it was made.
//
// Yields the range as it is told to OpenCL: one that leaves the local size to the device, where the compiler has fixed a size,
// with that one.
nd_range check_launch(const logical_ir::kernel& launch, const std::shared_ptr<library_device>& device);

} // namespace oryn::tarva::library
