// Known faults of OpenCL implementations that end the process or spoil its memory, and so must be kept from
// happening.
#pragma once

#include <string_view>

namespace qv {

struct implementation_faults {
  // It keeps thread-local state that is gone once the thread's own destructors have run, and is used
  // nevertheless.
  bool uses_ended_thread_locals = false;
  // A null value for an argument that is no memory is read.
  bool reads_null_value_arguments = false;
  // The text of CL_KERNEL_ATTRIBUTES is memory that was freed.
  bool kernel_attributes_dangle = false;
  // A local argument larger than the local memory ends the process at the launch.
  bool asserts_on_large_local_arguments = false;
  // A binary cut short ends the process.
  bool asserts_on_truncated_binaries = false;
  // Two threads that build at once spoil its memory.
  bool builds_are_not_thread_safe = false;
  // A binary that is not its own ends the process.
  bool aborts_on_foreign_binaries = false;
};

// By the name of the platform; an unknown platform has no known faults.
implementation_faults faults_of_platform(std::string_view platform_name);

} // namespace qv
