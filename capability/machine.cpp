#include "capability/machine.h"

namespace qv {
namespace {

// A node is its root's number followed by the capability.
constexpr unsigned capability_bits = 8;

std::uint64_t make_node(std::uint64_t root, std::uint64_t capability) {
  return root << capability_bits | capability;
}

bool is_valid_list(std::uint64_t count, const std::uint64_t* array, const std::uint64_t* out_count) {
  return out_count != nullptr && (array != nullptr || count == 0);
}

bool has_capability(const root_device& device, std::uint64_t capability) {
  return capability >= 1 && capability <= capability_count && device.capabilities.test(capability);
}

} // namespace

// The number of a root device is its position, from 1 on.
const root_device* machine::find(std::uint64_t root) const {
  return root >= 1 && root <= devices_.size() ? &devices_[root - 1] : nullptr;
}

std::int32_t machine::get_root_devices(std::uint64_t count, std::uint64_t* array,
                                       std::uint64_t* out_count) const {
  if (!is_valid_list(count, array, out_count))
    return QV_UNRECOVERABLE_ERROR;
  for (std::uint64_t i = 0; i < count && i < devices_.size(); ++i)
    array[i] = i + 1;
  *out_count = devices_.size();
  return QV_OK;
}

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

machine look_at_machine(const char* loader, const char* versions) {
  const std::optional<opencl_functions> cl = load_opencl_functions(loader);
  if (!cl)
    return machine({});
  return machine(
      find_root_devices(*cl, versions == nullptr ? capability_set() : parse_capability_list(versions)));
}

} // namespace qv
