// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The property trees of programs and of kernels.
#pragma once

#include "properties/catalogue.h"

#include <cstdint>

namespace oryn::tarva::library {

// Where the value of a program's property comes from. The program reads it (opencl/opencl_program.cpp) each time it
// is asked. An empty program (objects/library_program.h) has the properties that need no OpenCL.
enum class program_source : std::uint8_t {
  none,
  user_label,
  kernel_names,
  object_id,
  source,
  il,
  binary,
};

using program_catalogue = catalogue<program_source>;

// Made by the first call, which any thread may be, and never changed.
const program_catalogue& get_program_catalogue();

// Where the value of a kernel's property comes from. The kernel reads it (opencl/opencl_kernel.cpp) each time it is
// asked, from OpenCL or from what it knows itself.
enum class kernel_source : std::uint8_t {
  none,
  max_work_item_dimensions,
  max_work_group_size,
  name,
  object_id,
  required_work_group_size,
  max_global_work_size,
  num_args,
  attributes,
  compile_work_group_size,
  preferred_work_group_size_multiple,
};

using kernel_catalogue = catalogue<kernel_source>;

// Made by the first call, which any thread may be, and never changed.
const kernel_catalogue& get_kernel_catalogue();

} // namespace oryn::tarva::library
