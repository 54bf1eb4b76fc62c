// Calls of OpenCL that always come back with a status.
#pragma once

#include "capability/opencl_functions.h"

#include <new>
#include <utility>

namespace qv {

// The status for what an implementation throws through the C interface. To be called in a handler.
inline cl_int status_of_exception() noexcept {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return CL_OUT_OF_HOST_MEMORY;
  } catch (...) {
    return CL_OUT_OF_RESOURCES;
  }
}

// Calls an entry point, or answers as OpenCL does for what a device does not support.
template <typename... Parameters, typename... Arguments>
cl_int call_or_refuse(cl_int (*function)(Parameters...), Arguments&&... arguments) noexcept {
  if (function == nullptr)
    return CL_INVALID_OPERATION;
  try {
    return function(std::forward<Arguments>(arguments)...);
  } catch (...) {
    return status_of_exception();
  }
}

// The same for entry points that give out an object, and the status through their last parameter. Null if that is no
// success, whatever was given out.
template <typename Object, typename... Parameters, typename... Arguments>
Object make_or_refuse(cl_int& status, Object (*function)(Parameters...), Arguments&&... arguments) noexcept {
  status = CL_INVALID_OPERATION;
  if (function == nullptr)
    return nullptr;
  try {
    Object const made = function(std::forward<Arguments>(arguments)..., &status);
    if (made == nullptr && status == CL_SUCCESS)
      status = CL_OUT_OF_RESOURCES;
    return status == CL_SUCCESS ? made : nullptr;
  } catch (...) {
    status = status_of_exception();
    return nullptr;
  }
}

template <typename Record, typename Object, typename... Parameters, typename... Arguments>
void create_or_refuse(Record& record, Object (*function)(Parameters...), Arguments&&... arguments) noexcept {
  cl_int status = CL_SUCCESS;
  record.result = make_or_refuse(status, function, std::forward<Arguments>(arguments)...);
  record.status = status;
}

} // namespace qv
