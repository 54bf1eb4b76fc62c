#include "access/opencl/discovery.h"

namespace oryn::skerv::opencl {
namespace {

// Asks for the number of handles, then for the handles, of which there may be fewer by then.
template <typename Ask>
std::vector<std::uint64_t> get_handles(Ask ask) {
  std::uint64_t count = 0;
  common::check_transport(ask(0, nullptr, &count));
  std::vector<std::uint64_t> handles(count);
  if (count == 0)
    return handles;
  common::check_transport(ask(handles.size(), handles.data(), &count));
  if (count < handles.size())
    handles.resize(count);
  return handles;
}

} // namespace

std::vector<capability_node> find_capability_nodes(std::uint32_t capability) {
  common::check_capability_library_version();
  const auto roots = get_handles([](std::uint64_t count, std::uint64_t* array, std::uint64_t* out_count) {
    return qv_get_root_devices(count, array, out_count, 0);
  });
  std::vector<capability_node> found;
  for (const std::uint64_t root : roots) {
    const auto ask = [=](std::uint64_t count, std::uint64_t* array, std::uint64_t* out_count) {
      return qv_find_capability_nodes(root, capability, count, array, out_count, 0);
    };
    for (const std::uint64_t node : get_handles(ask))
      found.push_back({root, node});
  }
  return found;
}

common::call_handle open_call_handle(const capability_node& node) {
  qv_call_handle* handle = nullptr;
  common::check_transport(qv_create_call_handle(node.root, node.node, &handle, 0));
  return common::call_handle(handle);
}

} // namespace oryn::skerv::opencl
