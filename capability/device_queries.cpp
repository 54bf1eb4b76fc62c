#include "capability/device_queries.h"

namespace qv {
namespace {

template <typename Query, typename Object>
std::string text_of(Query query, Object object, cl_uint name) {
  std::size_t size = 0;
  if (query == nullptr || query(object, name, 0, nullptr, &size) != CL_SUCCESS || size == 0)
    return {};
  std::string text(size, '\0');
  if (query(object, name, size, text.data(), nullptr) != CL_SUCCESS)
    return {};
  text.resize(text.find('\0') == std::string::npos ? size : text.find('\0'));
  return text;
}

// Narrower values fill the low bytes of the number, which is zero before.
template <typename Query, typename Object>
std::uint64_t number_of(Query query, Object object, cl_uint name) {
  std::uint64_t number = 0;
  if (query == nullptr || query(object, name, sizeof number, &number, nullptr) != CL_SUCCESS)
    return 0;
  return number;
}

} // namespace

std::string platform_text(const opencl_functions& cl, cl_platform_id platform, cl_platform_info name) {
  return text_of(cl.get_platform_info, platform, name);
}

std::string device_text(const opencl_functions& cl, cl_device_id device, cl_device_info name) {
  return text_of(cl.get_device_info, device, name);
}

std::uint64_t platform_number(const opencl_functions& cl, cl_platform_id platform, cl_platform_info name) {
  return number_of(cl.get_platform_info, platform, name);
}

std::uint64_t device_number(const opencl_functions& cl, cl_device_id device, cl_device_info name) {
  return number_of(cl.get_device_info, device, name);
}

} // namespace qv
