// PoCL as an OpenCL implementation with bad manners: TARVA_TEST_REFUSED_QUERY is the number of a device query
// that it does not answer, TARVA_TEST_DEVICE_NAME what it says when it is asked for a device's name, and
// TARVA_TEST_REFUSED_OBJECT what devices of the basic kind do not give: a context or a queue.
#define CL_TARGET_OPENCL_VERSION 220
#define CL_USE_DEPRECATED_OPENCL_1_2_APIS
#include <CL/cl.h>
#include <CL/cl_icd.h>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

decltype(&clGetDeviceInfo) polite_device_info = nullptr;

cl_int CL_API_CALL hostile_device_info(cl_device_id device, cl_device_info query, std::size_t size,
                                       void* value, std::size_t* size_out) {
  const char* refused = std::getenv("TARVA_TEST_REFUSED_QUERY");
  if (refused != nullptr && std::strtoul(refused, nullptr, 0) == query)
    return CL_INVALID_VALUE;
  const char* name = std::getenv("TARVA_TEST_DEVICE_NAME");
  if (name == nullptr || query != CL_DEVICE_NAME)
    return polite_device_info(device, query, size, value, size_out);
  const std::size_t needed = std::strlen(name) + 1;
  if (size_out != nullptr)
    *size_out = needed;
  if (value == nullptr)
    return CL_SUCCESS;
  if (size < needed)
    return CL_INVALID_VALUE;
  std::memcpy(value, name, needed);
  return CL_SUCCESS;
}

decltype(&clCreateContext) polite_context = nullptr;
decltype(&clCreateCommandQueue) polite_queue = nullptr;

bool refuses(const char* object, cl_device_id device) {
  const char* refused = std::getenv("TARVA_TEST_REFUSED_OBJECT");
  char name[256] = "";
  polite_device_info(device, CL_DEVICE_NAME, sizeof name, name, nullptr);
  return refused != nullptr && std::strcmp(refused, object) == 0 && std::strncmp(name, "basic", 5) == 0;
}

cl_context CL_API_CALL hostile_context(const cl_context_properties* properties, cl_uint count,
                                       const cl_device_id* devices,
                                       void(CL_CALLBACK* notify)(const char*, const void*, std::size_t,
                                                                 void*),
                                       void* user_data, cl_int* status) {
  if (!refuses("context", devices[0]))
    return polite_context(properties, count, devices, notify, user_data, status);
  *status = CL_OUT_OF_RESOURCES;
  return nullptr;
}

cl_command_queue CL_API_CALL hostile_queue(cl_context context, cl_device_id device,
                                           cl_command_queue_properties properties, cl_int* status) {
  if (!refuses("queue", device))
    return polite_queue(context, device, properties, status);
  *status = CL_OUT_OF_RESOURCES;
  return nullptr;
}

cl_command_queue CL_API_CALL hostile_queue_2(cl_context context, cl_device_id device,
                                             const cl_queue_properties* properties, cl_int* status) {
  return hostile_queue(context, device, properties == nullptr ? 0 : properties[1], status);
}

// All objects of PoCL lead to one table of functions, so a change of one entry is one for all.
void change_manners(cl_platform_id platform) {
  auto* table = *reinterpret_cast<cl_icd_dispatch**>(platform);
  if (table->clGetDeviceInfo == hostile_device_info)
    return;
  const auto page_size = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  char* const page = reinterpret_cast<char*>(table) - reinterpret_cast<std::uintptr_t>(table) % page_size;
  mprotect(page, 2 * page_size, PROT_READ | PROT_WRITE);
  polite_device_info = table->clGetDeviceInfo;
  table->clGetDeviceInfo = hostile_device_info;
  polite_context = table->clCreateContext;
  table->clCreateContext = hostile_context;
  polite_queue = table->clCreateCommandQueue;
  table->clCreateCommandQueue = hostile_queue;
  table->clCreateCommandQueueWithProperties = hostile_queue_2;
}

// The one function through which the loader finds all others.
using find_function = void*(const char*);

find_function* polite_function() {
  static void* const pocl = dlopen(POCL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  return pocl == nullptr ? nullptr
                         : reinterpret_cast<find_function*>(dlsym(pocl, "clGetExtensionFunctionAddress"));
}

cl_int CL_API_CALL hostile_platforms(cl_uint count, cl_platform_id* platforms, cl_uint* found) {
  void* const polite = polite_function()("clIcdGetPlatformIDsKHR");
  const cl_int status = reinterpret_cast<decltype(&clGetPlatformIDs)>(polite)(count, platforms, found);
  if (status == CL_SUCCESS && platforms != nullptr)
    change_manners(platforms[0]);
  return status;
}

} // namespace

extern "C" __attribute__((visibility("default"))) void* clGetExtensionFunctionAddress(const char* name) {
  if (polite_function() == nullptr)
    return nullptr;
  return std::strcmp(name, "clIcdGetPlatformIDsKHR") == 0 ? reinterpret_cast<void*>(hostile_platforms)
                                                          : polite_function()(name);
}
