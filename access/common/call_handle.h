// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The way to the capability library: the handle of a device, over which every command is sent.
#pragma once

#include "access/common/errors.h"
#include "capability/qv.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace oryn::skerv::common {

// A share in the call handle of one device. All wrappers made from the device hold one, and the last of them closes
// the handle. Any thread may hold, copy and give up a share, and send commands over it.
using call_handle = std::shared_ptr<qv_call_handle>;

// Carries out `command`, a number of the capability that the handle was opened for. Throws a qv_error if it does not get there.
// The status that it leaves in the record is for the caller to test.
inline void send(qv_call_handle* handle, std::uint64_t command, void* record) {
  const std::int32_t code = qv_call_capability(handle, command, record, 0);
  if (code != QV_OK)
    throw_transport(code);
}

// The same for a record with a status, or without one. Throws what OpenCL has refused, too: only if this returns do the results in
// the record count.
template <class Record>
void perform(qv_call_handle* handle, std::uint64_t command, Record& record) {
  send(handle, command, &record);
  if constexpr (requires { record.status; })
    check_status(record.status);
}

// One device of the machine, as it can be used under one capability.
struct capability_node {
  std::uint64_t root;
  std::uint64_t node;
};

// All devices that the capability library offers under `capability`, in its order. Checks its version first.
std::vector<capability_node> find_capability_nodes(std::uint32_t capability);

call_handle open_call_handle(const capability_node& node);

} // namespace oryn::skerv::common
