// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Looking at the machine: from the loader's platforms to devices that have been tried; then what callers ask of them.
#include "capability/machine.h"

#include "capability/capability_rule.h"
#include "capability/environment.h"
#include "capability/kept_objects.h"
#include "capability/opencl_queries.h"

#include <algorithm>
#include <array>
#include <new>

namespace qv {
namespace {

// More platforms or devices is no answer, and no memory is spent on it.
constexpr cl_uint most_objects = 4096;

// The two steps that all OpenCL lists share: how many there are, and which. An implementation that tells another number the
// second time fills no more than there is room for.
template <class Object, class Query>
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

// What a device tells of itself, which every start asks for.
bool read_texts(root_device& device) {
  for (const cl_device_info name : {CL_DEVICE_NAME, CL_DEVICE_VENDOR, CL_DEVICE_VERSION, CL_DRIVER_VERSION,
                                    CL_DEVICE_PROFILE, CL_DEVICE_EXTENSIONS}) {
    std::optional<std::string> text = device_text(device.cl, device.id, name);
    if (!text)
      return false;
    device.answers.add_text(name, std::move(*text));
  }
  return true;
}

// The numbers that every start asks for. A device that knows nothing of queues of its own has none.
bool read_numbers(root_device& device) {
  const auto order = device_number(device.cl, device.id, CL_DEVICE_ENDIAN_LITTLE);
  if (!order)
    return false;
  constexpr cl_device_info queue_size = CL_DEVICE_QUEUE_ON_DEVICE_PREFERRED_SIZE;
  const std::uint64_t size =
      device.version < opencl_version{2, 0} ? 0 : device_number(device.cl, device.id, queue_size).value_or(0);
  device.answers.add_number(CL_DEVICE_ENDIAN_LITTLE, static_cast<cl_uint>(*order));
  device.answers.add_number(queue_size, static_cast<cl_uint>(size));
  return true;
}

// By whole words: one extension's name may begin like another's.
bool has_extension(const root_device& device, const std::string& name) {
  return (' ' + device.text_of(CL_DEVICE_EXTENSIONS) + ' ').find(' ' + name + ' ') != std::string::npos;
}

// PoCL tells of the devices of other machines, and of these alone, how much has gone over the network.
bool is_on_server(const root_device& device) {
  constexpr cl_device_info traffic_of_remote_device = 0x4501;
  std::array<std::int64_t, 6> traffic{};
  return ask_value(traffic, traffic_of_remote_device, device.cl.get_device_info, device.id) == CL_SUCCESS;
}

// What the first who uses the device will ask it for. A device that has none of it is worth nothing, and would take the start
// of its user with it. What is lacking, or nothing.
std::string try_context_and_queue(root_device& device) {
  device.kept = std::make_shared<kept_objects>(device);
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
      log_line({"the built-in kernels of the device \"", device.text_of(CL_DEVICE_NAME),
                "\" are not offered: ", with_status("no program can be made of them", status)});
      names.clear();
    }
  }
  device.answers.add_text(CL_DEVICE_BUILT_IN_KERNELS, std::move(names));
}

// Completes what is known of a device: why it cannot be used, or nothing. Questions come first; a device that cannot even say
// what it is need not be tried.
std::string look_at_device(root_device& device, cl_platform_id platform, const capability_set& forced) {
  if (device.id == nullptr || !read_texts(device))
    return "it does not say in one piece what it is";
  const auto version = parse_reported_version(device.text_of(CL_DEVICE_VERSION));
  if (!version)
    return "it is of no version of OpenCL";

  device.version = *version;
  if (!read_numbers(device))
    return "it does not say in which order its bytes stand";
  device.capabilities = forced;
  if (forced.none())
    if (const std::uint32_t capability = natural_capability(device.cl, platform, device.id, *version);
        capability != 0)
      device.capabilities.set(capability);
  // One that is not available now may be later. What counts is whether it gives a context and queues, below.
  device.tells_availability = device_number(device.cl, device.id, CL_DEVICE_AVAILABLE).has_value();
  device.has_device_queues = has_device_queues(device.cl, device.id, *version);
  device.local_memory_size = device_number(device.cl, device.id, CL_DEVICE_LOCAL_MEM_SIZE).value_or(0);
  adapt_to_device(device.quirks, device.text_of(CL_DEVICE_NAME), has_extension(device, "cl_khr_spir"),
                  device.quirks.completes_lost_work && is_on_server(device));

  if (device.capabilities.none()) {
    log_line({"the device \"", device.text_of(CL_DEVICE_NAME), "\" is offered under no version: \"",
              device.text_of(CL_DEVICE_VERSION), "\" is none"});
    return {}; // nobody can use it, so it is not tried
  }
  std::string lack = try_context_and_queue(device);
  if (lack.empty())
    try_builtin_kernels(device);
  return lack;
}

