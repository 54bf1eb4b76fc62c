// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// clCreateProgramWithILKHR: the one way to OpenCL that is no command. A caller asks for its address, and calls that by itself
// and without a call handle; so what is given out is a function of this library, which has to find by the context alone what
// it belongs to. It checks what it is given, as the command for the core function does, and gives out a program of this
// library.
#include "capability/executor.h"
#include "capability/kernels.h"
#include "capability/opencl_queries.h"
#include "capability/program_checks.h"

#include <array>
#include <cstring>

namespace qv {
namespace {

using create_function = cl_program(CL_API_CALL*)(cl_context, const void*, std::size_t, cl_int*);

// What the one address that is given out finds again.
struct platform_function {
  cl_platform_id platform = nullptr;
  create_function create = nullptr;
  opencl_functions cl;
};

// Plain storage, and never emptied: an address that was given out cannot be taken back. More platforms get no address.
constexpr std::size_t most_platforms = 32;
oryn::mutex known_lock;
std::array<platform_function, most_platforms> known TARVA_GUARDED_BY(known_lock){};
std::size_t known_count TARVA_GUARDED_BY(known_lock) = 0;

// Null for a context that no device tells the platform of.
cl_platform_id platform_of(const opencl_functions& cl, cl_context context) {
  const std::vector<cl_device_id> devices = context_devices(cl, context);
  cl_platform_id platform = nullptr;
  if (!devices.empty())
    static_cast<void>(ask_value(platform, CL_DEVICE_PLATFORM, cl.get_device_info, devices.front()));
  return platform;
}

// With one platform the context is not even looked at. All entry points of OpenCL are the loader's, so those known last can
// ask about any context.
platform_function function_for(cl_context context) {
  opencl_functions cl;
  {
    const oryn::lock_guard guard(known_lock);
    if (known_count == 1)
      return known[0];
    cl = known[known_count - 1].cl;
  }
  const cl_platform_id platform = platform_of(cl, context);
  const oryn::lock_guard guard(known_lock);
  for (std::size_t i = 0; i < known_count; ++i)
    if (known[i].platform == platform)
      return known[i];
  return {};
}

// Null and a status: CL_INVALID_VALUE for a module that may end the process, CL_INVALID_OPERATION for a context of no platform
// that was asked about, else OpenCL's.
program_object* create_program(cl_context context, const void* il, std::size_t length, cl_int& status) {
  status = CL_INVALID_VALUE;
  const platform_function function = function_for(context);
  if (!is_harmless_module(function.cl, context, il, length))
    return nullptr;
  cl_program const program = make_or_refuse(status, function.create, context, il, length);
  if (program == nullptr)
    return nullptr;
  auto* const made = new (std::nothrow) program_object(program, false);
  if (made == nullptr) {
    static_cast<void>(call_or_refuse(function.cl.release_program, program));
    status = CL_OUT_OF_HOST_MEMORY;
  }
  return made;
}

cl_program CL_API_CALL create_checked(cl_context context, const void* il, std::size_t length,
                                      cl_int* status) noexcept {
  cl_int result = CL_SUCCESS;
  program_object* made = nullptr;
  try {
    made = create_program(context, il, length, result);
  } catch (...) {
    result = status_of_exception();
  }
  if (status != nullptr)
    *status = result;
  return reinterpret_cast<cl_program>(made);
}

// What to give out as the address of the function on `platform`, whose own is `function`. Null if there are too many
// platforms.
void* checked_function(const root_device& device, cl_platform_id platform, void* function) noexcept {
  const oryn::lock_guard guard(known_lock);
  std::size_t place = 0;
  while (place < known_count && known[place].platform != platform)
    ++place;
  if (place == most_platforms)
    return nullptr;
  if (place == known_count)
    ++known_count;
  known[place] = {platform, reinterpret_cast<create_function>(function), device.cl};
  return reinterpret_cast<void*>(&create_checked);
}

} // namespace

void get_extension_function_address(const root_device& device,
                                    get_extension_function_address_for_platform_record& record) {
  const auto function = device.cl.get_extension_function_address;
  record.result = nullptr;
  if (function == nullptr || record.platform == nullptr || record.func_name == nullptr)
    return;
  const auto platform = static_cast<cl_platform_id>(record.platform);
  record.result = function(platform, record.func_name);
  if (record.result == nullptr || std::strcmp(record.func_name, "clCreateProgramWithILKHR") != 0)
    return;
  // A platform of 2.1 or later has the same as an entry point of its own.
  void* const core = reinterpret_cast<void*>(device.cl.create_program_with_il);
  record.result = checked_function(device, platform, core != nullptr ? core : record.result);
}

} // namespace qv
