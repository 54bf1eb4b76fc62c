#pragma once

#include "access/common/call_handle.h"
#include "access/common/errors.h"
#include "access/opencl/version.h"
#include "capability/commands.h"

#include <cstdint>

namespace oryn::skerv::opencl {

template <version V, qv::operation Op>
inline constexpr std::uint64_t command_of = qv::command_number(Op, capability_of(V));

// Performs `Op` and leaves the record's status to the caller.
template <version V, qv::operation Op>
void send(const common::call_handle& handle, qv::record<Op>& record) {
  static_assert(command_of<V, Op> != 0, "this version of OpenCL has no such command");
  handle.send(command_of<V, Op>, &record);
}

// Performs `Op`. Only if this returns do the results in the record count.
template <version V, qv::operation Op>
void call(const common::call_handle& handle, qv::record<Op>& record) {
  send<V, Op>(handle, record);
  if constexpr (requires { record.status; })
    common::check_status(record.status);
}

} // namespace oryn::skerv::opencl
