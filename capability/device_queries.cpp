#include "capability/device_queries.h"

#include "capability/opencl_call.h"

namespace qv {
namespace {

// What is longer is no text of a device, and no memory is spent on it.
constexpr std::size_t most_bytes_of_text = std::size_t{1} << 20;

template <typename Query, typename Object>
std::optional<std::string> text_of(Query query, Object object, cl_uint name) {
  std::size_t size = 0;
  if (call_or_refuse(query, object, name, std::size_t{0}, nullptr, &size) != CL_SUCCESS ||
      size > most_bytes_of_text)
    return std::nullopt;
  std::string text(size, '\0');
  std::size_t given = 0;
  if (size != 0 &&
      (call_or_refuse(query, object, name, size, text.data(), &given) != CL_SUCCESS || given != size))
    return std::nullopt;
  if (const std::size_t end = text.find('\0'); end != std::string::npos)
    text.resize(end);
  return text;
}

// Narrower values fill the low bytes of the number, which is zero before.
template <typename Query, typename Object>
std::optional<std::uint64_t> number_of(Query query, Object object, cl_uint name) {
  std::uint64_t number = 0;
  if (call_or_refuse(query, object, name, sizeof number, &number, nullptr) != CL_SUCCESS)
    return std::nullopt;
  return number;
}

} // namespace

std::optional<std::string> platform_text(const opencl_functions& cl, cl_platform_id platform,
                                         cl_platform_info name) {
  return text_of(cl.get_platform_info, platform, name);
}

std::optional<std::string> device_text(const opencl_functions& cl, cl_device_id device, cl_device_info name) {
  return text_of(cl.get_device_info, device, name);
}

std::uint64_t platform_number(const opencl_functions& cl, cl_platform_id platform, cl_platform_info name) {
  return number_of(cl.get_platform_info, platform, name).value_or(0);
}

std::optional<std::uint64_t> told_device_number(const opencl_functions& cl, cl_device_id device,
                                                cl_device_info name) {
  return number_of(cl.get_device_info, device, name);
}

std::uint64_t device_number(const opencl_functions& cl, cl_device_id device, cl_device_info name) {
  return told_device_number(cl, device, name).value_or(0);
}

} // namespace qv
