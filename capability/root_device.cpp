#include "capability/root_device.h"

#include "capability/capability_rule.h"
#include "capability/device_queries.h"

namespace qv {
namespace {

// The two steps that all OpenCL lists share. An empty list if either fails.
template <typename Object, typename Query>
std::vector<Object> list_of(Query query) {
  cl_uint count = 0;
  if (query(0, nullptr, &count) != CL_SUCCESS || count == 0)
    return {};
  std::vector<Object> objects(count);
  if (query(count, objects.data(), &count) != CL_SUCCESS)
    return {};
  if (count < objects.size())
    objects.resize(count);
  return objects;
}

void append_devices(std::vector<root_device>& devices, const opencl_functions& loader,
                    cl_platform_id platform, const capability_set& forced) {
  const std::string platform_version = platform_text(loader, platform, CL_PLATFORM_VERSION);
  root_device device;
  // What does not tell its version is trusted with the oldest only.
  device.cl =
      functions_of_platform(loader, parse_reported_version(platform_version).value_or(opencl_version{1, 0}));
  device.quirks = quirks_of_platform(platform_text(loader, platform, CL_PLATFORM_NAME));

  const auto query = [&](cl_uint count, cl_device_id* ids, cl_uint* found) {
    return loader.get_device_ids(platform, CL_DEVICE_TYPE_ALL, count, ids, found);
  };
  for (cl_device_id id : list_of<cl_device_id>(query)) {
    const auto version = parse_reported_version(device_text(loader, id, CL_DEVICE_VERSION));
    if (id == nullptr || !version || device_number(loader, id, CL_DEVICE_AVAILABLE) == 0)
      continue;

    device.id = id;
    device.version = *version;
    device.capabilities = forced;
    if (forced.none())
      if (const std::uint32_t capability = natural_capability(loader, platform, id, *version);
          capability != 0)
        device.capabilities.set(capability);
    device.has_device_queues = has_device_queues(loader, id, *version);
    device.local_memory_size = device_number(loader, id, CL_DEVICE_LOCAL_MEM_SIZE);
    devices.push_back(device);
  }
}

} // namespace

std::vector<root_device> find_root_devices(const opencl_functions& cl, const capability_set& forced) {
  std::vector<root_device> devices;
  if (cl.get_platform_ids == nullptr || cl.get_platform_info == nullptr || cl.get_device_ids == nullptr ||
      cl.get_device_info == nullptr)
    return devices;
  for (cl_platform_id platform : list_of<cl_platform_id>(cl.get_platform_ids))
    append_devices(devices, cl, platform, forced);
  return devices;
}

} // namespace qv
