// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "access/common/call_handle.h"

#include "access/common/info_query.h"

#include <stdexcept>

namespace oryn::skerv::common {
namespace {

// Any library of that name may have been loaded. The numbers of commands and the layout of records are fixed by the
// version alone, so this comes before all other calls.
void check_capability_library_version() {
  if (qv_version() != QV_VERSION)
    throw std::runtime_error("The libqv version detected is incompatible with this version of SKERV.");
}

// Asks for the number of handles, then for the handles, of which there may be fewer by then.
template <class Ask>
std::vector<std::uint64_t> get_handles(Ask ask) {
  std::uint64_t count = 0;
  check_transport(ask(0, nullptr, &count));
  check_reported_count(count);
  std::vector<std::uint64_t> handles(count);
  if (count == 0)
    return handles;
  check_transport(ask(handles.size(), handles.data(), &count));
  if (count < handles.size())
    handles.resize(count);
  return handles;
}

} // namespace

std::vector<capability_node> find_capability_nodes(std::uint32_t capability) {
  check_capability_library_version();
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

call_handle open_call_handle(const capability_node& node) {
  qv_call_handle* handle = nullptr;
  check_transport(qv_create_call_handle(node.root, node.node, &handle, 0));
  return call_handle(handle, &qv_close_call_handle);
}

} // namespace oryn::skerv::common