// The devices of a platform: all, and then the custom ones, which OpenCL counts among "all" no more than among any other kind.
// An implementation that does has them listed once nevertheless.
std::vector<cl_device_id> list_devices(const opencl_functions& loader, cl_platform_id platform,
                                       opencl_version version, const std::string& name) {
  const auto list = [&](std::vector<cl_device_id>& ids, cl_device_type type) {
    return list_all(ids, [&](cl_uint count, cl_device_id* found, cl_uint* found_count) {
      return call_or_refuse(loader.get_device_ids, platform, type, count, found, found_count);
    });
  };
  std::vector<cl_device_id> ids;
  cl_int status = list(ids, CL_DEVICE_TYPE_ALL);
  if (status != CL_SUCCESS && status != CL_DEVICE_NOT_FOUND) {
    log_line({"the platform \"", name, "\" is left out: ", with_status("it lists no devices", status)});
    return {};
  }
  if (version < opencl_version{1, 2})
    return ids; // the kind is not known yet
  std::vector<cl_device_id> custom;
  status = list(custom, CL_DEVICE_TYPE_CUSTOM);
  if (status != CL_SUCCESS && status != CL_DEVICE_NOT_FOUND && status != CL_INVALID_DEVICE_TYPE)
    log_line({"custom devices of the platform \"", name,
              "\" are left out: ", with_status("it does not list them", status)});
  for (cl_device_id device : custom)
    if (std::find(ids.begin(), ids.end(), device) == ids.end())
      ids.push_back(device);
  return ids;
}

// A platform that does not say its name has no quirks, and one that does not say its version has the fewest functions.
void append_devices(std::vector<root_device>& devices, const opencl_functions& loader,
                    cl_platform_id platform, const capability_set& forced) {
  const std::string name = platform_text(loader, platform, CL_PLATFORM_NAME).value_or("");
  const opencl_version version =
      parse_reported_version(platform_text(loader, platform, CL_PLATFORM_VERSION).value_or(""))
          .value_or(opencl_version{1, 0});
  root_device plain;
  plain.cl = functions_of_platform(loader, version);
  plain.quirks = quirks_of_platform(name);

  const std::vector<cl_device_id> ids = list_devices(loader, platform, version, name);
  for (std::size_t i = 0; i < ids.size(); ++i) {
    root_device device = plain;
    device.id = ids[i];
    if (const std::string reason = look_at_device(device, platform, forced); !reason.empty()) {
      const device_answers::answer* device_name = device.answers.find(CL_DEVICE_NAME);
      log_line({"device ", std::to_string(i), " \"", device_name == nullptr ? "" : device_name->bytes,
                "\" of the platform \"", name, "\" is left out: ", reason});
      continue;
    }
    watch(device);
    devices.push_back(std::move(device));
  }
}

// A node is its root's number followed by the capability.
constexpr unsigned capability_bits = 8;

std::uint64_t make_node(std::uint64_t root, std::uint64_t capability) {
  return root << capability_bits | capability;
}

// A place for the count, and for as many entries as there is said to be room for.
bool is_valid_list(std::uint64_t count, const std::uint64_t* array, const std::uint64_t* out_count) {
  return out_count != nullptr && (array != nullptr || count == 0);
}

bool has_capability(const root_device& device, std::uint64_t capability) {
  return capability >= 1 && capability <= capability_count && device.capabilities.test(capability);
}

} // namespace

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
    throw std::bad_alloc(); // OpenCL may be there nevertheless, and is looked for again
  for (cl_platform_id platform : platforms)
    append_devices(devices, cl, platform, forced);
  return devices;
}

machine look_at_machine(const char* loader, const char* versions) {
  // Before anything is loaded: who has set it wrongly is told, whatever the machine is like.
  const capability_set forced = select_capabilities(versions);
  const std::optional<opencl_functions> cl = load_opencl_functions(loader);
  return machine(cl ? find_root_devices(*cl, forced) : std::vector<root_device>());
}

// The number of a root device is its position, from 1 on.
const root_device* machine::find(std::uint64_t root) const {
  return root >= 1 && root <= devices_.size() ? &devices_[root - 1] : nullptr;
}

// The count is that of all, also where the array has less room: the caller comes again.
std::int32_t machine::get_root_devices(std::uint64_t count, std::uint64_t* array,
                                       std::uint64_t* out_count) const {
  if (!is_valid_list(count, array, out_count))
    return QV_UNRECOVERABLE_ERROR;
  for (std::uint64_t i = 0; i < count && i < devices_.size(); ++i)
    array[i] = i + 1;
  *out_count = devices_.size();
  return QV_OK;
}

// At most one: a root device has a capability or lacks it.
std::int32_t machine::find_capability_nodes(std::uint64_t root, std::uint64_t capability, std::uint64_t count,
                                            std::uint64_t* array, std::uint64_t* out_count) const {
  const root_device* device = find(root);
  if (device == nullptr || capability < 1 || capability > capability_count ||
      !is_valid_list(count, array, out_count))
    return QV_UNRECOVERABLE_ERROR;
  const bool has_node = has_capability(*device, capability);
  if (has_node && count > 0)
    array[0] = make_node(root, capability);
  *out_count = has_node ? 1 : 0;
  return QV_OK;
}

std::int32_t machine::create_call_handle(std::uint64_t root, std::uint64_t node,
                                         qv_call_handle** out_handle) const {
  const root_device* device = find(root);
  if (device == nullptr || out_handle == nullptr)
    return QV_UNRECOVERABLE_ERROR;
  const std::uint64_t capability = node & ((std::uint64_t{1} << capability_bits) - 1);
  if (node != make_node(root, capability) || !has_capability(*device, capability))
    return QV_UNRECOVERABLE_ERROR;

  qv_call_handle* handle =
      open_call_handle({device, &commands_of_capability(static_cast<std::uint32_t>(capability))});
  if (handle == nullptr)
    return QV_UNRECOVERABLE_ERROR;
  *out_handle = handle;
  return QV_OK;
}

} // namespace qv
