#include "capability/root_device.h"

#include "capability/administrator_log.h"
#include "capability/capability_rule.h"
#include "capability/device_queries.h"
#include "capability/opencl_call.h"

#include <algorithm>
#include <array>
#include <new>

namespace qv {
namespace {

// More of them is no answer, and no memory is spent on it.
constexpr cl_uint most_objects = 4096;

// The two steps that all OpenCL lists share.
template <typename Object, typename Query>
cl_int list_all(std::vector<Object>& objects, Query query) {
  cl_uint count = 0;
  cl_int status = query(0, nullptr, &count);
  if (status != CL_SUCCESS || count == 0)
    return status;
  if (count > most_objects)
    return CL_OUT_OF_RESOURCES;
  objects.resize(count);
  status = query(count, objects.data(), &count);
  objects.resize(status == CL_SUCCESS ? std::min<std::size_t>(count, objects.size()) : 0);
  return status;
}

std::string with_status(const char* what, cl_int status) {
  return std::string(what) + " (status " + std::to_string(status) + ')';
}

// What is told of a device, which every start asks for.
bool read_texts(root_device& device) {
  for (const cl_device_info name : {CL_DEVICE_NAME, CL_DEVICE_VENDOR, CL_DEVICE_VERSION, CL_DRIVER_VERSION,
                                    CL_DEVICE_PROFILE, CL_DEVICE_EXTENSIONS}) {
    std::optional<std::string> text = device_text(device.cl, device.id, name);
    if (!text)
      return false;
    device.texts.push_back({name, std::move(*text)});
  }
  return true;
}

// The numbers that every start asks for. A device that knows nothing of queues of its own has none.
bool read_numbers(root_device& device) {
  const auto order = told_device_number(device.cl, device.id, CL_DEVICE_ENDIAN_LITTLE);
  if (!order)
    return false;
  constexpr cl_device_info queue_size = CL_DEVICE_QUEUE_ON_DEVICE_PREFERRED_SIZE;
  const std::uint64_t size =
      device.version < opencl_version{2, 0} ? 0 : device_number(device.cl, device.id, queue_size);
  device.numbers = {{CL_DEVICE_ENDIAN_LITTLE, static_cast<cl_uint>(*order)},
                    {queue_size, static_cast<cl_uint>(size)}};
  return true;
}

bool has_extension(const root_device& device, const std::string& name) {
  return (' ' + *device.find_text(CL_DEVICE_EXTENSIONS) + ' ').find(' ' + name + ' ') != std::string::npos;
}

// What the first who uses the device will ask it for: what of it is lacking, or nothing.
std::string try_context_and_queue(root_device& device) {
  device.kept = std::make_shared<kept_objects>(device.cl, device.id, device.quirks);
  if (const cl_int status = device.kept->make_context(); status != CL_SUCCESS)
    return with_status("it gives no context", status);
  if (const cl_int status = device.kept->make_queues(); status != CL_SUCCESS)
    return with_status("it gives no queue", status);
  return {};
}

// Built-in kernels are there from 1.2 on, if a program can be made of them. An older device is asked for them, too, if it
// is offered as a newer one.
void try_builtin_kernels(root_device& device) {
  const bool can_be_asked = (device.capabilities >> capability_of_version({1, 2})).any();
  if (!can_be_asked)
    return;
  std::string names;
  if (device.version >= opencl_version{1, 2})
    names = device_text(device.cl, device.id, CL_DEVICE_BUILT_IN_KERNELS).value_or("");
  if (!names.empty()) {
    const cl_int status = device.quirks.crashes_on_builtin_kernels ? CL_INVALID_OPERATION
                                                                   : device.kept->make_builtin_program(names);
    if (status != CL_SUCCESS) {
      tell_administrator({"the built-in kernels of the device \"", *device.find_text(CL_DEVICE_NAME),
                          "\" are not offered: ", with_status("no program can be made of them", status)});
      names.clear();
    }
  }
  device.texts.push_back({CL_DEVICE_BUILT_IN_KERNELS, std::move(names)});
}

// Completes what is known of a device: why it cannot be used, or nothing.
std::string look_at_device(root_device& device, cl_platform_id platform, const capability_set& forced) {
  if (device.id == nullptr || !read_texts(device))
    return "it does not say in one piece what it is";
  const auto version = parse_reported_version(*device.find_text(CL_DEVICE_VERSION));
  if (!version)
    return "it is of no version of OpenCL";
  if (device_number(device.cl, device.id, CL_DEVICE_AVAILABLE) == 0)
    return "it is not available";

  device.version = *version;
  if (!read_numbers(device))
    return "it does not say in which order its bytes stand";
  device.capabilities = forced;
  if (forced.none())
    if (const std::uint32_t capability = natural_capability(device.cl, platform, device.id, *version);
        capability != 0)
      device.capabilities.set(capability);
  device.has_device_queues = has_device_queues(device.cl, device.id, *version);
  device.local_memory_size = device_number(device.cl, device.id, CL_DEVICE_LOCAL_MEM_SIZE);
  adapt_to_device(device.quirks, *device.find_text(CL_DEVICE_NAME), has_extension(device, "cl_khr_spir"));

  if (device.capabilities.none())
    return {}; // nobody can use it
  std::string lack = try_context_and_queue(device);
  if (lack.empty())
    try_builtin_kernels(device);
  return lack;
}

void append_devices(std::vector<root_device>& devices, const opencl_functions& loader,
                    cl_platform_id platform, const capability_set& forced) {
  const std::string name = platform_text(loader, platform, CL_PLATFORM_NAME).value_or("");
  const auto version =
      parse_reported_version(platform_text(loader, platform, CL_PLATFORM_VERSION).value_or(""));
  root_device plain;
  // What does not tell its version is trusted with the oldest only.
  plain.cl = functions_of_platform(loader, version.value_or(opencl_version{1, 0}));
  plain.quirks = quirks_of_platform(name);

  std::vector<cl_device_id> ids;
  const cl_int status = list_all(ids, [&](cl_uint count, cl_device_id* found, cl_uint* found_count) {
    return call_or_refuse(loader.get_device_ids, platform, cl_device_type{CL_DEVICE_TYPE_ALL}, count, found,
                          found_count);
  });
  if (status != CL_SUCCESS && status != CL_DEVICE_NOT_FOUND)
    tell_administrator(
        {"the platform \"", name, "\" is left out: ", with_status("it lists no devices", status)});
  for (std::size_t i = 0; i < ids.size(); ++i) {
    root_device device = plain;
    device.id = ids[i];
    if (const std::string reason = look_at_device(device, platform, forced); !reason.empty()) {
      const std::string* device_name = device.find_text(CL_DEVICE_NAME);
      tell_administrator({"device ", std::to_string(i), " \"", device_name == nullptr ? "" : *device_name,
                          "\" of the platform \"", name, "\" is left out: ", reason});
      continue;
    }
    root_device lost = device;
    lost.cl = functions_of_lost_device(device.cl);
    lost.kept = nullptr;
    device.watch = std::make_shared<device_watch>();
    device.when_lost = std::make_shared<const root_device>(std::move(lost));
    devices.push_back(std::move(device));
  }
}

} // namespace

const std::string* root_device::find_text(cl_device_info name) const {
  const auto found =
      std::find_if(texts.begin(), texts.end(), [name](const auto& each) { return each.name == name; });
  return found == texts.end() ? nullptr : &found->text;
}

const cl_uint* root_device::find_number(cl_device_info name) const {
  const auto found =
      std::find_if(numbers.begin(), numbers.end(), [name](const auto& each) { return each.name == name; });
  return found == numbers.end() ? nullptr : &found->number;
}

std::vector<root_device> find_root_devices(const opencl_functions& cl, const capability_set& forced) {
  std::vector<root_device> devices;
  if (cl.get_platform_ids == nullptr || cl.get_platform_info == nullptr || cl.get_device_ids == nullptr ||
      cl.get_device_info == nullptr)
    return devices;
  std::vector<cl_platform_id> platforms;
  const cl_int status = list_all(platforms, [&](cl_uint count, cl_platform_id* found, cl_uint* found_count) {
    return call_or_refuse(cl.get_platform_ids, count, found, found_count);
  });
  if (status == CL_OUT_OF_HOST_MEMORY)
    throw std::bad_alloc(); // OpenCL may be there nevertheless
  for (cl_platform_id platform : platforms)
    append_devices(devices, cl, platform, forced);
  return devices;
}

} // namespace qv
