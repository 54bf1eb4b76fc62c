// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Every status of the OpenCL standard with the base of its exception class and its text.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace oryn::skerv::common {

// Whether the call was wrong, or could just not be carried out.
enum class error_base { logic, runtime };

// The message is for users, and reaches them as it stands. Two rows have the same one.
struct status_row {
  std::int32_t status;
  error_base base;
  const char* message;
};

// clang-format off
inline constexpr std::array<status_row, 62> status_table{{
    {-1, error_base::logic, "No matching device was found."},
    {-2, error_base::runtime, "Device is not available."},
    {-3, error_base::logic, "A compiler is not available."},
    {-4, error_base::runtime, "Failed to allocate memory."},
    {-5, error_base::runtime, "Failed to allocate resources on the device."},
    {-6, error_base::runtime, "Failed to allocate memory on the host."},
    {-7, error_base::logic, "Event could not be profiled, or command-queue does not support profiling."},
    {-8, error_base::logic, "Memory copy source and destination regions overlap."},
    {-9, error_base::logic, "Image formats do not match."},
    {-10, error_base::logic, "Image format is not supported by the device."},
    {-11, error_base::runtime, "Failed to build the program."},
    {-12, error_base::runtime, "Failed to map memory into host address space."},
    {-13, error_base::runtime, "Sub-buffer is misaligned."},
    {-14, error_base::runtime, "An operation that blocked depended upon a failed event."},
    {-15, error_base::logic, "Failed to compile the program."},
    {-16, error_base::logic, "Linker is not actually available."},
    {-17, error_base::runtime, "Failed to link compiled binaries, or libraries."},
    {-18, error_base::runtime, "Could not further partition the device."},
    {-19, error_base::logic, "Kernel argument information is not available for the kernel."},
    {-30, error_base::logic, "One of the values is not valid."},
    {-31, error_base::logic, "Invalid device type value provided."},
    {-32, error_base::logic, "Platform is invalid.  You should never get this error.  Please file a bug report."},
    {-33, error_base::logic, "Device argument is not valid."},
    {-34, error_base::logic, "Context provided was not the right one or invalid."},
    {-35, error_base::logic, "Queue properties are not supported by the device."},
    {-36, error_base::logic, "Command-queue provided is not a valid command-queue."},
    {-37, error_base::logic, "Host pointer is null, but a non-null pointer was expected."},
    {-38, error_base::logic, "Memory object argument (buffer?) is not valid."},
    {-39, error_base::logic, "Image format is invalid or missing."},
    {-40, error_base::logic, "Image dimensions specified exceed maximum supported by device."},
    {-41, error_base::logic, "Sampler object is not valid."},
    {-42, error_base::runtime, "Invalid program binary encountered, or incorrect binary for device."},
    {-43, error_base::logic, "Build options provided are not valid."},
    {-44, error_base::logic, "Program argument is not valid."},
    {-45, error_base::logic, "No successfully built executable for the program."},
    {-46, error_base::logic, "Kernel name not found in the program."},
    {-47, error_base::logic, "Kernel definition is not valid for all devices provided."},
    {-48, error_base::logic, "Provided argument is not a valid kernel."},
    {-49, error_base::logic, "Argument index is not valid."},
    {-50, error_base::logic, "Provided argument value is not valid."},
    {-51, error_base::logic, "Argument size provided does not match size for provided data type."},
    {-52, error_base::logic, "Kernel argument values are not specified, or memory region doesn't match."},
    {-53, error_base::logic, "Work dimension value is out-of-range."},
    {-54, error_base::logic, "Work-group size does not match expected size, or is invalid."},
    {-55, error_base::logic, "Work-item size exceeds device maximum in some dimension."},
    {-56, error_base::logic, "Global offset overflows size_t type."},
    {-57, error_base::logic, "Invalid event wait list provided."},
    {-58, error_base::logic, "Invalid event provided."},
    {-59, error_base::logic, "Operation is not supported, or violates permissions."},
    {-60, error_base::logic, "GL object does not exist, or is an incorrect type, or is not properly associated."},
    {-61, error_base::logic, "Buffer size is zero, or too large."},
    {-62, error_base::logic, "MIP level is out-of-range or not supported."},
    {-63, error_base::logic, "Global work size dimensions are out-of-range or not provided."},
    {-64, error_base::logic, "Context property is not supported."},
    {-65, error_base::logic, "Invalid or missing image descriptor."},
    {-66, error_base::logic, "Compiler options provided are not valid."},
    {-67, error_base::logic, "Linker options provided are not valid."},
    {-68, error_base::logic, "Invalid partitioning of devices."},
    {-69, error_base::logic, "Pipe packet size is out-of-range."},
    {-70, error_base::logic, "Invalid device queue argument provided."},
    {-71, error_base::logic, "Invalid device queue argument provided."},
    {-72, error_base::logic, "Size of memory object exceeds the maximum size restriction that was set."},
}};
// clang-format on

// -20 to -29 name nothing.
inline constexpr std::int32_t first_gap_status = -20;
inline constexpr std::int32_t last_gap_status = -29;

// The place of `status` in the table, or the table's size if it has none. It is computed, since there is but one gap.
constexpr std::size_t status_index(std::int32_t status) {
  constexpr std::int32_t lowest = -72;
  constexpr std::int32_t gap_length = first_gap_status - last_gap_status + 1;
  if (status >= 0 || status < lowest || (status <= first_gap_status && status >= last_gap_status))
    return status_table.size();
  const std::int32_t position = -1 - status;
  return static_cast<std::size_t>(status > first_gap_status ? position : position - gap_length);
}

constexpr bool status_table_is_in_order() {
  for (std::size_t i = 0; i < status_table.size(); ++i)
    if (status_index(status_table[i].status) != i)
      return false;
  return true;
}
static_assert(status_table_is_in_order(), "status_index() computes places instead of searching");

} // namespace oryn::skerv::common
