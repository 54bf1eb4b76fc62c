// Call handles: each binds a device and the commands of one capability.
#pragma once

#include "capability/dispatch.h"
#include "capability/qv.h"

namespace qv {

struct binding {
  const root_device* device = nullptr;
  const command_array* commands = nullptr;
};

// The handle names a slot and how often the slot has been used, and points to nothing, so that a stale or
// wrong one is found out without reading memory that is gone. Null if too many are open.
qv_call_handle* open_call_handle(const binding& bound);

// False if the handle is not open.
bool close_call_handle(qv_call_handle* handle);

bool any_call_handle_open() noexcept;

// Performs a command on a binding, or on that of an open handle, which takes no lock: a transport code.
std::int32_t call_command(const binding& bound, std::uint64_t number, void* record);
std::int32_t call_command(qv_call_handle* handle, std::uint64_t number, void* record);

} // namespace qv
