#include "capability/il_extension.h"

#include "capability/kernels.h"
#include "capability/opencl_call.h"
#include "capability/spirv_module.h"

#include <array>
#include <mutex>
#include <new>

namespace qv {
namespace {

using create_function = cl_program(CL_API_CALL*)(cl_context, const void*, std::size_t, cl_int*);

// The one address that is given out has to find its platform again.
struct platform_function {
  cl_platform_id platform = nullptr;
  create_function create = nullptr;
  opencl_functions cl;
};

constexpr std::size_t most_platforms = 32;

// Plain storage: an address that was given out cannot be taken back.
std::mutex known_lock;
std::array<platform_function, most_platforms> known{};
std::size_t known_count = 0;

// Null for a context that no device tells the platform of.
cl_platform_id platform_of(const opencl_functions& cl, cl_context context) {
  std::array<cl_device_id, 64> devices{};
  cl_platform_id platform = nullptr;
  if (call_or_refuse(cl.get_context_info, context, cl_context_info{CL_CONTEXT_DEVICES}, sizeof devices,
                     static_cast<void*>(devices.data()), static_cast<std::size_t*>(nullptr)) == CL_SUCCESS &&
      devices[0] != nullptr)
    static_cast<void>(call_or_refuse(cl.get_device_info, devices[0], cl_device_info{CL_DEVICE_PLATFORM},
                                     sizeof(cl_platform_id), static_cast<void*>(&platform),
                                     static_cast<std::size_t*>(nullptr)));
  return platform;
}

// All entry points of OpenCL are the loader's, so those known last can ask about any context.
platform_function function_for(cl_context context) {
  opencl_functions cl;
  {
    const std::lock_guard guard(known_lock);
    if (known_count == 1)
      return known[0];
    cl = known[known_count - 1].cl;
  }
  const cl_platform_id platform = platform_of(cl, context);
  const std::lock_guard guard(known_lock);
  for (std::size_t i = 0; i < known_count; ++i)
    if (known[i].platform == platform)
      return known[i];
  return {};
}

cl_program CL_API_CALL create_checked(cl_context context, const void* il, std::size_t length,
                                      cl_int* status) noexcept {
  cl_int result = CL_INVALID_VALUE;
  program_object* made = nullptr;
  const platform_function function = function_for(context);
  if (is_harmless_module(function.cl, context, il, length)) {
    cl_program const program = make_or_refuse(result, function.create, context, il, length);
    if (program != nullptr && (made = new (std::nothrow) program_object(program, false)) == nullptr) {
      static_cast<void>(call_or_refuse(function.cl.release_program, program));
      result = CL_OUT_OF_HOST_MEMORY;
    }
  }
  if (status != nullptr)
    *status = result;
  return reinterpret_cast<cl_program>(made);
}

} // namespace

void* checked_il_function(const root_device& device, cl_platform_id platform, void* function) noexcept {
  const std::lock_guard guard(known_lock);
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

} // namespace qv
